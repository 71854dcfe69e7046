// What is set in the windows of filters, limits, monitors and manual outputs acts on the simulated
// installation.

#include "app/Globals.h"
#include "app/SimulatedSession.h"
#include "stream/Updater.h"
#include "support/Operator.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSlider>
#include <QtTest>

#include <qcustomplot.h>

#include <algorithm>
#include <cmath>

using operate::find;

namespace {

double mean(const QCPDataMap* trace)
{
    double sum = 0;
    for (auto point = trace->constBegin(); point != trace->constEnd(); ++point)
        sum += point->value;
    return sum / trace->size();
}

/// Peak value of a sine of whole periods in the trace.
double amplitude(const QCPDataMap* trace)
{
    const double centre = mean(trace);
    double squares = 0;
    for (auto point = trace->constBegin(); point != trace->constEnd(); ++point)
        squares += (point->value - centre) * (point->value - centre);
    return std::sqrt(2 * squares / trace->size());
}

bool isNear(double value, double expected, double tolerance)
{
    const bool near = std::fabs(value - expected) <= tolerance;
    if (!near)
        qWarning("%g is not %g within %g", value, expected, tolerance);
    return near;
}

/// Traces of the position graphs.
enum Trace
{
    Bpm1 = 0,
    LowFrequency = 2,
    HighFrequency = 3
};

} // namespace

class ConfigurationTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<SimulatedSession> session;

    QWidget* open(const char* action, const char* window)
    {
        session->trigger(action);
        return session->widgetOf(window);
    }
    QWidget* filters() { return open("actionPosition_Filter_Settings", "WindowFiltparams"); }
    QWidget* regions() { return open("action_ROC_ROI", "WindowROC_ROI"); }
    QWidget* beamline() { return open("action_Beamline_Settings", "WindowBeamlineConf"); }
    QWidget* outputs() { return open("actionManual_Output_Control", "WindowManOutCtrl"); }
    static QWidget* monitor(QWidget* beamline) { return find<QWidget>(beamline, "boxBPM1"); }
    static void press(QWidget* window, const char* text)
    {
        operate::press(find<QDialogButtonBox>(window, "buttonBox"), QString::fromLatin1(text));
    }
    static void set(QWidget* window, const char* box, double value)
    {
        find<QDoubleSpinBox>(window, box)->setValue(value);
    }
    static void choose(QWidget* window, const char* combo, int index)
    {
        find<QComboBox>(window, combo)->setCurrentIndex(index);
    }
    void vibrate(double hertz, double x, double y) { session->plant().setVibration(0, hertz, x, y); }
    double amplitudeX(int trace) { return amplitude(updater->dataPosX[trace]); }
    double amplitudeY(int trace) { return amplitude(updater->dataPosY[trace]); }
    QString heartbeat() { return find<QLabel>(session->widgetOf("WidgetFeedbackControl"), "heartbeatLabel")->text(); }
    void toggleFeedback()
    {
        operate::press(find<QPushButton>(session->widgetOf("WidgetFeedbackControl"), "buttonFdbk"));
    }

private slots:
    void init()
    {
        session = std::make_unique<SimulatedSession>();
        session->plant().quietBeam();
        // One second, so that a tick brings a window without anything older than the last change.
        dispBufferBytes = 1000 * 256;
        session->logIn(QStringLiteral("admin"), QStringLiteral("admin"));
        QCOMPARE(userLevel, 2);
    }
    void cleanup() { session.reset(); }

    void lowPassTakesVibrationOffTheLowFrequencyPath()
    {
        vibrate(50, 40, 0);
        session->tick(2);
        const double whole = amplitudeX(Bpm1);
        QVERIFY(isNear(whole, 40, 2));
        QVERIFY(isNear(amplitudeX(LowFrequency) / whole, 1, 0.02));

        QWidget* window = filters();
        choose(window, "comboBoxFilterXlf", 0);
        set(window, "doubleSpinBoxXlfLow", 50);
        press(window, "Apply");
        session->tick(3);
        QVERIFY(isNear(amplitudeX(LowFrequency) / whole, std::sqrt(0.5), 0.02));

        set(window, "doubleSpinBoxXlfLow", 10);
        press(window, "Apply");
        session->tick(3);
        QVERIFY(isNear(amplitudeX(LowFrequency) / whole, 0, 0.005));

        // At once, without Apply.
        choose(window, "comboBoxFilterXlf", 1);
        session->tick(2);
        QVERIFY(isNear(amplitudeX(LowFrequency) / whole, 1, 0.02));
    }

    void bandPassPassesItsBandOnTheHighFrequencyPath()
    {
        vibrate(10, 0, 40);
        QWidget* window = filters();
        set(window, "doubleSpinBoxYhfLow", 5);
        set(window, "doubleSpinBoxYhfHigh", 20);
        press(window, "Apply");
        session->tick(3);
        const double whole = amplitudeY(Bpm1);
        QVERIFY(isNear(amplitudeY(HighFrequency) / whole, 1, 0.02));
        set(window, "doubleSpinBoxYhfLow", 20);
        set(window, "doubleSpinBoxYhfHigh", 200);
        press(window, "OK");
        session->tick(3);
        // 1 / sqrt(1 + x^4) with x = (f^2 - f0^2) / (f B), f0^2 = 4000 Hz^2, B = 180 Hz.
        QVERIFY(isNear(amplitudeY(HighFrequency) / whole, 0.2085, 0.01));
    }

    void exchangedChannelMixesTheAxes()
    {
        vibrate(20, 40, 0);
        session->tick();
        QVERIFY(isNear(amplitudeX(Bpm1), 40, 2));
        QVERIFY(isNear(amplitudeY(Bpm1), 0, 1));
        QWidget* window = beamline();
        choose(monitor(window), "BPM90_top", 1);
        choose(monitor(window), "BPM90_right", 0);
        press(window, "Save");
        session->tick();
        QVERIFY(isNear(amplitudeX(Bpm1), 20, 2));
        QVERIFY(isNear(amplitudeY(Bpm1), 20, 2));
    }

    void sameChannelOnBothSidesShowsNoPosition()
    {
        vibrate(20, 40, 0);
        QWidget* window = beamline();
        choose(monitor(window), "BPM90_left", 1);
        press(window, "Save");
        session->tick();
        QVERIFY(isNear(amplitudeX(Bpm1), 0, 1));
    }

    void wrongOrientationShowsTheMotionOnBothAxes()
    {
        vibrate(20, 40, 0);
        QWidget* window = beamline();
        choose(monitor(window), "BPMorientation", 1);
        choose(monitor(window), "BPM45_right", 1);
        choose(monitor(window), "BPM45_bottom", 2);
        choose(monitor(window), "BPM45_left", 3);
        QVERIFY(find<QLabel>(monitor(window), "textInvalidConf")->isHidden());
        press(window, "Save");
        session->tick();
        QVERIFY(isNear(amplitudeX(Bpm1), 40, 2));
        QVERIFY(isNear(amplitudeY(Bpm1), 40, 2));
    }

    void scaleAndOffsetMoveTheGraph()
    {
        vibrate(20, 0, 40);
        QWidget* window = beamline();
        set(monitor(window), "yGain", 1000);
        set(monitor(window), "xOffset", 25);
        press(window, "Save");
        session->tick();
        QVERIFY(isNear(amplitudeY(Bpm1), 80, 4));
        QVERIFY(isNear(mean(updater->dataPosX[Bpm1]), 25, 1));
    }

    void highVoltageRisesAndFalls()
    {
        QWidget* panel = monitor(beamline());
        const auto status = [panel] { return find<QLabel>(panel, "statusLabel")->text(); };
        const auto volts = [panel] { return find<QLineEdit>(panel, "voltageReadoutLineEdit")->text(); };
        session->tick();
        QCOMPARE(status(), QStringLiteral("HV OFF"));
        set(panel, "biasVoltageDoubleSpinBox", 200);
        operate::press(find<QPushButton>(panel, "setHVbutton"));
        operate::press(find<QPushButton>(panel, "enableHVbutton"));
        session->tick();
        QCOMPARE(status(), QStringLiteral("HV rising"));
        session->tick(2);
        QCOMPARE(status(), QStringLiteral("HV ON"));
        QCOMPARE(volts(), QStringLiteral("200.00V"));
        operate::press(find<QPushButton>(panel, "enableHVbutton"));
        session->tick();
        QCOMPARE(status(), QStringLiteral("HV falling"));
        session->tick(2);
        QCOMPARE(status(), QStringLiteral("HV OFF"));
    }

    void regionOfConfidenceStopsTheFeedback()
    {
        QWidget* window = regions();
        QWidget* first = find<QWidget>(window, "rocWidget0");
        set(first, "roiXDoubleSpinBox", 100);
        press(window, "Apply");
        toggleFeedback();
        session->tick();
        QCOMPARE(heartbeat(), QStringLiteral("Feedback ON"));
        session->plant().kick(60, 0);
        session->tick();
        QCOMPARE(heartbeat(), QStringLiteral("Feedback ON"));
        set(first, "roiXDoubleSpinBox", 30);
        press(window, "Apply");
        session->plant().kick(60, 0);
        session->tick(0.1);
        QCOMPARE(heartbeat(), QStringLiteral("FAULT: Out of ROC"));
    }

    void checkThatIsOffLetsTheBeamLeave()
    {
        QWidget* window = regions();
        QWidget* first = find<QWidget>(window, "rocWidget0");
        set(first, "roiXDoubleSpinBox", 30);
        find<QCheckBox>(first, "enableROCXCheckBox")->setChecked(false);
        press(window, "Apply");
        toggleFeedback();
        session->tick();
        session->plant().kick(60, 0);
        session->tick(0.1);
        QCOMPARE(heartbeat(), QStringLiteral("Feedback ON"));
    }

    void thresholdAboveTheIntensityHoldsTheFeedback()
    {
        QWidget* window = regions();
        QWidget* first = find<QWidget>(window, "rocWidget0");
        press(window, "Apply");
        toggleFeedback();
        session->tick();
        QCOMPARE(heartbeat(), QStringLiteral("Feedback ON"));
        set(first, "beamOffTh", 20);
        press(window, "Apply");
        session->tick();
        QCOMPARE(heartbeat(), QStringLiteral("Beam OFF"));
        set(first, "beamOffTh", 0.5);
        press(window, "Apply");
        session->tick();
        QCOMPARE(heartbeat(), QStringLiteral("Feedback ON"));
    }

    void manualOutputsMoveTheBeamOnlyWhileTicked()
    {
        QWidget* window = outputs();
        for (const char* slider : {"ch1slider", "ch2slider", "ch3slider", "ch4slider"})
            find<QSlider>(window, slider)->setValue(5);
        set(window, "boxCh3", 5.2);
        session->tick(2);
        QVERIFY(isNear(mean(updater->dataPosY[Bpm1]), 0, 1));
        auto* manual = find<QCheckBox>(window, "checboxEnableMan");
        manual->click();
        session->tick(2);
        // The coarse actuator of Y moves 200 um a volt.
        QVERIFY(isNear(mean(updater->dataPosY[Bpm1]), 40, 2));
        QCOMPARE(session->plant().outputVolts(2), 5.2);
        window->close();
        session->tick();
        QCOMPARE(session->plant().outputVolts(2), 5.2);
        outputs();
        QVERIFY(manual->isChecked());
        manual->click();
        session->tick(2);
        QVERIFY(isNear(mean(updater->dataPosY[Bpm1]), 0, 1));
    }
};

QTEST_MAIN(ConfigurationTest)
#include "ConfigurationTest.moc"
