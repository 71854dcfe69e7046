#pragma once

#include "stream/DisplayRecord.h"
#include "stream/PlotData.h"

#include <QDialog>
#include <QList>

#include <memory>
#include <vector>

class DeviceFile;
class QTreeWidgetItem;

namespace Ui {
class WindowFrequencyAnalysis;
}

/// Measures the transfer function from one analogue output to the beam position: drives the function
/// generator at one frequency after another, reads a block of the stream at each and demodulates the
/// position. Every sweep is one plot; plots live as long as the window.
///
/// A sweep runs inside the slot of its start button, on the GUI thread, and serves events once a point. A
/// window that is closed meanwhile goes on sweeping; one that is destroyed, or a program that is told to
/// quit, ends the sweep at that point, with the generator off and the rate of the stream restored.
class WindowFrequencyAnalysis : public QDialog
{
    Q_OBJECT

public:
    explicit WindowFrequencyAnalysis(QWidget* parent = nullptr);
    ~WindowFrequencyAnalysis() override;

    /// Refreshes the fields that mirror the hardware and shows the window.
    void showTool();

public slots:
    void slotStartSweepPushButton();
    void slotStopSweepPushButton();
    void outputChComboBoxChanged();
    void getOutputChValue();
    void inputChComboBoxChanged();
    void onPlotsTreeItemChanged(QTreeWidgetItem* item, int col);
    void slotExportMeasPushButton();
    void slotUseBPMscalingCheckBox();
    void getBPMScale();
    void slotPushButtonAutoscale();

private:
    /// What a sweep fixes at its start.
    struct Sweep
    {
        int output; ///< 0 to 3
        int inputSlot;
        int plot;
        float amplitudes[4] = {};
        float offsets[4] = {};
    };

    void dressPlots();
    int outputNumber();
    int outputRecordIndex();
    int inputRecordIndex();
    void runSweep();
    /// The next start may come, also from an event that this one still serves.
    void allowStart();
    int buildSweep();
    void sweepPoints(int length);
    void prepareSweep(Sweep& sweep);
    int addPlot();
    void measurePoints(const Sweep& sweep, DeviceFile& stream, std::vector<DisplayRecord>& block, int length);
    double measurePoint(const Sweep& sweep, DeviceFile& stream, std::vector<DisplayRecord>& block, int index,
                        double previousPhase);
    void rescaleAndReplot();
    bool exportPlot(QTreeWidgetItem* item, const QString& path);

    std::unique_ptr<Ui::WindowFrequencyAnalysis> ui;
    std::vector<double> sweepFrequencies;
    int plotCount = 0;
    /// By plot number; owned by the graphs.
    std::vector<QCPDataMap*> magnitudeData;
    std::vector<QCPDataMap*> phaseData;
    /// Items of the plots, until an export replaces them with those that were selected.
    QList<QTreeWidgetItem*> plotItems;
    bool isSweeping = false;
    bool stopRequested = false;
    bool useBPMscaling = true;
    double bpmScale = 1.0;
    /// Stream of the last sweep. It stays open until the next sweep has opened its own, or the window goes.
    std::shared_ptr<DeviceFile> displayStream;
    /// True from a start to its end. isSweeping cannot tell: it stays set after a stop and after a refusal.
    bool startIsServed = false;
};
