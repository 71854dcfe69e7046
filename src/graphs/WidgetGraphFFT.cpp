#include "graphs/WidgetGraphFFT.h"

#include "app/Globals.h"
#include "graphs/ClickedPlace.h"
#include "graphs/PausedMark.h"
#include "graphs/PlotTheme.h"
#include "graphs/TraceGraph.h"
#include "stream/SignalTable.h"
#include "stream/Updater.h"
#include "support/FieldGuard.h"
#include "ui_WidgetGraphFFT.h"

namespace {

constexpr double tracePenWidth = 2.0;
constexpr int subTicksPerDecade = 8;
constexpr int labelDecimals = 1;

/// What a text that names no signal stands for.
constexpr int otherSlot = SlotPos1X;
constexpr unsigned int otherColour = 0xffffff;

/// @return null for a text that names no signal
const StreamSignal* signalOf(const QString& text)
{
    for (const StreamSignal& signal : signalTable) {
        if (signal.spectrum.text && text == QLatin1String(signal.spectrum.text))
            return &signal;
    }
    return nullptr;
}

/// A logarithmic axis gets ticks at the powers of ten.
void setScale(QCPAxis* axis, bool logarithmic)
{
    if (logarithmic) {
        const QSharedPointer<QCPAxisTickerLog> ticker(new QCPAxisTickerLog);
        ticker->setSubTickCount(subTicksPerDecade);
        axis->setTicker(ticker);
        axis->setScaleType(QCPAxis::stLogarithmic);
    } else {
        axis->setTicker(QSharedPointer<QCPAxisTicker>(new QCPAxisTicker));
        axis->setScaleType(QCPAxis::stLinear);
    }
}

} // namespace

WidgetGraphFFT::WidgetGraphFFT(QWidget* parent) : QWidget(parent), ui(std::make_unique<Ui::WidgetGraphFFT>())
{
    ui->setupUi(this);
    for (const StreamSignal& signal : signalTable) {
        if (signal.spectrum.text)
            ui->selectorComboBox->addItem(QLatin1String(signal.spectrum.text));
    }
    new FieldGuard(this);
    plot_theme::drawPlain(ui->graph);
    new PausedMark(ui->graph);
    trace = new TraceGraph(ui->graph->xAxis, ui->graph->yAxis);
    trace->setPen(QPen(QColor(250, 250, 135, 240), tracePenWidth));
    buildAxes();
    fftSelectorChanged(ui->selectorComboBox->currentText());
    connectAll();
    plot_theme::setGradient(ui->graph, plot_theme::firstGradientHeight);
    plot_theme::whiten(ui->graph->xAxis);
    plot_theme::whiten(ui->graph->yAxis);
    plot_theme::allowVerticalZoomAndSelection(ui->graph);
}

WidgetGraphFFT::~WidgetGraphFFT() = default;

void WidgetGraphFFT::buildAxes()
{
    ui->graph->yAxis->setRange(0, 1000);
    ui->graph->xAxis->setRange(10, 1000);
    setScale(ui->graph->xAxis, true);
    setScale(ui->graph->yAxis, true);
    ui->graph->xAxis->grid()->setSubGridVisible(true);
    ui->graph->xAxis->setLabel(QStringLiteral("Frequency [Hz]"));
    // One form for all magnitudes: labels whose widths change would move the axis at every update.
    ui->graph->yAxis->setNumberFormat(QStringLiteral("e"));
    ui->graph->yAxis->setNumberPrecision(labelDecimals);
    connect(ui->graph, SIGNAL(beforeReplot()), this, SLOT(fitTicks()));
}

void WidgetGraphFFT::connectAll()
{
    connect(ui->xAxisComboBox, SIGNAL(currentIndexChanged(QString)), this, SLOT(xAxesChanged(QString)));
    connect(ui->yAxisComboBox, SIGNAL(currentIndexChanged(QString)), this, SLOT(yAxesChanged(QString)));
    connect(ui->fFTLengthComboBox, SIGNAL(currentIndexChanged(QString)), this, SLOT(fftLengthChanged(QString)));
    connect(ui->selectorComboBox, SIGNAL(currentIndexChanged(QString)), this, SLOT(fftSelectorChanged(QString)));
    connect(ui->removeDCCheckBox, SIGNAL(toggled(bool)), updater, SLOT(ChangeFFTremoveDC(bool)));
    connect(ui->graph, SIGNAL(mousePress(QMouseEvent*)), this, SLOT(graphClicked(QMouseEvent*)));
}

QCPDataMap* WidgetGraphFFT::dataMap()
{
    return trace->shareNewData();
}

void WidgetGraphFFT::replot()
{
    if (ui->checkBoxAutoscale->isChecked()) {
        ui->graph->yAxis->rescale(true);
        ui->graph->xAxis->rescale(true);
    }
    ui->graph->requestRedraw();
}

void WidgetGraphFFT::xAxesChanged(QString str)
{
    setScale(ui->graph->xAxis, str == QLatin1String("Log"));
    ui->graph->requestRedraw();
}

void WidgetGraphFFT::yAxesChanged(QString str)
{
    setScale(ui->graph->yAxis, str == QLatin1String("Log"));
    ui->graph->requestRedraw();
}

void WidgetGraphFFT::fftLengthChanged(QString str)
{
    updater->fftLength = int(str.toUInt());
}

void WidgetGraphFFT::graphClicked(QMouseEvent* event)
{
    const QPointF place = clickedPlace(ui->graph, event);
    ui->lineEditCursorX->setText(QString::number(place.x(), 'e', 3));
    ui->lineEditCursorY->setText(QString::number(place.y(), 'e', 3));
}

void WidgetGraphFFT::fftSelectorChanged(QString selector)
{
    const StreamSignal* signal = signalOf(selector);
    updater->setFFTchannel(signal ? signal->slot() : otherSlot);
    trace->setPen(QPen(QColor(signal ? signal->spectrum.colour : otherColour), tracePenWidth));
    ui->graph->yAxis->setLabel(plot_theme::axisTitle(signal ? signal->quantity : positionQuantity));
    plot_theme::keepLeftMargin(ui->graph, QStringLiteral("9.9e+10"));
}

void WidgetGraphFFT::fitTicks()
{
    plot_theme::fitTicksToHeight(ui->graph);
}

void WidgetGraphFFT::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    plot_theme::setGradient(ui->graph, ui->graph->height());
}
