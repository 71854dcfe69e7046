#include "FrequencyTool.h"

#include "support/DrivenPause.h"

#include <QProgressBar>
#include <QtTest>

#include <cmath>

using namespace koralink_double;

std::vector<double> generatorFrequencies()
{
    std::vector<double> list;
    for (const Call& call : calls()) {
        if (call.name == "funcGenConfig")
            list.push_back(call.arguments.at(8));
    }
    return list;
}

void KnownResponse::operator()(DisplayRecord* block, int count) const
{
    const std::vector<double> frequencies = generatorFrequencies();
    const double phase = phaseDeg(frequencies.empty() ? 0 : frequencies.back()) * M_PI / 180;
    for (int i = 0; i < count; ++i) {
        const double turn = 2 * M_PI * 61 * i / usedRecords;
        block[i].xLf = amplitude * std::sin(turn + phase);
        block[i].yLf = -3 * block[i].xLf;
        block[i].funcGenRefA = float(4 * std::sin(turn));
        block[i].funcGenRefB = float(4 * std::cos(turn));
    }
}

void FrequencyTool::init()
{
    koralink_double::reset();
    world = std::make_unique<World>();
    folder = std::make_unique<QTemporaryDir>();
    window = std::make_unique<WindowFrequencyAnalysis>();
    clearCalls();
}

void FrequencyTool::cleanup()
{
    window.reset();
    folder.reset();
    world.reset();
    QCOMPARE(openDescriptors(), 0);
}

int FrequencyTool::progress() const
{
    return operate::find<QProgressBar>(window.get(), "progressBar")->value();
}

void FrequencyTool::setSweep(const char* start, const char* stop, const char* length, const char* type)
{
    line("startFreqLineEdit")->setText(QLatin1String(start));
    line("stopFreqLineEdit")->setText(QLatin1String(stop));
    line("lengthLineEdit")->setText(QLatin1String(length));
    combo("sweepTypeComboBox")->setCurrentText(QLatin1String(type));
}

void FrequencyTool::inPause(int number, std::function<void()> action)
{
    driven_pause::setAction([number, action = std::move(action)](unsigned long) {
        if (int(driven_pause::pauses().size()) == number)
            action();
    });
}

std::vector<double> FrequencyTool::keys(int plot) const
{
    std::vector<double> list;
    for (const QCPGraphData& point : *magnitudePlot()->graph(plot)->data())
        list.push_back(point.key);
    return list;
}

std::vector<double> FrequencyTool::values(QCustomPlot* graphs, int plot) const
{
    std::vector<double> list;
    for (const QCPGraphData& point : *graphs->graph(plot)->data())
        list.push_back(point.value);
    return list;
}
