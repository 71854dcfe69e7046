#include "graphs/WidgetGraphTime.h"

#include "app/Globals.h"
#include "graphs/PausedMark.h"
#include "graphs/PlotTheme.h"
#include "graphs/TraceGraph.h"
#include "stream/SignalTable.h"
#include "ui_WidgetGraphTime.h"

#include <QCheckBox>

WidgetGraphTime::WidgetGraphTime(QWidget* parent) : QWidget(parent), ui(std::make_unique<Ui::WidgetGraphTime>()) {}

WidgetGraphTime::~WidgetGraphTime() = default;

void WidgetGraphTime::build(GraphKind graph, int channels)
{
    // Before the form, since the Tab key goes through widgets as they were made.
    makeCheckBoxes(graph, channels);
    ui->setupUi(this);
    new PausedMark(ui->graph);
    plot_theme::drawPlain(ui->graph);
    connectCheckBoxes();
    buildTraces();
    plot_theme::setGradient(ui->graph, plot_theme::firstGradientHeight);
    plot_theme::showLegend(ui->graph);
    buildAxes();
    plot_theme::listVisibleTraces(ui->graph);
    plot_theme::allowVerticalZoomAndSelection(ui->graph);
}

void WidgetGraphTime::makeCheckBoxes(GraphKind graph, int channels)
{
    for (const StreamSignal* signal : tracesOf(graph)) {
        if (channelCount() == channels)
            break;
        auto* box = new QCheckBox(QLatin1String(signal->trace.checkBox), this);
        box->setObjectName(QStringLiteral("CheckCh%1").arg(channelCount() + 1));
        box->setToolTip(QStringLiteral("Shows or hides this trace."));
        traces.push_back({signal, box, nullptr, nullptr});
    }
}

void WidgetGraphTime::connectCheckBoxes()
{
    for (int channel = 0; channel < channelCount(); ++channel) {
        const Trace& trace = traces[std::size_t(channel)];
        ui->boxes->insertWidget(channel, trace.box);
        trace.box->setChecked(trace.signal->trace.box == BoxState::Checked);
        trace.box->setHidden(trace.signal->trace.box == BoxState::UncheckedAndHidden);
        connect(trace.box, SIGNAL(toggled(bool)), this, SLOT(chEnablesChanged()));
    }
}

void WidgetGraphTime::buildTraces()
{
    for (Trace& trace : traces) {
        trace.graph = new TraceGraph(ui->graph->xAxis, ui->graph->yAxis);
        trace.graph->setAntialiased(false);
        trace.graph->setPen(QPen(QColor(trace.signal->trace.colour), 1.0));
        trace.data = trace.graph->shareNewData();
    }
    ui->graph->yAxis->setRange(-5e-5, 5e-5);
    // Without a rate there is no time range; the plot then keeps its own, as it does when a window takes less than
    // a second and the whole seconds are 0.
    if (SAMP_FREQ > 0)
        ui->graph->xAxis->setRange(0, dispBufferBytes / recordBytes / SAMP_FREQ);
}

void WidgetGraphTime::buildAxes()
{
    ui->graph->xAxis->setLabel(QStringLiteral("xLabel"));
    ui->graph->yAxis->setLabel(QStringLiteral("yLabel"));
    plot_theme::whiten(ui->graph->xAxis);
    plot_theme::whiten(ui->graph->yAxis);
    ui->graph->yAxis->setNumberFormat(QStringLiteral("e"));
    ui->graph->yAxis->setNumberPrecision(5);
    plot_theme::keepLeftMargin(ui->graph, QStringLiteral("-9.99999e+10"));
}

void WidgetGraphTime::setLabels(QString xLabel, QString yLabel, QStringList names)
{
    ui->graph->xAxis->setLabel(xLabel);
    ui->graph->yAxis->setLabel(yLabel);
    for (int channel = 0; channel < qMin(channelCount(), names.size()); ++channel)
        traces[std::size_t(channel)].graph->setName(names.at(channel));
    redraw();
}

void WidgetGraphTime::rescaleAndRedraw()
{
    if (ui->buttonAutoscale->isChecked()) {
        ui->graph->yAxis->rescale(true);
        ui->graph->xAxis->rescale(true);
    }
    redraw();
}

bool WidgetGraphTime::isChecked(int channel) const
{
    return traces[std::size_t(channel)].box->isChecked();
}

void WidgetGraphTime::showTrace(int channel, bool shown)
{
    traces[std::size_t(channel)].graph->setVisible(shown);
    plot_theme::listVisibleTraces(ui->graph);
}

void WidgetGraphTime::showCheckedTraces()
{
    for (int channel = 0; channel < channelCount(); ++channel)
        showTrace(channel, isChecked(channel));
    redraw();
}

void WidgetGraphTime::redraw()
{
    ui->graph->requestRedraw();
}

void WidgetGraphTime::hideBoxes(bool first, bool second)
{
    traces[0].box->setHidden(first);
    traces[1].box->setHidden(second);
}

void WidgetGraphTime::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    plot_theme::setGradient(ui->graph, ui->graph->height());
}
