#include "app/Globals.h"
#include "hardware/koralink.h"
#include "simulation/PowerOn.h"
#include "simulation/SimulationControl.h"
#include "stream/DisplayRecord.h"
#include "support/ActuatorForms.h"
#include "support/DrivenPause.h"
#include "support/MessageBoxes.h"
#include "support/Operator.h"
#include "support/World.h"
#include "tools/WindowFrequencyAnalysis.h"
#include "tools/WindowSaveData.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFile>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QTemporaryDir>
#include <QtTest>
#include <qcustomplot.h>

#include <cmath>
#include <complex>
#include <memory>

using operate::find;
using namespace kora::simulation;

class SaveAndSweepSimulationTest : public QObject
{
    Q_OBJECT

private:
    SimulationControl* control = nullptr;
    std::unique_ptr<World> world;

    /// Sweeps 20 points from 1 to 500 Hz and compares them with the actuator behind the output.
    void sweepAndCompare(const char* axis, const char* amplitude, const ActuatorModel& actuator)
    {
        WindowFrequencyAnalysis window;
        const auto line = [&](const char* name) { return find<QLineEdit>(&window, name); };
        line("startFreqLineEdit")->setText(QStringLiteral("1"));
        line("stopFreqLineEdit")->setText(QStringLiteral("500"));
        line("lengthLineEdit")->setText(QStringLiteral("20"));
        find<QComboBox>(&window, "outputChComboBox")->setCurrentText(QLatin1String(axis));
        find<QComboBox>(&window, "inputChComboBox")->setCurrentText(QLatin1String(axis));
        find<QDoubleSpinBox>(&window, "amplspinBox")->setValue(QString::fromLatin1(amplitude).toDouble());
        window.showTool();
        QCOMPARE(line("offsetspinBox")->text(), QStringLiteral("5"));
        MessageBoxes boxes;
        operate::press(find<QPushButton>(&window, "StartSweepPushButton"));
        QCOMPARE(boxes.count(), 0);

        const auto magnitudes = find<QCustomPlot>(&window, "graphMg")->graph(0)->data();
        const auto phases = find<QCustomPlot>(&window, "graphPh")->graph(0)->data();
        QCOMPARE(magnitudes->size(), 20);
        double greatest = 0;
        for (const QCPGraphData& point : *magnitudes)
            greatest = std::max(greatest, std::abs(actuator_forms::transferFunction(actuator, point.key)));
        int compared = 0;
        for (int i = 0; i < 20; ++i) {
            const double hertz = magnitudes->at(i)->key;
            const std::complex<double> expected = actuator_forms::transferFunction(actuator, hertz);
            if (std::abs(expected) < greatest / 10)
                continue;
            ++compared;
            const double ratio = magnitudes->at(i)->value / std::abs(expected);
            const double angle = actuator_forms::degreesApart(phases->at(i)->value, std::arg(expected) * 180 / M_PI);
            QVERIFY2(std::fabs(ratio - 1) < 0.03 && angle < 3,
                     qPrintable(QStringLiteral("%1 Hz: ratio %2, %3 degrees off").arg(hertz).arg(ratio).arg(angle)));
        }
        QVERIFY(compared >= 18);
        QCOMPARE(magnitudes->at(0)->key, 1.0);
        QVERIFY(std::fabs(magnitudes->at(19)->key - 500) < 1e-3);
        QCOMPARE(SAMP_FREQ, 1000);
        saveScreen(&window, "WindowFrequencyAnalysis");
    }

    /// For looking at: KORA_TEST_SCREENSHOTS names a folder.
    static void saveScreen(QWidget* window, const char* name)
    {
        const QString folder = qEnvironmentVariable("KORA_TEST_SCREENSHOTS");
        if (folder.isEmpty())
            return;
        QVERIFY(QTest::qWaitForWindowExposed(window));
        QCoreApplication::processEvents();
        QVERIFY(window->screen()
                    ->grabWindow(window->winId())
                    .save(QStringLiteral("%1/%2.png").arg(folder, QLatin1String(name))));
    }

private slots:
    void initTestCase()
    {
        control = findControl();
        QVERIFY(control);
        control->useDrivenClock();
    }
    void init()
    {
        control->reset();
        world = std::make_unique<World>();
        for (int bpm = 0; bpm < 2; ++bpm) {
            bpmScaleX[bpm] = powerOn::scale;
            bpmScaleY[bpm] = powerOn::scale;
        }
        driven_pause::setAction([this](unsigned long microseconds) { control->advance(microseconds * 1e-6); });
    }
    void cleanup() { world.reset(); }

    void sweepRecoversTheTransferFunctionOfX()
    {
        control->quietBeam();
        sweepAndCompare("x", "0.1", powerOn::actuators[0]);
    }

    void sweepRecoversTheTransferFunctionOfY()
    {
        control->quietBeam();
        sweepAndCompare("y", "0.1", powerOn::actuators[2]);
    }

    void sweepOfTheLivingBeamRecoversTheTransferFunction() { sweepAndCompare("x", "0.3", powerOn::actuators[0]); }

    void savedFileReadBackEqualsTheRecordsToSixDigits()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(QStringLiteral("saved.csv"));
        WindowSaveData window;
        window.show();
        for (QCheckBox* box : window.findChildren<QCheckBox*>())
            box->setChecked(true);
        find<QSpinBox>(&window, "nrSampBox")->setValue(10000);
        find<QLineEdit>(&window, "pathLineEdit")->setText(path);
        operate::press(find<QDialogButtonBox>(&window, "buttonBox"), QStringLiteral("Save"));
        saveScreen(&window, "WindowSaveData");

        // The driven clock stands still: the library's way to the stream gives the records that were saved.
        std::vector<DisplayRecord> block(largestBlockRecords);
        QCOMPARE(getBuffer(block.data(), largestBlockRecords), largestBlockRecords);
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QList<QByteArray> lines = file.readAll().split('\n').mid(9);
        QCOMPARE(lines.size(), 10001);
        for (int row = 0; row < 10000; ++row) {
            const DisplayRecord& record = block[std::size_t(row)];
            const double scale = powerOn::scale;
            const double values[19] = {double(row),    row / 1000.0,         record.cur1[0],       record.cur1[1],
                                       record.cur1[2], record.cur1[3],       record.cur2[0],       record.cur2[1],
                                       record.cur2[2], record.cur2[3],       record.pos1X * scale, record.pos1Y * scale,
                                       record.int1,    record.pos2X * scale, record.pos2Y * scale, record.int2,
                                       record.dac[0],  record.dac[1],        record.dac[2]};
            const QList<QByteArray> cells = lines.at(row).split(',');
            QCOMPARE(cells.size(), 20);
            for (int column = 0; column < 19; ++column) {
                bool isNumber = false;
                const double read = cells.at(column).trimmed().toDouble(&isNumber);
                const double wanted = values[column];
                if (!isNumber || std::fabs(read - wanted) > 5.01e-6 * std::fabs(wanted))
                    QFAIL(qPrintable(QStringLiteral("row %1 column %2: %3").arg(row).arg(column).arg(read)));
            }
        }
        QVERIFY(block[0].cur1[0] != block[9999].cur1[0]);
    }
};

QTEST_MAIN(SaveAndSweepSimulationTest)
#include "SaveAndSweepSimulationTest.moc"
