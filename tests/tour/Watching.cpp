// Mornings: the operator watches, logs in, tries the outputs, configures the feedback, closes the loops and
// places the beam.

#include "simulation/PowerOn.h"
#include "support/MessageBoxes.h"
#include "support/Operator.h"
#include "tour/Chapters.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDockWidget>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include <qcustomplot.h>

#include <algorithm>
#include <cmath>

using operate::find;
namespace powerOn = kora::simulation::powerOn;

namespace {

constexpr const char* panelClass = "WidgetFeedbackControl";
constexpr const char* loopBoxes[] = {"confXlfcheckbox", "confXhfcheckbox", "confYlfcheckbox", "confYhfcheckbox"};
/// What the detectors collect without bias voltage.
constexpr double collection = 0.8;
/// A mean follows a change of the beam after a second of statistics, a poll and a refresh.
constexpr double statisticsSeconds = 4;
/// One window of the stream at the rate of power-on, and a tick of the display.
constexpr double windowSeconds = 16;

/// What open and closed loops are compared by.
struct Spread
{
    double x;
    double y;
    double slow;
};

double meanOf(const QCPGraph* trace)
{
    double sum = 0;
    for (const QCPGraphData& point : *trace->data())
        sum += point.value;
    return sum / trace->data()->size();
}

/// Root mean square of the amplitudes below 10 Hz, as the spectrum shows them.
double slowAmplitude(const QCPGraph* spectrum)
{
    double squares = 0;
    for (const QCPGraphData& point : *spectrum->data()) {
        if (point.key < 10)
            squares += point.value * point.value;
    }
    return std::sqrt(squares);
}

/// Frequency of the highest line in a band, Hz.
double lineWithin(const QCPGraph* spectrum, double from, double to)
{
    QCPGraphData highest(std::nan(""), -1);
    for (const QCPGraphData& point : *spectrum->data()) {
        if (point.key >= from && point.key <= to && point.value > highest.value)
            highest = point;
    }
    return highest.key;
}

Spread spreadOf(const Stage& stage)
{
    return {stage.statistic("posXStdLineEdit"), stage.statistic("posYStdLineEdit"),
            slowAmplitude(stage.hand.plot(QStringLiteral("Graph FFT"))->graph(0))};
}

} // namespace

void tour::watch(Stage& stage)
{
    stage.findings.beginChapter(QStringLiteral("Watch"));
    stage.findings.equal(QStringLiteral("title"), QStringLiteral("KORA Local User Interface v" KORA_VERSION),
                         stage.hand.mainWindow()->windowTitle());
    stage.findings.holds(QStringLiteral("feedback panel closed to a spectator"),
                         !stage.hand.widget(panelClass)->isEnabled());

    QWidget* spectrum = stage.hand.widget("WidgetGraphFFT");
    stage.hand.select(find<QComboBox>(spectrum, "selectorComboBox"), QStringLiteral("BPM1, PosX"));
    stage.hand.select(find<QComboBox>(spectrum, "fFTLengthComboBox"), QStringLiteral("8192"));
    stage.hand.tick(find<QCheckBox>(spectrum, "removeDCCheckBox"), true);
    stage.hand.wait(windowSeconds);
    stage.camera.take(stage.hand.mainWindow(), QStringLiteral("main-window"));

    const double collected = powerOn::totalCurrent * collection * 1e6;
    stage.findings.near(QStringLiteral("mean intensity at BPM1"), QStringLiteral("uA"), collected, 0.02 * collected,
                        stage.statistic("i0MeanLineEdit") * 1e6);
    double sum = 0;
    const QCustomPlot* currents = stage.hand.plot(QStringLiteral("Graph Currents BPM1"));
    for (int channel = 0; channel < 4; ++channel)
        sum += meanOf(currents->graph(channel));
    stage.findings.near(QStringLiteral("sum of its four currents"), QStringLiteral("uA"), collected, 0.02 * collected,
                        sum * 1e6);
    const QCPGraph* outputX = stage.hand.plot(QStringLiteral("Graph DAC"))->graph(0);
    stage.findings.near(QStringLiteral("output 1 at rest"), QStringLiteral("V"), powerOn::restVolts, 1e-6,
                        meanOf(outputX));
    const QCPGraph* lines = stage.hand.plot(QStringLiteral("Graph FFT"))->graph(0);
    stage.findings.near(QStringLiteral("mains line in the spectrum of X"), QStringLiteral("Hz"), 49.9, 1,
                        lineWithin(lines, 40, 60));

    const QCPGraph* position = stage.hand.plot(QStringLiteral("Graph Position X"))->graph(0);
    const double before = position->data()->at(0)->value;
    stage.hand.wait(2);
    stage.findings.holds(QStringLiteral("graphs move"), position->data()->at(0)->value != before);

    for (const auto& picture :
         {std::pair("Graph Currents BPM1", "graph-currents"), std::pair("Graph DAC", "graph-outputs"),
          std::pair("Graph Position X", "graph-positions"), std::pair("Graph Intensity", "graph-intensities"),
          std::pair("Graph FFT", "graph-fft")}) {
        const QString title = QLatin1String(picture.first);
        stage.hand.show(title);
        stage.camera.take(stage.hand.dock(title)->widget(), QLatin1String(picture.second));
    }
}

void tour::logIn(Stage& stage)
{
    stage.findings.beginChapter(QStringLiteral("Log in"));
    QWidget* dialog = stage.open("action_Login", "DialogLogin");
    stage.hand.type(find<QLineEdit>(dialog, "usernameLineEdit"), QStringLiteral("admin"));
    stage.hand.type(find<QLineEdit>(dialog, "passwordLineEdit"), QStringLiteral("guess"));
    const MessageBoxes boxes;
    stage.hand.press(find<QPushButton>(dialog, "logIn"));
    stage.findings.equal(QStringLiteral("a guessed password"), QStringLiteral("Wrong password"),
                         boxes.boxes().value(0).title);
    stage.hand.type(find<QLineEdit>(dialog, "passwordLineEdit"), QStringLiteral("admin"));
    stage.hand.press(find<QPushButton>(dialog, "logIn"));
    stage.findings.equal(QStringLiteral("level"), QStringLiteral("admin"),
                         find<QLabel>(dialog, "currentLevel")->text());
    stage.findings.holds(QStringLiteral("feedback panel open"), stage.hand.widget(panelClass)->isEnabled());
    stage.camera.take(dialog, QStringLiteral("login"));
    stage.hand.close(dialog);
}

void tour::driveOutputsByHand(Stage& stage)
{
    stage.findings.beginChapter(QStringLiteral("Drive the outputs by hand"));
    QWidget* dialog = stage.open("actionManual_Output_Control", "WindowManOutCtrl");
    // The first 5 moves the slider, whose whole number the box takes; a second entry keeps its fraction.
    for (const char* box : {"boxCh1", "boxCh2", "boxCh3", "boxCh4"})
        stage.hand.type(find<QDoubleSpinBox>(dialog, box), QStringLiteral("5"));
    stage.hand.tick(find<QCheckBox>(dialog, "checboxEnableMan"), true);
    stage.hand.wait(statisticsSeconds);
    const double before = stage.statistic("posXMeanLineEdit");
    stage.hand.type(find<QDoubleSpinBox>(dialog, "boxCh1"), QStringLiteral("5.3"));
    // A whole period of the drift later, so that it stands where it stood.
    constexpr double driftPeriod = 10;
    stage.hand.wait(driftPeriod);
    stage.camera.take(dialog, QStringLiteral("manual-outputs"));
    const double moved = powerOn::actuators[0].gain * 0.3;
    stage.findings.near(QStringLiteral("beam moved by 0.3 V at output 1"), QStringLiteral("um"), moved, 0.15 * moved,
                        stage.statistic("posXMeanLineEdit") - before);
    stage.hand.type(find<QDoubleSpinBox>(dialog, "boxCh1"), QStringLiteral("5"));
    stage.hand.tick(find<QCheckBox>(dialog, "checboxEnableMan"), false);
    stage.hand.close(dialog);
}

void tour::configure(Stage& stage)
{
    stage.findings.beginChapter(QStringLiteral("Configure"));
    QWidget* beamline = stage.open("action_Beamline_Settings", "WindowBeamlineConf");
    stage.camera.take(beamline, QStringLiteral("beamline"));
    stage.hand.close(beamline);

    QWidget* filters = stage.open("actionPosition_Filter_Settings", "WindowFiltparams");
    stage.camera.take(filters, QStringLiteral("filters"));
    stage.hand.close(filters);

    QWidget* limits = stage.open("action_ROC_ROI", "WindowROC_ROI");
    stage.camera.take(limits, QStringLiteral("roc-roi"));
    stage.hand.press(find<QDialogButtonBox>(limits, "buttonBox"), QStringLiteral("OK"));

    QWidget* structure = stage.open("action_PID_Parameters", "WindowPIDparams");
    stage.camera.take(structure, QStringLiteral("pid-structure"));
    stage.hand.close(structure);

    QWidget* gains = stage.hand.widget("WidgetPidCtrl");
    stage.findings.near(QStringLiteral("Kp of the slow X loop"), QStringLiteral("V/um"), powerOn::lowFrequencyGains.kp,
                        0, find<QDoubleSpinBox>(find<QWidget>(gains, "posXlfwidget"), "boxKp")->value());
    stage.findings.holds(QStringLiteral("Update sends the gains"),
                         stage.hand.press(find<QPushButton>(gains, "pushButtonUpdate")));
    stage.camera.take(gains, QStringLiteral("pid"));

    QWidget* panel = stage.hand.widget(panelClass);
    stage.hand.turnTo(panel, QStringLiteral("Control"));
    for (const char* box : loopBoxes)
        stage.hand.tick(find<QCheckBox>(panel, box), true);
    const MessageBoxes boxes;
    stage.findings.holds(QStringLiteral("Update Config is taken"),
                         stage.hand.press(find<QPushButton>(panel, "updateConfButton")) && boxes.count() == 0);
    stage.camera.take(panel, QStringLiteral("feedback-panel"));
}

void tour::enableFeedback(Stage& stage)
{
    stage.findings.beginChapter(QStringLiteral("Enable the feedback"));
    // The beam came back from the hand-driven outputs: a whole window of open loops.
    stage.hand.wait(windowSeconds);
    const Spread openLoops = spreadOf(stage);
    QWidget* panel = stage.hand.widget(panelClass);
    stage.hand.press(find<QPushButton>(panel, "buttonFdbk"));
    stage.hand.wait(statisticsSeconds + windowSeconds);
    stage.findings.equal(QStringLiteral("status"), QStringLiteral("Feedback ON, green lamp"), stage.heartbeat());
    const Spread closed = spreadOf(stage);
    stage.findings.atMost(QStringLiteral("spread of X, share of open loops"), QString(), 0.2, closed.x / openLoops.x);
    stage.findings.atMost(QStringLiteral("spread of Y, share of open loops"), QString(), 0.2, closed.y / openLoops.y);
    stage.findings.atMost(QStringLiteral("motion of X below 10 Hz, share"), QString(), 0.1,
                          closed.slow / openLoops.slow);
    stage.findings.near(QStringLiteral("mean of X at the set-point"), QStringLiteral("um"), 0, 0.2,
                        stage.statistic("posXMeanLineEdit"));
    stage.hand.turnTo(panel, QStringLiteral("Statistics"));
    stage.camera.take(panel, QStringLiteral("statistics"));
    stage.hand.turnTo(panel, QStringLiteral("Control"));
    stage.camera.take(stage.hand.mainWindow(), QStringLiteral("feedback-on"));
}

void tour::placeSetPoint(Stage& stage)
{
    stage.findings.beginChapter(QStringLiteral("Click a set-point"));
    QWidget* graph = stage.hand.dock(QStringLiteral("Graph XY"))->widget();
    QWidget* panel = stage.hand.widget(panelClass);
    auto* plot = find<QCustomPlot>(graph, "graph");
    stage.hand.press(find<QPushButton>(graph, "resetZoomButton"));
    stage.hand.press(find<QPushButton>(graph, "targetEnable"));
    const MessageBoxes boxes;
    stage.hand.click(plot, powerOn::regionOfInterest * 1.05, 0);
    stage.findings.equal(QStringLiteral("outside the region of interest"), QStringLiteral("Invalid setpoint"),
                         boxes.boxes().value(0).title);
    stage.hand.click(plot, 12, -8);
    // The pixel under the cursor stands for these.
    const double x = find<QDoubleSpinBox>(panel, "posXDoubleSpinBox")->value();
    const double y = find<QDoubleSpinBox>(panel, "posYDoubleSpinBox")->value();
    stage.findings.near(QStringLiteral("set-point X in the panel"), QStringLiteral("um"), 12, 0.5, x);
    stage.findings.near(QStringLiteral("set-point Y in the panel"), QStringLiteral("um"), -8, 0.5, y);
    stage.hand.wait(2 * statisticsSeconds);
    stage.findings.near(QStringLiteral("mean of X"), QStringLiteral("um"), x, 0.2, stage.statistic("posXMeanLineEdit"));
    stage.findings.near(QStringLiteral("mean of Y"), QStringLiteral("um"), y, 0.2, stage.statistic("posYMeanLineEdit"));
    stage.camera.take(graph, QStringLiteral("graph-xy"));
}
