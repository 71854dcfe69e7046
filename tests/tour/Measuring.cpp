// Noon: the feedback rests, and the operator measures.

#include "simulation/PowerOn.h"
#include "support/ActuatorForms.h"
#include "support/FileDialogs.h"
#include "support/MessageBoxes.h"
#include "support/Operator.h"
#include "tour/Chapters.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>

#include <qcustomplot.h>

#include <algorithm>
#include <cmath>

using operate::find;
namespace powerOn = kora::simulation::powerOn;

namespace {

/// Output 0 moves the beam in X by a coarse actuator.
constexpr const kora::simulation::ActuatorModel& actuatorX = powerOn::actuators[0];

/// A label such as "0.76 ms", in milliseconds.
double milliseconds(QWidget* window, const char* label)
{
    return find<QLabel>(window, label)->text().section(QLatin1Char(' '), 0, 0).toDouble();
}

/// The greater of two deviations; NaN is the worst of all, and stays so.
double worse(double a, double b)
{
    return std::isnan(a) || a > b ? a : b;
}

/// Lines of a saved file behind its headings, split at the commas.
QVector<QList<QByteArray>> savedRows(const QString& path, int headings)
{
    QVector<QList<QByteArray>> rows;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return rows;
    for (const QByteArray& line : file.readAll().split('\n').mid(headings)) {
        if (!line.isEmpty())
            rows.append(line.trimmed().split(','));
    }
    return rows;
}

} // namespace

void tour::sweepFrequencies(Stage& stage)
{
    stage.findings.beginChapter(QStringLiteral("Sweep frequencies"));
    QWidget* tool = stage.open("actionFrequency_Analysis", "WindowFrequencyAnalysis");
    const auto field = [&](const char* name) { return find<QLineEdit>(tool, name); };
    const auto* start = find<QPushButton>(tool, "StartSweepPushButton");
    stage.hand.type(field("startFreqLineEdit"), QStringLiteral("1"));
    stage.hand.type(field("stopFreqLineEdit"), QStringLiteral("500"));
    stage.hand.type(field("lengthLineEdit"), QStringLiteral("12"));
    stage.hand.type(find<QDoubleSpinBox>(tool, "amplspinBox"), QStringLiteral("0.6"));
    const MessageBoxes boxes;
    stage.hand.press(find<QPushButton>(tool, "StartSweepPushButton"));
    stage.findings.equal(QStringLiteral("while the feedback runs"), QStringLiteral("PID Running ..."),
                         boxes.boxes().value(0).title.trimmed());

    stage.hand.press(find<QPushButton>(stage.hand.widget("WidgetFeedbackControl"), "buttonFdbk"));
    stage.hand.wait(3);
    stage.findings.equal(QStringLiteral("status"), QStringLiteral("Feedback OFF, grey lamp"), stage.heartbeat());
    stage.hand.press(find<QPushButton>(tool, "StartSweepPushButton"));
    stage.findings.holds(QStringLiteral("sweep came to its end"), boxes.count() == 1 && start->isEnabled());

    const auto magnitudes = find<QCustomPlot>(tool, "graphMg")->graph(0)->data();
    const auto phases = find<QCustomPlot>(tool, "graphPh")->graph(0)->data();
    stage.findings.near(QStringLiteral("points"), QString(), 12, 0, magnitudes->size());
    double worstRatio = 0;
    double worstDegrees = 0;
    for (int i = 0; i < magnitudes->size(); ++i) {
        const std::complex<double> expected = actuator_forms::transferFunction(actuatorX, magnitudes->at(i)->key);
        const double phase = std::arg(expected) * 180 / M_PI;
        worstRatio = worse(worstRatio, std::fabs(magnitudes->at(i)->value / std::abs(expected) - 1));
        worstDegrees = worse(worstDegrees, actuator_forms::degreesApart(phases->at(i)->value, phase));
    }
    stage.findings.atMost(QStringLiteral("magnitude off the actuator's"), QStringLiteral("%"), 3, 100 * worstRatio);
    stage.findings.atMost(QStringLiteral("phase off the actuator's"), QStringLiteral("degrees"), 3, worstDegrees);
    stage.camera.take(tool, QStringLiteral("frequency-analysis"));
    stage.hand.close(tool);
}

void tour::step(Stage& stage)
{
    stage.findings.beginChapter(QStringLiteral("Step response"));
    stage.hand.openClosedTool("showStepResponse");
    QWidget* tool = stage.hand.widget("WindowStepResponse");
    stage.hand.type(find<QDoubleSpinBox>(tool, "posXStepDoubleSpinBox"), QStringLiteral("0.5"));
    stage.hand.press(find<QDialogButtonBox>(tool, "buttonBox"), QStringLiteral("Run"));
    stage.camera.take(tool, QStringLiteral("step-response"));

    // The response is shown raw, a unit of which is the scale of the monitor.
    const double gain = actuatorX.gain / powerOn::scale;
    const double at10 = actuator_forms::crossingTime(actuatorX, 0.1);
    const double at90 = actuator_forms::crossingTime(actuatorX, 0.9);
    stage.findings.near(QStringLiteral("K"), QStringLiteral("1/V"), gain, 0.05 * gain,
                        find<QLabel>(tool, "Klabel")->text().toDouble());
    stage.findings.near(QStringLiteral("Tdead"), QStringLiteral("ms"), (actuatorX.deadTime + at10) * 1e3, 0.1,
                        milliseconds(tool, "Tdeadlabel"));
    stage.findings.near(QStringLiteral("Tset"), QStringLiteral("ms"), (at90 - at10) * 1e3, 0.15,
                        milliseconds(tool, "Tsetlabel"));
    stage.hand.close(tool);

    // The tool leaves the stream at its own rate: the operator sets it back.
    QWidget* settings = stage.open("action_Display_Settings", "WindowDisplaySettings");
    auto* rate = find<QDoubleSpinBox>(settings, "dispFreqBox");
    stage.hand.type(rate, QStringLiteral("1000"));
    stage.camera.take(settings, QStringLiteral("display-settings"));
    stage.hand.press(find<QDialogButtonBox>(settings, "buttonBox"), QStringLiteral("OK"));
    constexpr double window = 16;
    stage.hand.wait(window);
    const auto trace = stage.hand.plot(QStringLiteral("Graph Position X"))->graph(0)->data();
    stage.findings.near(QStringLiteral("span of the graphs again"), QStringLiteral("s"), 14336 / 1000.0, 0.01,
                        std::prev(trace->constEnd())->key - trace->constBegin()->key);
}

void tour::scan(Stage& stage)
{
    stage.findings.beginChapter(QStringLiteral("Rocking curve"));
    stage.hand.openClosedTool("showRockCurve");
    QWidget* tool = stage.hand.widget("WindowRockingCurve");
    constexpr int points = 200;
    stage.hand.type(find<QSpinBox>(tool, "boxN"), QString::number(points));
    stage.hand.press(find<QPushButton>(tool, "buttonStart"));
    stage.camera.take(tool, QStringLiteral("rocking-curve"));
    const auto sum = find<QCustomPlot>(tool, "graph")->graph(2)->data();
    stage.findings.near(QStringLiteral("points"), QString(), points, 0, sum->size());
    const auto highest =
        std::max_element(sum->constBegin(), sum->constEnd(),
                         [](const QCPGraphData& a, const QCPGraphData& b) { return a.value < b.value; });
    // The flux wavers by a thousandth, and the top of the peak is flat within that.
    stage.findings.near(QStringLiteral("peak of the sum"), QStringLiteral("V"), powerOn::tuningPeak, 0.06,
                        highest == sum->constEnd() ? std::nan("") : highest->key);
    stage.hand.close(tool);
}

void tour::scanSurface(Stage& stage)
{
    stage.findings.beginChapter(QStringLiteral("3D rocking curve"));
    stage.hand.openClosedTool("showRockCurve3D");
    QWidget* tool = stage.hand.widget("WindowRocking3D");
    stage.hand.type(find<QDoubleSpinBox>(tool, "timeBox"), QStringLiteral("2"));
    stage.hand.press(find<QPushButton>(tool, "goButton"));
    stage.camera.take(tool, QStringLiteral("rocking-3d"));

    const QString path = stage.camera.folder() + QStringLiteral("/surface.csv");
    const FileDialogs dialogs(path);
    stage.hand.press(find<QPushButton>(tool, "saveButton"));
    const auto rows = savedRows(path, 6);
    stage.findings.near(QStringLiteral("points saved"), QString(), 64 * 64, 0, rows.size());
    QList<QByteArray> highest = {"nan", "nan", "-1"};
    for (const QList<QByteArray>& row : rows) {
        if (row.size() == 3 && row[2].toDouble() > highest[2].toDouble())
            highest = row;
    }
    stage.findings.near(QStringLiteral("peak, output 1"), QStringLiteral("V"), powerOn::tuningPeak, 0.1,
                        highest[0].toDouble());
    stage.findings.near(QStringLiteral("peak, output 2"), QStringLiteral("V"), powerOn::tuningPeak, 0.1,
                        highest[1].toDouble());
    stage.hand.close(tool);
}

void tour::save(Stage& stage)
{
    stage.findings.beginChapter(QStringLiteral("Save data"));
    // The scans switched the feedback off and left the loops where they were.
    QWidget* panel = stage.hand.widget("WidgetFeedbackControl");
    stage.hand.press(find<QPushButton>(panel, "resetPIDbutton"));
    stage.hand.press(find<QPushButton>(panel, "buttonFdbk"));
    constexpr double window = 16;
    stage.hand.wait(window);
    stage.findings.equal(QStringLiteral("status"), QStringLiteral("Feedback ON, green lamp"), stage.heartbeat());

    QWidget* tool = stage.open("action_Save_Data", "WindowSaveData");
    const QString path = stage.camera.folder() + QStringLiteral("/saved.csv");
    QFile::remove(path);
    stage.hand.type(find<QLineEdit>(tool, "pathLineEdit"), path);
    stage.hand.press(find<QDialogButtonBox>(tool, "buttonBox"), QStringLiteral("Save"));
    stage.camera.take(tool, QStringLiteral("save-data"));
    const auto rows = savedRows(path, 9);
    stage.findings.near(QStringLiteral("rows"), QString(), 1000, 0, rows.size());
    stage.findings.near(QStringLiteral("time of the last row"), QStringLiteral("s"), 0.999, 1e-6,
                        rows.isEmpty() ? std::nan("") : rows.last().value(1).toDouble());
    double sum = 0;
    for (const QList<QByteArray>& row : rows)
        sum += row.value(2).toDouble();
    const double setPoint = find<QDoubleSpinBox>(panel, "posXDoubleSpinBox")->value();
    stage.findings.near(QStringLiteral("mean of the saved X"), QStringLiteral("um"), setPoint, 0.2, sum / rows.size());
    stage.hand.close(tool);
}
