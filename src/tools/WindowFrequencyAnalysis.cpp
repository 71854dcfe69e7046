#include "tools/WindowFrequencyAnalysis.h"

#include "app/Globals.h"
#include "files/FailedSave.h"
#include "files/OutputFile.h"
#include "graphs/PlotTheme.h"
#include "hardware/MailboxComm.h"
#include "stream/DeviceFile.h"
#include "stream/DeviceRecords.h"
#include "stream/MissingStream.h"
#include "support/FieldGuard.h"
#include "support/PlainTextBoxes.h"
#include "tools/Pause.h"
#include "tools/PendingEvents.h"
#include "tools/frequency/Demodulation.h"
#include "tools/frequency/FrequencyCsv.h"
#include "tools/frequency/FrequencySweep.h"

#include "ui_WindowFrequencyAnalysis.h"

#include <QApplication>
#include <QFileDialog>
#include <QMessageBox>
#include <QPointer>

#include <fcntl.h>

namespace {

constexpr int outputs = 4;
constexpr int firstGeneratorMode = 2;
/// The widest tick label of the two plots: both have room for it, so that equal frequencies stand above one another.
constexpr char widestTickLabel[] = "-9.99e+10";
constexpr double pointSize = 4;

const QColor plotColors[] = {QColor(255, 0, 0),   QColor(0, 255, 0),   QColor(0, 0, 255),
                             QColor(255, 255, 0), QColor(0, 255, 255), QColor(255, 0, 255)};
constexpr int plotColorCount = sizeof plotColors / sizeof plotColors[0];

/// Gives the stream its rate back, however the sweep ends.
class DisplayRateKeeper
{
public:
    DisplayRateKeeper() = default;
    ~DisplayRateKeeper()
    {
        SAMP_FREQ = rate;
        mailbox->setDisplayFreq(0);
    }
    DisplayRateKeeper(const DisplayRateKeeper&) = delete;
    DisplayRateKeeper& operator=(const DisplayRateKeeper&) = delete;

private:
    int rate = SAMP_FREQ;
};

bool isAxisX(const QComboBox* box)
{
    return box->currentText() == QLatin1String("x");
}

/// BPM that feeds the low-frequency controller of an axis: 0 BPM1, 1 BPM2.
int selectedBpm(bool axisX)
{
    int xlf = 0;
    int xhf = 0;
    int ylf = 0;
    int yhf = 0;
    mailbox->getBPMselector(&xlf, &xhf, &ylf, &yhf);
    return axisX ? xlf : ylf;
}

void dressPlot(QCustomPlot* plot, const char* valueLabel)
{
    plot_theme::drawPlain(plot);
    plot_theme::setGradient(plot, plot_theme::firstGradientHeight);
    plot_theme::allowVerticalZoomAndSelection(plot);
    for (QCPAxis* axis : {plot->xAxis, plot->yAxis}) {
        plot_theme::whiten(axis);
        axis->grid()->setSubGridVisible(true);
        // Fainter than the traces, on the light and on the dark end of the background.
        axis->grid()->setPen(QPen(QColor(255, 255, 255, 110), 1.0, Qt::DotLine));
        axis->grid()->setSubGridPen(QPen(QColor(255, 255, 255, 45), 1.0, Qt::DotLine));
    }
    plot->xAxis->setLabel(QStringLiteral("Frequency [Hz]"));
    plot->yAxis->setLabel(QLatin1String(valueLabel));
    plot_theme::keepLeftMargin(plot, QLatin1String(widestTickLabel));
    const QSharedPointer<QCPAxisTickerLog> ticker(new QCPAxisTickerLog);
    ticker->setSubTickCount(8);
    plot->xAxis->setTicker(ticker);
    plot->xAxis->setScaleType(QCPAxis::stLogarithmic);
    plot->xAxis->setRange(1, 100);
}

/// Adds an empty trace. @return its data, owned by the trace
QCPDataMap* addTrace(QCustomPlot* plot, const QColor& color)
{
    QCPGraph* graph = plot->addGraph();
    graph->setAntialiased(false);
    graph->setPen(QPen(color, 1.0, Qt::SolidLine, Qt::SquareCap, Qt::BevelJoin));
    // A single point has no line.
    graph->setScatterStyle(QCPScatterStyle(QCPScatterStyle::ssDisc, pointSize));
    auto* data = new QCPDataMap;
    graph->setData(QSharedPointer<QCPDataMap>(data));
    return data;
}

/// A point of the same frequency is replaced.
void putPoint(QCPDataMap* data, double hertz, double value)
{
    data->remove(hertz);
    data->add(QCPGraphData(hertz, value));
}

void rescaleToVisible(QCustomPlot* plot)
{
    plot->xAxis->rescale(true);
    plot->yAxis->rescale(true);
}

void refuse(const char* title, const char* text)
{
    QMessageBox::critical(nullptr, QLatin1String(title), QLatin1String(text), QMessageBox::Ok);
}

} // namespace

WindowFrequencyAnalysis::WindowFrequencyAnalysis(QWidget* parent)
    : QDialog(parent), ui(std::make_unique<Ui::WindowFrequencyAnalysis>())
{
    ui->setupUi(this);
    new FieldGuard(this);
    dressPlots();
    connect(ui->StartSweepPushButton, SIGNAL(released()), this, SLOT(slotStartSweepPushButton()));
    connect(ui->StopSweepPushButton, SIGNAL(released()), this, SLOT(slotStopSweepPushButton()));
    connect(ui->exportMeasPushButton, SIGNAL(released()), this, SLOT(slotExportMeasPushButton()));
    connect(ui->pushButtonAutoscale, SIGNAL(released()), this, SLOT(slotPushButtonAutoscale()));
    connect(ui->outputChComboBox, SIGNAL(currentIndexChanged(int)), this, SLOT(outputChComboBoxChanged()));
    connect(ui->inputChComboBox, SIGNAL(currentIndexChanged(int)), this, SLOT(inputChComboBoxChanged()));
    connect(ui->plotsTree, SIGNAL(itemChanged(QTreeWidgetItem*, int)), this,
            SLOT(onPlotsTreeItemChanged(QTreeWidgetItem*, int)));
    connect(ui->useBPMscalingCheckBox, SIGNAL(stateChanged(int)), this, SLOT(slotUseBPMscalingCheckBox()));
    outputChComboBoxChanged();
    inputChComboBoxChanged();
    ui->progressBar->setValue(0);
}

WindowFrequencyAnalysis::~WindowFrequencyAnalysis() = default;

void WindowFrequencyAnalysis::dressPlots()
{
    dressPlot(ui->graphMg, "Magnitude");
    dressPlot(ui->graphPh, "Phase [deg]");
    ui->graphMg->yAxis->setTicker(QSharedPointer<QCPAxisTickerLog>(new QCPAxisTickerLog));
    ui->graphMg->yAxis->setScaleType(QCPAxis::stLogarithmic);
    ui->graphMg->yAxis->setNumberFormat(QStringLiteral("e"));
    ui->graphMg->yAxis->setNumberPrecision(2);
}

void WindowFrequencyAnalysis::showTool()
{
    outputChComboBoxChanged();
    inputChComboBoxChanged();
    getOutputChValue();
    show();
}

int WindowFrequencyAnalysis::outputNumber()
{
    unsigned char xlf = 0;
    unsigned char xhf = 0;
    unsigned char ylf = 0;
    unsigned char yhf = 0;
    getPIDoutSel(&xlf, &xhf, &ylf, &yhf);
    return isAxisX(ui->outputChComboBox) ? xlf : ylf;
}

int WindowFrequencyAnalysis::outputRecordIndex()
{
    const int output = outputNumber();
    return output < outputs ? SlotDac + output : -1;
}

int WindowFrequencyAnalysis::inputRecordIndex()
{
    return isAxisX(ui->inputChComboBox) ? SlotXLf : SlotYLf;
}

void WindowFrequencyAnalysis::outputChComboBoxChanged()
{
    ui->outAnvoltChLineEdit->setText(QStringLiteral("OUT") + QString::number(outputNumber() + 1));
    getOutputChValue();
}

void WindowFrequencyAnalysis::getOutputChValue()
{
    const int slot = outputRecordIndex();
    DisplayRecord record = {};
    DeviceFile(streamDevicePath, O_RDONLY).read(&record, recordBytes);
    // A controller without an output has no value to show.
    QString text = slot < 0 ? QString() : QString::number(slotValue(record, slot), 'g', 6);
    ui->offsetspinBox->setText(text.replace(QLatin1Char('.'), QLatin1Char(',')));
}

void WindowFrequencyAnalysis::inputChComboBoxChanged()
{
    const bool axisX = isAxisX(ui->inputChComboBox);
    ui->inBpmChLineEdit->setText(QString::number(selectedBpm(axisX) + 1));
    ui->inIonbarChLineEdit->setText(axisX ? QStringLiteral("Xlf") : QStringLiteral("Ylf"));
}

void WindowFrequencyAnalysis::getBPMScale()
{
    const bool axisX = isAxisX(ui->inputChComboBox);
    // Any number but 0 means the second monitor, as in the settings file.
    const int bpm = selectedBpm(axisX) != 0;
    bpmScale = axisX ? bpmScaleX[bpm] : bpmScaleY[bpm];
}

void WindowFrequencyAnalysis::slotStartSweepPushButton()
{
    // The button is disabled until the sweep is over; a second call does nothing rather than to sweep within
    // a sweep.
    if (startIsServed)
        return;
    startIsServed = true;
    isSweeping = true;
    ui->StartSweepPushButton->setEnabled(false);
    ui->progressBar->setValue(0);
    runSweep();
}

void WindowFrequencyAnalysis::allowStart()
{
    startIsServed = false;
    ui->StartSweepPushButton->setEnabled(true);
}

void WindowFrequencyAnalysis::runSweep()
{
    const QPointer<WindowFrequencyAnalysis> self = this;
    if (mailbox->pidStatus != PidStatusOff) {
        refuse("PID Running ...\n", "Feedback need to be stopped before starting the Frequency Analysis.\n\n");
        // isSweeping stays set: a stop that is pressed now counts for the next sweep.
        if (self)
            allowStart();
        return;
    }
    const int length = buildSweep();
    if (self && length > 0)
        sweepPoints(length);
    if (!self)
        return;

    allowStart();
    // A stop during the last point is a stop too, so that it does not end the next sweep.
    const bool stopped = stopRequested && length > 0;
    if (!stopped)
        isSweeping = false;
    QCoreApplication::processEvents();
    if (self && stopped)
        stopRequested = false;
}

int WindowFrequencyAnalysis::buildSweep()
{
    const int length = ui->lengthLineEdit->text().toInt();
    const double start = ui->startFreqLineEdit->text().toDouble();
    const double stop = ui->stopFreqLineEdit->text().toDouble();
    if (const frequency_sweep::Refusal* refusal = frequency_sweep::refusal(start, stop, length)) {
        refuse(refusal->title, refusal->text);
        return -1;
    }
    const bool logarithmic = ui->sweepTypeComboBox->currentText() != QLatin1String("lin");
    sweepFrequencies = frequency_sweep::points(logarithmic, start, stop, length);
    return length;
}

void WindowFrequencyAnalysis::sweepPoints(int length)
{
    const QPointer<WindowFrequencyAnalysis> self = this;
    // Held open for the sweep, and used by nothing.
    const DeviceFile outputDevice(outputDevicePath, O_RDWR | O_SYNC);
    // Shared, so that it outlives a window that is destroyed during the sweep.
    const auto stream = std::make_shared<DeviceFile>(streamDevicePath, O_RDONLY);
    if (stream->isOpen()) {
        displayStream = stream;
    } else {
        reportMissingStreamAndQuit();
        if (!self)
            return;
    }
    std::vector<DisplayRecord> block(largestBlockRecords);
    Sweep sweep = {};
    prepareSweep(sweep);
    if (sweep.output >= outputs) {
        // Nothing could be driven, and the control library must not be asked for an output that does not
        // exist.
        refuse("Output not allowed ...\n", "Allowed values [1, 4]\n\n");
        return;
    }
    sweep.plot = addPlot();
    // At once: the next chance to paint comes after the first point.
    ui->StartSweepPushButton->repaint();
    ui->progressBar->repaint();
    ui->plotsTree->viewport()->repaint();
    {
        const DisplayRateKeeper keeper;
        measurePoints(sweep, *stream, block, length);
    }
    if (self)
        rescaleAndReplot();
}

void WindowFrequencyAnalysis::prepareSweep(Sweep& sweep)
{
    sweep.output = outputNumber();
    sweep.inputSlot = inputRecordIndex();
    getBPMScale();
    if (sweep.output >= outputs)
        return;
    sweep.amplitudes[sweep.output] = float(ui->amplspinBox->value());
    const QString offset = ui->offsetspinBox->text().replace(QLatin1Char(','), QLatin1Char('.'));
    sweep.offsets[sweep.output] = float(offset.toDouble());
}

int WindowFrequencyAnalysis::addPlot()
{
    const QString name = QStringLiteral("plot_%1_%2_%3")
                             .arg(ui->outputChComboBox->currentText(), ui->inputChComboBox->currentText())
                             .arg(plotCount);
    const QColor& color = plotColors[plotCount % plotColorCount];
    magnitudeData.push_back(addTrace(ui->graphMg, color));
    phaseData.push_back(addTrace(ui->graphPh, color));

    // The list is not indexed by the plot's number: after an export it holds only what was selected then.
    auto* item = new QTreeWidgetItem(QStringList(name));
    plotItems.append(item);
    item->setFlags(item->flags() | Qt::ItemIsUserCheckable | Qt::ItemIsEnabled);
    item->setCheckState(0, Qt::Checked);
    item->setData(0, Qt::DecorationRole, color);
    ui->plotsTree->insertTopLevelItem(plotCount, item);
    return plotCount++;
}

void WindowFrequencyAnalysis::measurePoints(const Sweep& sweep, DeviceFile& stream, std::vector<DisplayRecord>& block,
                                            int length)
{
    const QPointer<WindowFrequencyAnalysis> self = this;
    double phase = 0;
    for (int i = 0; i < length && !stopRequested; ++i) {
        QApplication::setOverrideCursor(Qt::WaitCursor);
        phase = measurePoint(sweep, stream, block, i, phase);
        QApplication::restoreOverrideCursor();
        ui->progressBar->setValue(frequency_sweep::percent(i + 1, length));
        const bool goesOn = processPendingEvents(this);
        // Without a stream the sweep itself told the program to quit, and carries on.
        if (!self || (!goesOn && stream.isOpen()))
            return;
    }
}

double WindowFrequencyAnalysis::measurePoint(const Sweep& sweep, DeviceFile& stream, std::vector<DisplayRecord>& block,
                                             int index, double previousPhase)
{
    const auto hertz = float(sweepFrequencies[std::size_t(index)]);
    SAMP_FREQ = frequency_sweep::timing(hertz).streamHz;
    mailbox->setDisplayFreq(0);

    // The library takes its arguments as writable arrays.
    Sweep drive = sweep;
    funcGenConfig(drive.amplitudes, drive.offsets, hertz);
    funcGenEnable(static_cast<signed char>(sweep.output + firstGeneratorMode));
    pauseMilliseconds(frequency_sweep::waitMs(hertz));
    stream.read(block.data(), largestBlockBytes);

    // The last record is not used.
    demodulation::Response response =
        demodulation::demodulate(block.data(), largestBlockRecords - 1, sweep.inputSlot, useBPMscaling ? bpmScale : 1.0,
                                 sweep.amplitudes[sweep.output]);
    if (index > 0)
        response.phaseDeg = demodulation::unwrapped(previousPhase, response.phaseDeg);
    funcGenEnable(0);
    putPoint(magnitudeData[std::size_t(sweep.plot)], double(hertz), response.magnitude);
    putPoint(phaseData[std::size_t(sweep.plot)], double(hertz), response.phaseDeg);
    return response.phaseDeg;
}

void WindowFrequencyAnalysis::rescaleAndReplot()
{
    rescaleToVisible(ui->graphMg);
    rescaleToVisible(ui->graphPh);
    ui->graphMg->replot();
    ui->graphPh->replot();
}

void WindowFrequencyAnalysis::slotPushButtonAutoscale()
{
    rescaleAndReplot();
}

void WindowFrequencyAnalysis::slotStopSweepPushButton()
{
    stopRequested = isSweeping;
}

void WindowFrequencyAnalysis::slotUseBPMscalingCheckBox()
{
    useBPMscaling = ui->useBPMscalingCheckBox->isChecked();
}

void WindowFrequencyAnalysis::onPlotsTreeItemChanged(QTreeWidgetItem* item, int col)
{
    const int row = ui->plotsTree->indexOfTopLevelItem(item);
    if (row < 0)
        return;
    const bool visible = item->checkState(col) == Qt::Checked;
    for (QCustomPlot* plot : {ui->graphMg, ui->graphPh}) {
        plot->graph(row)->setVisible(visible);
        plot->replot();
    }
}

void WindowFrequencyAnalysis::slotExportMeasPushButton()
{
    const QPointer<WindowFrequencyAnalysis> self = this;
    const PlainTextBoxes plain;
    // Without a parent, so that the dialog outlives a window that is destroyed beneath it.
    QString path = QFileDialog::getSaveFileName(nullptr, QStringLiteral("Select a file to export the data"), QString(),
                                                QStringLiteral("CSV files (*.csv);;All Files (*)"));
    if (!self || path.isEmpty())
        return;
    plotItems = ui->plotsTree->selectedItems();
    const QString suffix = QStringLiteral(".csv");
    for (QTreeWidgetItem* item : plotItems) {
        // The name grows from plot to plot.
        path.remove(suffix);
        path += QLatin1Char('_') + item->text(0) + suffix;
        if (!exportPlot(item, path))
            return;
    }
}

bool WindowFrequencyAnalysis::exportPlot(QTreeWidgetItem* item, const QString& path)
{
    OutputFile file(path, OutputFile::Replace);
    if (!file.begin())
        return false;
    const auto plot = std::size_t(ui->plotsTree->indexOfTopLevelItem(item));
    const QCPDataMap& magnitudes = *magnitudeData[plot];
    const QCPDataMap& phases = *phaseData[plot];
    std::vector<FrequencyPoint> points;
    for (int i = 0; i < magnitudes.size(); ++i) {
        const QCPGraphData& magnitude = *magnitudes.at(i);
        points.push_back({magnitude.key, magnitude.value, phases.at(i)->value});
    }
    writeFrequencyCsv(file, useBPMscaling, points);
    const bool isSaved = file.commit();
    if (!isSaved)
        tellFailedSave(file);
    return isSaved;
}
