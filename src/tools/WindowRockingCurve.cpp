#include "tools/WindowRockingCurve.h"

#include "app/Globals.h"
#include "graphs/PlotTheme.h"
#include "graphs/TraceGraph.h"
#include "hardware/ConfigFile.h"
#include "hardware/LoopConfiguration.h"
#include "hardware/LoopParameters.h"
#include "hardware/MailboxComm.h"
#include "stream/DeviceFile.h"
#include "stream/PlotData.h"
#include "support/FieldGuard.h"
#include "tools/Pause.h"
#include "tools/PendingEvents.h"
#include "ui_WindowRockingCurve.h"

#include <cmath>
#include <fcntl.h>

using rocking_scan::Direction;
using rocking_scan::Electrodes;
using rocking_scan::Traces;

namespace {

/// Colour of an electrode's trace, by its amplifier channel.
constexpr int channelColours[4][3] = {{255, 255, 135}, {255, 130, 255}, {130, 255, 130}, {130, 210, 250}};

/// Looks of the traces until the first scan, which knows the electrodes; the last pen stays.
struct TraceLook
{
    const char* name;
    int rgba[4];
    double width;
};
constexpr TraceLook traceLooks[3] = {{"first electrode", {250, 250, 135, 240}, 2.0},
                                     {"second electrode", {255, 120, 255, 240}, 2.0},
                                     {"sum", {240, 240, 240, 240}, 3.0}};

/// What one scan drives, as the settings file has it at its start.
struct Drive
{
    int swept;
    int held;
    double heldVolts;
};

Drive storedDrive(Direction direction)
{
    int outputXlf, outputXhf, outputYlf, outputYhf;
    configFile->readDACpos(&outputXlf, &outputXhf, &outputYlf, &outputYhf);
    if (direction == rocking_scan::PosX)
        return {outputXlf, outputXhf, configFile->readLoop(LoopYlf).Offset};
    return {outputXhf, outputXlf, configFile->readLoop(LoopXlf).Offset};
}

Electrodes storedElectrodes()
{
    Electrodes electrodes;
    configFile->readChannels(&electrodes.top, &electrodes.right, &electrodes.bottom, &electrodes.left, 0);
    return electrodes;
}

/// Adds a point as a map does: it replaces the one of the same key.
void insertPoint(QCPDataMap& data, double key, double value)
{
    const auto found = data.findBegin(key, false);
    if (found != data.constEnd() && found->key == key)
        (data.begin() + (found - data.constBegin()))->value = value;
    else
        data.add(QCPGraphData(key, value));
}

} // namespace

WindowRockingCurve::WindowRockingCurve(QWidget* parent)
    : QDialog(parent), ui(std::make_unique<Ui::WindowRockingCurve>())
{
    ui->setupUi(this);
    new FieldGuard(this);
    dressPlot();
    connect(ui->buttonStart, SIGNAL(released()), SLOT(startMeasurement()));
    connect(ui->boxStart, SIGNAL(valueChanged(double)), SLOT(minMaxChanged()));
    connect(ui->boxStop, SIGNAL(valueChanged(double)), SLOT(minMaxChanged()));
    connect(ui->buttonBox, SIGNAL(accepted()), SLOT(accept()));
    connect(ui->buttonBox, SIGNAL(rejected()), SLOT(reject()));
}

WindowRockingCurve::~WindowRockingCurve() = default;

void WindowRockingCurve::dressPlot()
{
    QCustomPlot* plot = ui->graph;
    plot->setBackground(QBrush(Qt::darkGray));
    plot_theme::drawPlain(plot);
    plot->xAxis->setLabel(QStringLiteral(" Output voltage [V] "));
    plot->xAxis->setRange(4, 6);
    plot->yAxis->setLabel(QStringLiteral(" Input current [A] "));
    plot->yAxis->setRange(-0.00015, 0.00015);
    plot_theme::showLegend(plot);
    plot->setInteractions(QCP::iRangeDrag | QCP::iRangeZoom);
    for (const TraceLook& look : traceLooks) {
        const auto& c = look.rgba;
        auto* graph = new TraceGraph(plot->xAxis, plot->yAxis);
        graph->setName(QLatin1String(look.name));
        graph->setPen(QPen(QColor(c[0], c[1], c[2], c[3]), look.width));
    }
}

void WindowRockingCurve::dressTraces(const Traces& traces)
{
    for (int i = 0; i < 3; ++i)
        ui->graph->graph(i)->setName(traces.names[i]);
    for (int i = 0; i < 2; ++i) {
        const auto& c = channelColours[traces.channel[i]];
        ui->graph->graph(i)->setPen(
            QPen(QBrush(QColor(c[0], c[1], c[2])), 2.0, Qt::SolidLine, Qt::SquareCap, Qt::BevelJoin));
    }
}

void WindowRockingCurve::minMaxChanged()
{
    ui->graph->xAxis->setRange(ui->boxStart->value(), ui->boxStop->value());
    ui->graph->replot();
}

void WindowRockingCurve::clearGraph()
{
    for (int i = 0; i < ui->graph->graphCount(); ++i)
        ui->graph->graph(i)->data()->clear();
    ui->graph->replot();
}

void WindowRockingCurve::showPoint(double volts, double first, double second)
{
    const double values[3] = {first, second, first + second};
    for (int i = 0; i < 3; ++i)
        insertPoint(*ui->graph->graph(i)->data(), volts, values[i]);
    ui->graph->xAxis->rescale();
    ui->graph->yAxis->rescale();
    // One redraw a point on purpose: the operator sees the curve grow.
    ui->graph->replot();
}

void WindowRockingCurve::startMeasurement()
{
    clearGraph();
    DeviceFile amplifier(amplifierDevicePath[0], O_RDWR | O_SYNC);
    DeviceFile outputUnit(outputDevicePath, O_RDWR | O_SYNC);
    mailbox->setFBenable(0);
    mailbox->setOutputMux(0);

    const auto direction = Direction(ui->chSel->currentIndex());
    const Drive drive = storedDrive(direction);
    const Traces traces = rocking_scan::traces(direction, storedElectrodes());
    const auto pause = static_cast<unsigned long>(std::lround(ui->boxTimePoint->value() * 1000));
    dressTraces(traces);

    for (int i = 0; i < ui->boxN->value(); ++i) {
        const int points = ui->boxN->value();
        const double volts = rocking_scan::pointVolts(ui->boxStart->value(), ui->boxStop->value(), i, points);
        OutputRecord outputs = rocking_scan::outputs(drive.swept, volts, drive.held, drive.heldVolts);
        outputUnit.control(requestSetOutputs, &outputs);
        pauseMicroseconds(pause);
        CurrentRecord currents = {};
        amplifier.control(requestCurrents, &currents);
        showPoint(volts, currents.channel(traces.channel[0]), currents.channel(traces.channel[1]));
        ui->progressBar->setValue((i + 1) * 100 / points);
        pauseMicroseconds(pause);
        if (!processPendingEvents(this))
            break;
    }
    mailbox->setOutputMux(1);
}
