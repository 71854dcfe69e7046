#include "simulation/PowerOn.h"
#include "simulation/SimulationControl.h"
#include "support/ActuatorForms.h"
#include "support/DrivenPause.h"
#include "support/FileDialogs.h"
#include "support/Operator.h"
#include "support/ScratchSettings.h"
#include "support/World.h"
#include "tools/WindowRocking3D.h"
#include "tools/WindowRockingCurve.h"
#include "tools/WindowStepResponse.h"
#include "tools/rocking/GridScan.h"

#include <qcustomplot.h>

#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QPushButton>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
#include <cmath>
#include <memory>

using operate::find;
using operate::press;

namespace {

using kora::simulation::ActuatorModel;
namespace powerOn = kora::simulation::powerOn;

constexpr double sampleS = 1 / 50000.0;

} // namespace

/// The measurement windows on the simulated installation, whose clock moves with the pauses of the tools.
class ScansOnSimulationTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<World> world;
    kora::simulation::SimulationControl* plant = nullptr;

    static void setBox(QWidget* window, const char* name, double value)
    {
        find<QDoubleSpinBox>(window, name)->setValue(value);
    }
    static double milliseconds(QWidget* window, const char* label)
    {
        const QString text = find<QLabel>(window, label)->text();
        return text.endsWith(QStringLiteral(" ms")) ? text.chopped(3).toDouble() : std::nan("");
    }
    /// Runs a scan of 100 points from 4 to 6 V; the voltage of the greatest sum.
    static double scannedPeak(const QString& direction)
    {
        WindowRockingCurve window;
        find<QSpinBox>(&window, "boxN")->setValue(100);
        find<QComboBox>(&window, "chSel")->setCurrentText(direction);
        press(find<QPushButton>(&window, "buttonStart"));
        const auto data = find<QCustomPlot>(&window, "graph")->graph(2)->data();
        return std::max_element(data->constBegin(), data->constEnd(),
                                [](const QCPGraphData& a, const QCPGraphData& b) { return a.value < b.value; })
            ->key;
    }

private slots:
    void init()
    {
        plant = kora::simulation::findControl();
        QVERIFY(plant);
        world = std::make_unique<World>();
        plant->reset();
        plant->useDrivenClock();
        const QPair<const char*, int> wiring[] = {{"Top", 0}, {"Right", 1}, {"Bottom", 2}, {"Left", 3}};
        for (const auto& electrode : wiring)
            scratch_settings::setValue(qPrintable(QStringLiteral("BPM1/") + QLatin1String(electrode.first)),
                                       electrode.second);
        for (const char* loop : {"Xlf", "Xhf", "Ylf", "Yhf"})
            scratch_settings::setValue(qPrintable(QStringLiteral("PID_%1/Offset").arg(QLatin1String(loop))), 5.0);
        driven_pause::setAction([this](unsigned long microseconds) { plant->advance(double(microseconds) * 1e-6); });
    }
    void cleanup()
    {
        driven_pause::clear();
        world.reset();
    }

    void rockingCurveFindsThePeakOfTheSum_data()
    {
        QTest::addColumn<QString>("direction");
        QTest::newRow("posX") << QStringLiteral("posX");
        QTest::newRow("posY") << QStringLiteral("posY");
    }
    void rockingCurveFindsThePeakOfTheSum()
    {
        QFETCH(QString, direction);
        plant->quietBeam();
        plant->setNoise(0, 0);
        const double step = 0.02;
        const double peak = scannedPeak(direction);
        QVERIFY2(std::fabs(peak - powerOn::tuningPeak) <= step * 1.0001, qPrintable(QString::number(peak)));
    }

    void surfacePeaksWhereBothTuningsPeak()
    {
        const QTemporaryDir folder;
        WindowRocking3D window;
        setBox(&window, "timeBox", 2);
        press(find<QPushButton>(&window, "goButton"));
        FileDialogs dialogs(folder.filePath(QStringLiteral("walk.csv")));
        press(find<QPushButton>(&window, "saveButton"));
        QFile file(folder.filePath(QStringLiteral("walk.csv")));
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QList<QByteArray> rows = file.readAll().split('\n').mid(6, grid_scan::points);
        QCOMPARE(rows.size(), grid_scan::points);
        QList<QByteArray> best = {"", "", "0"};
        for (const QByteArray& row : rows) {
            const QList<QByteArray> fields = row.trimmed().split(',');
            QCOMPARE(fields.size(), 3);
            if (fields.at(2).toDouble() > best.at(2).toDouble())
                best = fields;
        }
        const double gridStep = 2 / 63.0;
        QVERIFY2(std::fabs(best.at(0).toDouble() - powerOn::tuningPeak) < gridStep, best.at(0).constData());
        QVERIFY2(std::fabs(best.at(1).toDouble() - powerOn::tuningPeak) < gridStep, best.at(1).constData());
        // 5 uA in the full beam, of which the electrodes collect four fifths without bias voltage.
        QVERIFY2(std::fabs(best.at(2).toDouble() - 4e-6) < 0.1e-6, best.at(2).constData());
    }

    void stepResponseRecoversTheActuator_data()
    {
        QTest::addColumn<QString>("selector");
        QTest::addColumn<int>("output");
        QTest::newRow("X") << QStringLiteral("stepInXbutton") << 0;
        QTest::newRow("Y") << QStringLiteral("stepInYbutton") << 2;
    }
    void stepResponseRecoversTheActuator()
    {
        QFETCH(QString, selector);
        QFETCH(int, output);
        const ActuatorModel& actuator = powerOn::actuators[output];
        plant->quietBeam();
        plant->setNoise(0, 0);
        // The tool steps Y at the output of Xhf: here that of the coarse Y actuator.
        scratch_settings::setValue("Beamline/DAC_posXhf", 2);
        scratch_settings::setValue("Beamline/DAC_posYlf", 1);
        WindowStepResponse window;
        window.showTool();
        press(find<QRadioButton>(&window, qPrintable(selector)));
        press(find<QDialogButtonBox>(&window, "buttonBox"), QStringLiteral("Run"));

        const double gain = actuator.gain / powerOn::scale;
        const double foundGain = find<QLabel>(&window, "Klabel")->text().toDouble();
        QVERIFY2(std::fabs(foundGain - gain) < 0.03 * gain, qPrintable(QString::number(foundGain)));
        const double at10 = actuator_forms::crossingTime(actuator, 0.1);
        const double at90 = actuator_forms::crossingTime(actuator, 0.9);
        const double deadError = milliseconds(&window, "Tdeadlabel") * 1e-3 - (actuator.deadTime + at10);
        QVERIFY2(std::fabs(deadError) <= 2 * sampleS, qPrintable(QString::number(deadError / sampleS)));
        const double settlingError = milliseconds(&window, "Tsetlabel") * 1e-3 - (at90 - at10);
        QVERIFY2(std::fabs(settlingError) <= 2 * sampleS, qPrintable(QString::number(settlingError / sampleS)));
        QCOMPARE(find<QLabel>(&window, "invertedLabel")->text(), QString());
        qInfo("K %g (model %g), dead time %+.2f samples, settling %+.2f samples", foundGain, gain, deadError / sampleS,
              settlingError / sampleS);
    }

    void toolsSurviveAnInstallationThatFails()
    {
        for (const char* path : {"/dev/kora_ionbar0", "/dev/kora_anvolt0"})
            plant->setDevicePresent(path, false);
        plant->setGarbageBlocks(true);
        for (const char* function : {"setFBenable", "setOutputMux", "setDisplayFreq"})
            QVERIFY(plant->failFunction(function, -1));
        scannedPeak(QStringLiteral("posX"));
        WindowStepResponse window;
        window.showTool();
        press(find<QDialogButtonBox>(&window, "buttonBox"), QStringLiteral("Run"));
        QCOMPARE(find<QCustomPlot>(&window, "graph")->graph(1)->dataCount(), 14335);
    }
};

QTEST_MAIN(ScansOnSimulationTest)
#include "ScansOnSimulationTest.moc"
