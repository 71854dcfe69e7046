#include "graphs/WidgetGraphTime.h"

#include "app/Globals.h"
#include "graphs/PlotRedraw.h"
#include "graphs/PlotTheme.h"
#include "graphs/TraceGraph.h"
#include "stream/DisplayRecord.h"
#include "ui_WidgetGraphTime.h"

WidgetGraphTime::WidgetGraphTime(QWidget* parent) : QWidget(parent), ui(std::make_unique<Ui::WidgetGraphTime>())
{
    ui->setupUi(this);
    plotRedraw = new PlotRedraw(ui->graph);
}

WidgetGraphTime::~WidgetGraphTime() = default;

void WidgetGraphTime::build(const TimeGraphTraits& traits, int channels)
{
    channelCount = qBound(0, channels, TimeGraphTraits::maxChannels);
    plot_theme::drawPlain(ui->graph);
    buildCheckBoxes(traits);
    buildTraces(traits);
    plot_theme::setGradient(ui->graph, plot_theme::firstGradientHeight);
    plot_theme::showLegend(ui->graph);
    buildAxes();
    plot_theme::allowVerticalZoomAndSelection(ui->graph);
}

void WidgetGraphTime::buildCheckBoxes(const TimeGraphTraits& traits)
{
    boxes[0] = ui->CheckCh1;
    boxes[1] = ui->CheckCh2;
    boxes[2] = ui->CheckCh3;
    boxes[3] = ui->CheckCh4;
    for (int channel = channelCount; channel < TimeGraphTraits::maxChannels; ++channel) {
        delete boxes[channel];
        boxes[channel] = nullptr;
    }
    for (int channel = 0; channel < channelCount; ++channel) {
        const TimeGraphTraits::Trace& trace = traits.traces[channel];
        if (trace.checkBoxText)
            boxes[channel]->setText(QLatin1String(trace.checkBoxText));
        boxes[channel]->setChecked(trace.checked);
        boxes[channel]->setHidden(trace.boxHidden);
        connect(boxes[channel], SIGNAL(toggled(bool)), this, SLOT(chEnablesChanged()));
    }
}

void WidgetGraphTime::buildTraces(const TimeGraphTraits& traits)
{
    for (int channel = 0; channel < channelCount; ++channel) {
        auto* trace = new TraceGraph(ui->graph->xAxis, ui->graph->yAxis);
        trace->setAntialiased(false);
        trace->setPen(QPen(QColor(traits.traces[channel].colour), 1.0));
        traceGraphs[channel] = trace;
        dataMaps[channel] = trace->shareNewData();
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
}

void WidgetGraphTime::setLabels(QString xLabel, QString yLabel, QStringList names)
{
    ui->graph->xAxis->setLabel(xLabel);
    ui->graph->yAxis->setLabel(yLabel);
    for (int channel = 0; channel < qMin(channelCount, names.size()); ++channel)
        traceGraphs[channel]->setName(names.at(channel));
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
    return boxes[channel]->isChecked();
}

void WidgetGraphTime::showTrace(int channel, bool shown)
{
    traceGraphs[channel]->setVisible(shown);
}

void WidgetGraphTime::showCheckedTraces()
{
    for (int channel = 0; channel < channelCount; ++channel)
        showTrace(channel, isChecked(channel));
    redraw();
}

void WidgetGraphTime::redraw()
{
    plotRedraw->request();
}

void WidgetGraphTime::hideBoxes(bool first, bool second)
{
    ui->CheckCh1->setHidden(first);
    ui->CheckCh2->setHidden(second);
}

void WidgetGraphTime::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    plot_theme::setGradient(ui->graph, ui->graph->height());
}
