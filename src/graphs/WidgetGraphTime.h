#pragma once

#include "stream/PlotData.h"
#include "stream/StreamSignal.h"

#include <QStringList>
#include <QWidget>

#include <memory>
#include <vector>

class QCheckBox;
class TraceGraph;

namespace Ui {
class WidgetGraphTime;
}

/// Common base of the graphs that show the stream against time: one plot below a row of check boxes that choose the
/// traces. Which traces there are, and what they look like, signalTable says. It decodes nothing: Updater writes into
/// the data of the traces. GUI thread only.
class WidgetGraphTime : public QWidget
{
public:
    ~WidgetGraphTime() override;

    /// Data of one trace, for registration with Updater; owned by the plot.
    QCPDataMap* dataMap(int channel) const { return traces[std::size_t(channel)].data; }

    /// @param names of the traces in the legend, one per trace
    void setLabels(QString xLabel, QString yLabel, QStringList names);

protected:
    explicit WidgetGraphTime(QWidget* parent);

    /// Called by the constructor of the derived class, whose slot chEnablesChanged() it connects.
    /// @param channels the first so many traces of the graph; no more than it has
    void build(GraphKind graph, int channels);

    /// Follows the data if autoscale is on, and has the plot redrawn.
    void rescaleAndRedraw();

    bool isChecked(int channel) const;
    void showTrace(int channel, bool shown);
    void showCheckedTraces();
    void redraw();
    /// Hides the check boxes of the first two traces, not the traces.
    void hideBoxes(bool first, bool second);

    void resizeEvent(QResizeEvent* event) override;

    int channelCount() const { return int(traces.size()); }
    SignalSource sourceOf(int channel) const { return traces[std::size_t(channel)].signal->source; }

private:
    struct Trace
    {
        const StreamSignal* signal;
        QCheckBox* box;
        TraceGraph* graph;
        QCPDataMap* data;
    };

    void makeCheckBoxes(GraphKind graph, int channels);
    void connectCheckBoxes();
    void buildTraces();
    void buildAxes();

    std::vector<Trace> traces;
    std::unique_ptr<Ui::WidgetGraphTime> ui;
};
