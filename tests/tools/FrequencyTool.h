#pragma once

#include "double/KoralinkDouble.h"
#include "support/Operator.h"
#include "support/World.h"
#include "tools/WindowFrequencyAnalysis.h"

#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTreeWidget>

#include <functional>
#include <memory>
#include <vector>

constexpr int blockRecords = 14336;
constexpr int usedRecords = 14335;

/// Frequencies of all calls of funcGenConfig, Hz.
std::vector<double> generatorFrequencies();

/// Fills a block with a response of known phase: whole turns of the references over the used records, so that
/// the means are exact. The magnitude is twice the amplitude, the one of Y three times as large.
struct KnownResponse
{
    std::function<double(double hertz)> phaseDeg = [](double) { return 0.0; };
    double amplitude = 1;

    void operator()(DisplayRecord* block, int count) const;
};

/// The tool on the double, anew for every test, and what an operator does to it.
class FrequencyTool : public QObject
{
    Q_OBJECT

protected:
    QLineEdit* line(const char* name) const { return operate::find<QLineEdit>(window.get(), name); }
    QComboBox* combo(const char* name) const { return operate::find<QComboBox>(window.get(), name); }
    QPushButton* button(const char* name) const { return operate::find<QPushButton>(window.get(), name); }
    QCustomPlot* magnitudePlot() const { return operate::find<QCustomPlot>(window.get(), "graphMg"); }
    QCustomPlot* phasePlot() const { return operate::find<QCustomPlot>(window.get(), "graphPh"); }
    QTreeWidget* tree() const { return operate::find<QTreeWidget>(window.get(), "plotsTree"); }
    int progress() const;
    QString path(const char* name) const { return folder->filePath(QLatin1String(name)); }

    void setSweep(const char* start, const char* stop, const char* length, const char* type = "lin");
    void start() { operate::press(button("StartSweepPushButton")); }
    void stop() { operate::press(button("StopSweepPushButton")); }
    void exportSelected() { operate::press(button("exportMeasPushButton")); }
    /// Lets something happen in the pause of this number since the last driven_pause::clear(), from 1.
    void inPause(int number, std::function<void()> action);

    std::vector<double> keys(int plot) const;
    std::vector<double> values(QCustomPlot* graphs, int plot) const;

    std::unique_ptr<World> world;
    std::unique_ptr<QTemporaryDir> folder;
    std::unique_ptr<WindowFrequencyAnalysis> window;

private slots:
    void init();
    void cleanup();
};
