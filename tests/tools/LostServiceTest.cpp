#include "hardware/koralink.h"
#include "simulation/SimulationControl.h"
#include "stream/DeviceRecords.h"
#include "support/DrivenPause.h"
#include "support/MessageBoxes.h"
#include "support/Operator.h"
#include "support/World.h"
#include "tools/WindowFrequencyAnalysis.h"
#include "tools/WindowRocking3D.h"
#include "tools/WindowRockingCurve.h"
#include "tools/WindowSaveData.h"
#include "tools/WindowStepResponse.h"

#include <QDialogButtonBox>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QProcess>
#include <QPushButton>
#include <QSpinBox>
#include <QTemporaryDir>
#include <QtTest>

#include <fcntl.h>
#include <unistd.h>

#include <functional>
#include <memory>

using operate::find;
using operate::press;

namespace {

/// A tool that hangs on a lost service does so for longer, ms.
constexpr qint64 longestEnd = 20000;

void runRockingCurve()
{
    WindowRockingCurve window;
    find<QSpinBox>(&window, "boxN")->setValue(100);
    press(find<QPushButton>(&window, "buttonStart"));
    QVERIFY(find<QPushButton>(&window, "buttonStart")->isEnabled());
}

void runSurface()
{
    WindowRocking3D window;
    press(find<QPushButton>(&window, "goButton"));
    QVERIFY(find<QPushButton>(&window, "goButton")->isEnabled());
}

void runStepResponse()
{
    WindowStepResponse window;
    window.showTool();
    press(find<QDialogButtonBox>(&window, "buttonBox"), QStringLiteral("Run"));
}

void runFrequencyAnalysis()
{
    WindowFrequencyAnalysis window;
    find<QLineEdit>(&window, "lengthLineEdit")->setText(QStringLiteral("20"));
    window.showTool();
    press(find<QPushButton>(&window, "StartSweepPushButton"));
    QVERIFY(find<QPushButton>(&window, "StartSweepPushButton")->isEnabled());
}

void saveData()
{
    const QTemporaryDir folder;
    WindowSaveData window;
    window.show();
    find<QLineEdit>(&window, "pathLineEdit")->setText(folder.filePath(QStringLiteral("saved.csv")));
    press(find<QDialogButtonBox>(&window, "buttonBox"), QStringLiteral("Save"));
}

struct Tool
{
    const char* name;
    void (*run)();
    int fatalPause; ///< the pause in which the service dies; 0 for before the tool starts
};

constexpr Tool tools[] = {{"rocking-curve", runRockingCurve, 30},
                          {"rocking-curve-3d", runSurface, 500},
                          {"step-response", runStepResponse, 1},
                          {"frequency-analysis", runFrequencyAnalysis, 5},
                          {"save-data", saveData, 0}};

} // namespace

/// The measurement tools on a served installation that is killed in their middle. A process joins once: CTest starts
/// this suite once a tool, which the environment names.
class LostServiceTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(scratch.isValid());
        qputenv("XDG_RUNTIME_DIR", scratch.path().toLocal8Bit());
        qputenv("KORA_SIMULATION", "tools");
        service.start(QStringLiteral(KORA_CONSOLE), {QStringLiteral("serve"), QStringLiteral("--driven")});
        QVERIFY(service.waitForReadyRead());
        control = kora::simulation::findControl();
        QVERIFY(control && control->state().drivenClock);
    }

    void toolEndsByItself()
    {
        const QByteArray wanted = qgetenv("KORA_TOOL");
        const auto tool =
            std::find_if(std::begin(tools), std::end(tools), [&](const Tool& each) { return wanted == each.name; });
        QVERIFY2(tool != std::end(tools), "KORA_TOOL names a measurement tool");
        World world;
        MessageBoxes boxes;
        int pauses = 0;
        QElapsedTimer sinceEnd;
        driven_pause::setAction([&](unsigned long microseconds) {
            control->advance(double(microseconds) * 1e-6);
            if (++pauses == tool->fatalPause) {
                endService();
                sinceEnd.start();
            }
        });
        if (tool->fatalPause == 0) {
            endService();
            sinceEnd.start();
        }
        tool->run();
        driven_pause::clear();
        QVERIFY2(sinceEnd.isValid(), "the tool ended before the service did");
        QVERIFY2(sinceEnd.elapsed() < longestEnd, QByteArray::number(sinceEnd.elapsed()).constData());
        QCOMPARE(open(streamDevicePath, O_RDONLY), -1);
        QCOMPARE(setOutputMux(1), -1);
    }

private:
    void endService()
    {
        service.kill();
        service.waitForFinished();
    }

    QTemporaryDir scratch;
    QProcess service;
    kora::simulation::SimulationControl* control = nullptr;
};

QTEST_MAIN(LostServiceTest)
#include "LostServiceTest.moc"
