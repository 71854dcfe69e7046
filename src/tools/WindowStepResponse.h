#pragma once

#include "stream/DeviceRecords.h"
#include "stream/PlotData.h"
#include "tools/step/StepAnalysis.h"

#include <QDialog>

#include <memory>
#include <vector>

namespace Ui {
class WindowStepResponse;
}

/// Applies one voltage step to an output and derives gain, dead time and settling time of the beam's answer
/// from one block of the display stream.
///
/// The procedure is one blocking call on the GUI thread of about a third of a second. It leaves the feedback
/// off, the outputs at their biases and the display rate at 50 kHz, so that the next run starts at once.
class WindowStepResponse : public QDialog
{
    Q_OBJECT

public:
    explicit WindowStepResponse(QWidget* parent = nullptr);
    ~WindowStepResponse() override;

    /// Fills the biases from the controllers' stored offsets and shows the window.
    void showTool();

private slots:
    void stepRespProcedure();
    void selector_radioButton_changed();

private:
    /// One run as the form asks for it: what is written, and where in a record its effect is found.
    struct Run
    {
        OutputRecord base;
        OutputRecord stepped;
        int stimulusSlot;
        int responseSlot;
        double bias;
        double step;
    };

    void dressPlot();
    void makeAnnotation();
    Run requestedRun() const;
    /// Stores both traces over the time from the first sample, s.
    void showTraces(const std::vector<double>& response, const std::vector<double>& stimulus);
    void showFigures(const step_analysis::Result& result, double step);
    void annotate(const step_analysis::Result& result);
    void setRanges(const step_analysis::Result& result, double bias, double step);

    std::unique_ptr<Ui::WindowStepResponse> ui;
    /// Owned by their graphs.
    QCPDataMap* stimulusMap = nullptr;
    QCPDataMap* responseMap = nullptr;
    QCPItemLine* slopeLine = nullptr;
    QCPItemLine* deadTimeArrow = nullptr;
    QCPItemLine* settlingArrow = nullptr;
    QCPItemLine* amplitudeArrow = nullptr;
    QCPItemText* deadTimeText = nullptr;
    QCPItemText* settlingText = nullptr;
    QCPItemText* amplitudeText = nullptr;
};
