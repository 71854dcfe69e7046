#pragma once

#include "stream/PlotData.h"

#include <QStringList>
#include <QWidget>

#include <memory>

class PlotRedraw;
class QCheckBox;
class TraceGraph;

namespace Ui {
class WidgetGraphTime;
}

/// What one of the time-series graphs is made of.
struct TimeGraphTraits
{
    static constexpr int maxChannels = 4;

    struct Trace
    {
        const char* checkBoxText; ///< null keeps the form's
        bool checked;
        bool boxHidden;
        unsigned int colour; ///< 0xRRGGBB
    };
    Trace traces[maxChannels];
};

/// Common base of the graphs that show the stream against time: one plot below a row of check boxes that choose the
/// traces. It decodes nothing: Updater writes into the data of the traces. GUI thread only.
class WidgetGraphTime : public QWidget
{
public:
    ~WidgetGraphTime() override;

    /// Data of one trace, for registration with Updater; owned by the plot.
    QCPDataMap* dataMap(int channel) const { return dataMaps[channel]; }

    /// @param names of the traces in the legend, one per trace
    void setLabels(QString xLabel, QString yLabel, QStringList names);

protected:
    explicit WidgetGraphTime(QWidget* parent);

    /// Called by the constructor of the derived class, whose slot chEnablesChanged() it connects.
    void build(const TimeGraphTraits& traits, int channels);

    /// Follows the data if autoscale is on, and has the plot redrawn.
    void rescaleAndRedraw();

    bool isChecked(int channel) const;
    void showTrace(int channel, bool shown);
    void showCheckedTraces();
    void redraw();
    /// Hides the check boxes of the first two traces, not the traces.
    void hideBoxes(bool first, bool second);

    void resizeEvent(QResizeEvent* event) override;

    int channelCount = 0;

private:
    void buildCheckBoxes(const TimeGraphTraits& traits);
    void buildTraces(const TimeGraphTraits& traits);
    void buildAxes();

    QCPDataMap* dataMaps[TimeGraphTraits::maxChannels] = {};
    TraceGraph* traceGraphs[TimeGraphTraits::maxChannels] = {};
    QCheckBox* boxes[TimeGraphTraits::maxChannels] = {};
    std::unique_ptr<Ui::WidgetGraphTime> ui;
    PlotRedraw* plotRedraw;
};
