#include "tools/WindowStepResponse.h"

#include "app/Globals.h"
#include "graphs/PlotTheme.h"
#include "graphs/TraceGraph.h"
#include "hardware/ConfigFile.h"
#include "hardware/LoopConfiguration.h"
#include "hardware/LoopParameters.h"
#include "hardware/MailboxComm.h"
#include "stream/DeviceFile.h"
#include "stream/DisplayRecord.h"
#include "stream/MissingStream.h"
#include "stream/Updater.h"
#include "support/FieldGuard.h"
#include "tools/Pause.h"
#include "ui_WindowStepResponse.h"

#include <QPointer>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <fcntl.h>

namespace {

constexpr int stepRateHz = 50000;
/// The last record of the block is left out.
constexpr int analysedRecords = largestBlockRecords - 1;
constexpr int slotsBetweenMonitors = SlotPos2X - SlotPos1X;
constexpr int noSlot = -1;

constexpr unsigned long biasMilliseconds = 100;
constexpr unsigned long stepMilliseconds = 100;
constexpr unsigned long returnMilliseconds = 120;

const QColor slopeColour(50, 200, 50);
const QColor deadTimeColour(200, 50, 50);
const QColor settlingColour(220, 69, 0);
const QColor amplitudeColour(0, 50, 200);

/// One signal of a block of records. Without a slot it is zero throughout.
std::vector<double> signalOf(const std::vector<unsigned char>& block, int slot)
{
    std::vector<double> samples(analysedRecords, 0.0);
    if (slot == noSlot)
        return samples;
    const unsigned char* source = block.data() + std::size_t(slot) * sizeof(double);
    for (double& sample : samples) {
        std::memcpy(&sample, source, sizeof sample);
        source += recordBytes;
    }
    return samples;
}

QCPItemLine* makeLine(QCustomPlot* plot, const QColor& colour, bool isArrow)
{
    auto* line = new QCPItemLine(plot);
    line->setPen(QPen(colour, 2));
    if (isArrow) {
        const QCPLineEnding ending(QCPLineEnding::esSpikeArrow, 8, 10);
        line->setHead(ending);
        line->setTail(ending);
    }
    for (QCPItemPosition* position : line->positions())
        position->setAxes(plot->xAxis, plot->yAxis2);
    line->setVisible(false);
    return line;
}

QCPItemText* makeText(QCustomPlot* plot, const QString& text, const QColor& colour, Qt::Alignment alignment)
{
    auto* item = new QCPItemText(plot);
    item->setText(text);
    item->setColor(colour);
    item->setPositionAlignment(alignment);
    item->setPadding(QMargins(4, 2, 4, 2));
    item->position->setAxes(plot->xAxis, plot->yAxis2);
    item->setVisible(false);
    return item;
}

void place(QCPItemLine* line, QPointF from, QPointF to)
{
    line->start->setCoords(from);
    line->end->setCoords(to);
    line->setVisible(true);
}

/// Places an arrow and its text, which sits at the middle of the arrow.
void place(QCPItemLine* arrow, QCPItemText* text, QPointF from, QPointF to)
{
    place(arrow, from, to);
    text->position->setCoords((from + to) / 2);
    text->setVisible(true);
}

/// The voltages of all outputs as the display window shows them last, so that an output which no axis drives stays
/// where it is: elsewhere it would throw the beam aside, and the answer would be that of another place. 0 where none is
/// known.
OutputRecord presentOutputs()
{
    OutputRecord outputs;
    if (const DisplayRecord* newest = updater->newestRecord()) {
        for (int output = 0; output < 4; ++output)
            outputs.set(output, std::isfinite(newest->dac[output]) ? newest->dac[output] : 0.0);
    }
    return outputs;
}

QString figure(double value)
{
    return QString::number(value, 'g', 4);
}

double longerTime(const step_analysis::Result& result)
{
    return std::max(result.tDead, result.tSettle);
}

} // namespace

WindowStepResponse::WindowStepResponse(QWidget* parent)
    : QDialog(parent), ui(std::make_unique<Ui::WindowStepResponse>())
{
    ui->setupUi(this);
    QPushButton* runButton = ui->buttonBox->button(QDialogButtonBox::Apply);
    runButton->setText(QStringLiteral("Run"));
    new FieldGuard(this);
    dressPlot();
    makeAnnotation();
    // X is selected from the start, so its step is on offer as after a click on it.
    selector_radioButton_changed();
    connect(runButton, SIGNAL(released()), SLOT(stepRespProcedure()));
    connect(ui->stepInXbutton, SIGNAL(clicked()), SLOT(selector_radioButton_changed()));
    connect(ui->stepInYbutton, SIGNAL(clicked()), SLOT(selector_radioButton_changed()));
    connect(ui->stepInI0button, SIGNAL(clicked()), SLOT(selector_radioButton_changed()));
    connect(ui->buttonBox, SIGNAL(accepted()), SLOT(accept()));
    connect(ui->buttonBox, SIGNAL(rejected()), SLOT(reject()));
}

WindowStepResponse::~WindowStepResponse() = default;

void WindowStepResponse::dressPlot()
{
    QCustomPlot* plot = ui->graph;
    QLinearGradient gradient(0, 0, 0, 500);
    gradient.setColorAt(0, QColor(250, 250, 250));
    gradient.setColorAt(1, QColor(220, 220, 220));
    plot->setBackground(QBrush(gradient));
    plot_theme::drawPlain(plot);
    plot->yAxis2->setVisible(true);

    auto* stimulus = new TraceGraph(plot->xAxis, plot->yAxis);
    stimulus->setName(QStringLiteral("Stimulus"));
    stimulusMap = stimulus->shareNewData();
    auto* response = new TraceGraph(plot->xAxis, plot->yAxis2);
    response->setName(QStringLiteral("Response"));
    response->setPen(QPen(QColor(200, 0, 0)));
    responseMap = response->shareNewData();

    plot->setInteractions(QCP::iRangeDrag | QCP::iRangeZoom | QCP::iSelectAxes);
    plot->axisRect()->setRangeZoom(Qt::Horizontal);
    plot->legend->setVisible(true);
    plot->legend->setTextColor(QColor(10, 10, 10));
    plot->legend->setBrush(QColor(222, 222, 222));
}

void WindowStepResponse::makeAnnotation()
{
    QCustomPlot* plot = ui->graph;
    slopeLine = makeLine(plot, slopeColour, false);
    deadTimeArrow = makeLine(plot, deadTimeColour, true);
    settlingArrow = makeLine(plot, settlingColour, true);
    amplitudeArrow = makeLine(plot, amplitudeColour, true);
    const Qt::Alignment below = Qt::AlignTop | Qt::AlignHCenter;
    deadTimeText = makeText(plot, QStringLiteral("Tdead"), deadTimeColour, below);
    settlingText = makeText(plot, QStringLiteral("Tsettle"), settlingColour, below);
    amplitudeText = makeText(plot, QStringLiteral("dy"), amplitudeColour, Qt::AlignTop | Qt::AlignLeft);
}

void WindowStepResponse::showTool()
{
    // The Y bias comes from Xhf and the I0 bias from Ylf on purpose.
    ui->posXbiasDoubleSpinBox->setValue(configFile->readLoop(LoopXlf).Offset);
    ui->posYbiasDoubleSpinBox->setValue(configFile->readLoop(LoopXhf).Offset);
    ui->i0biasDoubleSpinBox->setValue(configFile->readLoop(LoopYlf).Offset);
    show();
}

void WindowStepResponse::selector_radioButton_changed()
{
    const struct
    {
        QRadioButton* selector;
        QDoubleSpinBox* step;
    } axes[] = {{ui->stepInXbutton, ui->posXStepDoubleSpinBox},
                {ui->stepInYbutton, ui->posYStepDoubleSpinBox},
                {ui->stepInI0button, ui->i0StepDoubleSpinBox}};
    for (const auto& axis : axes) {
        const bool selected = axis.selector->isChecked();
        axis.step->setEnabled(selected);
        axis.step->setValue(selected ? 0.1 : 0.0);
    }
}

WindowStepResponse::Run WindowStepResponse::requestedRun() const
{
    int outputX, outputY, unusedOutput, outputI0;
    configFile->readDACpos(&outputX, &outputY, &unusedOutput, &outputI0);
    const struct
    {
        const QRadioButton* selector;
        int output;
        double bias;
        double step;
        int responseSlot;
    } axes[] = {
        {ui->stepInXbutton, outputX, ui->posXbiasDoubleSpinBox->value(), ui->posXStepDoubleSpinBox->value(), SlotPos1X},
        {ui->stepInYbutton, outputY, ui->posYbiasDoubleSpinBox->value(), ui->posYStepDoubleSpinBox->value(), SlotPos1Y},
        {ui->stepInI0button, outputI0, ui->i0biasDoubleSpinBox->value(), ui->i0StepDoubleSpinBox->value(), SlotInt1}};
    const OutputRecord present = presentOutputs();
    Run run = {present, present, noSlot, SlotPos1X, 0, 0};
    for (const auto& axis : axes) {
        run.base.set(axis.output, axis.bias);
        run.stepped.set(axis.output, axis.bias + axis.step);
        if (axis.selector->isChecked()) {
            run.stimulusSlot = OutputRecord::hasOutput(axis.output) ? SlotDac + axis.output : noSlot;
            run.responseSlot = axis.responseSlot + (ui->useBPM2checkbox->isChecked() ? slotsBetweenMonitors : 0);
            run.bias = axis.bias;
            run.step = axis.step;
        }
    }
    return run;
}

void WindowStepResponse::stepRespProcedure()
{
    if (mailbox->pidStatus != PidStatusOff)
        mailbox->setFBenable(0);
    SAMP_FREQ = stepRateHz;
    mailbox->setDisplayFreq(1);

    DeviceFile outputUnit(outputDevicePath, O_RDWR | O_SYNC);
    DeviceFile stream(streamDevicePath, O_RDONLY);
    const QPointer<WindowStepResponse> self(this);
    if (!stream.isOpen()) {
        reportMissingStreamAndQuit();
        // The procedure goes on to its end, unless the window went while the box was open.
        if (!self)
            return;
    }

    // Zeroed before the outputs move: a short read leaves zeros, and nothing comes between the writes and the
    // read.
    std::vector<unsigned char> block(largestBlockBytes, 0);
    mailbox->setOutputMux(0);
    Run run = requestedRun();
    outputUnit.control(requestSetOutputs, &run.base);
    pauseMilliseconds(biasMilliseconds);
    outputUnit.control(requestSetOutputs, &run.stepped);
    pauseMilliseconds(stepMilliseconds);
    outputUnit.control(requestSetOutputs, &run.base);
    pauseMilliseconds(returnMilliseconds);
    stream.read(block.data(), block.size());

    std::vector<double> response = signalOf(block, run.responseSlot);
    const std::vector<double> stimulus = signalOf(block, run.stimulusSlot);
    const bool inverted = step_analysis::isInverted(response, stimulus);
    ui->invertedLabel->setText(inverted ? QStringLiteral("Inverted display") : QString());
    if (inverted) {
        for (double& sample : response)
            sample = -sample;
    }
    showTraces(response, stimulus);
    const step_analysis::Result result =
        step_analysis::analyse(response, stimulus, run.bias, run.step, double(SAMP_FREQ));
    showFigures(result, run.step);
    annotate(result);
    setRanges(result, run.bias, run.step);
    ui->graph->replot();
    mailbox->setOutputMux(1);
}

void WindowStepResponse::showTraces(const std::vector<double>& response, const std::vector<double>& stimulus)
{
    // Every run has the same keys, so that the points of a new run replace all of the last one.
    QVector<QCPGraphData> responsePoints(int(response.size()));
    QVector<QCPGraphData> stimulusPoints(int(stimulus.size()));
    for (int i = 0; i < responsePoints.size(); ++i) {
        const double time = double(float(i) / float(SAMP_FREQ));
        responsePoints[i] = QCPGraphData(time, response[std::size_t(i)]);
        stimulusPoints[i] = QCPGraphData(time, stimulus[std::size_t(i)]);
    }
    responseMap->set(responsePoints, true);
    stimulusMap->set(stimulusPoints, true);
}

void WindowStepResponse::showFigures(const step_analysis::Result& result, double step)
{
    ui->dclabel->setText(figure(result.dy));
    ui->dulabel->setText(figure(step));
    ui->Klabel->setText(figure(result.dy / step));
    ui->Tdeadlabel->setText(figure(result.tDead * 1000) + QStringLiteral(" ms"));
    ui->Tsetlabel->setText(figure(result.tSettle * 1000) + QStringLiteral(" ms"));
}

void WindowStepResponse::annotate(const step_analysis::Result& result)
{
    const double belowStep = result.low - 0.1 * result.dy;
    const double besideStep = result.tHigh + 0.3 * longerTime(result);
    place(slopeLine, {result.tLow, result.low}, {result.tHigh, result.high});
    place(deadTimeArrow, deadTimeText, {result.tStim, belowStep}, {result.tLow, belowStep});
    place(settlingArrow, settlingText, {result.tLow, belowStep}, {result.tHigh, belowStep});
    place(amplitudeArrow, amplitudeText, {besideStep, result.low}, {besideStep, result.high});
}

void WindowStepResponse::setRanges(const step_analysis::Result& result, double bias, double step)
{
    const double margin = longerTime(result);
    ui->graph->xAxis->setRange(result.tStim - 0.2 * margin, result.tHigh + margin);
    ui->graph->yAxis->setRange(bias - 0.2 * step, bias + 1.2 * step);
    ui->graph->yAxis2->setRange(result.low - 0.2 * result.dy, result.low + 1.2 * result.dy);
}
