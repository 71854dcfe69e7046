#include "simulation/console/Scenario.h"
#include "ConsoleRun.h"
#include "FreshInstallation.h"
#include "simulation/console/InputError.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

#include <cmath>

using namespace kora::simulation;

namespace {

const QString scenarioFolder = QStringLiteral(KORA_SCENARIOS "/");

} // namespace

/// Scenario files: read, played by a driven clock, and played by the real kora-sim.
class ScenarioTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        QVERIFY(scratch.isValid());
        control = freshInstallation();
        QVERIFY(control);
    }

    void cleanup() { control->useDrivenClock(); }

    void timesAreSecondsOrClockTimes()
    {
        QCOMPARE(scenarioTime("0"), 0.0);
        QCOMPARE(scenarioTime("2.25"), 2.25);
        QCOMPARE(scenarioTime("90"), 90.0);
        QCOMPARE(scenarioTime("1:30"), 90.0);
        QCOMPARE(scenarioTime("2:00:01.5"), 7201.5);
        for (const char* wrong : {"", "-1", "x", "1:", ":1", "1:60", "1:2:3:4", "1e99", "1:-5", "nan"})
            QVERIFY_EXCEPTION_THROWN(scenarioTime(wrong), InputError);
    }

    void commentsAndEmptyLinesCountForNothing()
    {
        const Scenario scenario =
            Scenario::load(written("# a day\n\n0 beam on # as ever\n\t 1:00 \t kick  3   -2\r\n   \n").toStdString());
        QCOMPARE(scenario.steps.size(), std::size_t(2));
        QCOMPARE(scenario.steps[0].command, std::string("beam on"));
        QCOMPARE(scenario.steps[1].command, std::string("kick 3 -2"));
        QCOMPARE(scenario.steps[1].time, 60.0);
    }

    void byteOrderMarkBeforeTheFirstLineCountsForNothing()
    {
        QCOMPARE(Scenario::load(written("\xef\xbb\xbf"
                                        "0 beam on\r\n")
                                    .toStdString())
                     .steps.at(0)
                     .command,
                 std::string("beam on"));
        QVERIFY_EXCEPTION_THROWN(Scenario::load(written("0 beam on\n\xef\xbb\xbf"
                                                        "1 beam on\n")
                                                    .toStdString()),
                                 InputError);
    }

    void pipeIsRefusedAtOnce()
    {
        const QString pipe = scratch.filePath(QStringLiteral("pipe"));
        QCOMPARE(mkfifo(pipe.toLocal8Bit().constData(), 0600), 0);
        const ConsoleRun run = runConsole({QStringLiteral("play"), QStringLiteral("--check"), pipe});
        QVERIFY2(run.isRefusal(2, QStringLiteral("is no regular file")), run.described().constData());
    }

    void nameOfTwoLinesStaysOnOne()
    {
        const QString folder = scratch.filePath(QStringLiteral("two\nlines"));
        QVERIFY(QDir().mkpath(folder));
        const QString file = folder + QStringLiteral("/scenario");
        QFile::remove(file);
        QVERIFY(QFile::copy(written("0 dance\n"), file));
        const ConsoleRun run = runConsole({QStringLiteral("play"), QStringLiteral("--check"), file});
        QVERIFY2(run.isRefusal(2, QStringLiteral("two?lines/scenario:1: unknown command")),
                 run.described().constData());
    }

    void stepsComeAtTheirTime()
    {
        const std::vector<double> done = timesOfSteps("0 time\n1.5 time\n1.5 time\n7 time\n", 1);
        QCOMPARE(done.size(), std::size_t(4));
        QCOMPARE(done[0], 0.0);
        QVERIFY(std::fabs(done[1] - 1.5) < 0.011);
        QCOMPARE(done[2], done[1]);
        QVERIFY(std::fabs(done[3] - 7) < 0.011);
    }

    void speedShortensTheWaiting()
    {
        const std::vector<double> done = timesOfSteps("0 time\n60 time\n", 60);
        QVERIFY(std::fabs(done[1] - 1) < 0.011);
    }

    void resetDoesNotDisturbTheCount()
    {
        const Scenario scenario = Scenario::load(written("5 reset\n10 beam off\n").toStdString());
        double time = 100;
        std::vector<double> slept;
        double sum = 0;
        scenario.play(1, {[&] { return time; },
                          [&](double seconds) {
                              time += seconds;
                              sum += seconds;
                          },
                          [&](const Scenario::Step& step) {
                              slept.push_back(sum);
                              if (step.command == "reset")
                                  time = 0;
                          }});
        QVERIFY(std::fabs(slept[0] - 5) < 0.3);
        // The look at the clock right after the reset is lost.
        QVERIFY(slept[1] > 9.7 && slept[1] < 10.6);
    }

    void mistakesNameFileAndLine_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("words");
        QTest::newRow("command") << QByteArray("0 beam on\n\n1 dance\n")
                                 << QStringLiteral(":3: unknown command \"dance\"");
        QTest::newRow("argument") << QByteArray("0 kick 1 x\n") << QStringLiteral(":1: kick: y must be a number");
        QTest::newRow("time") << QByteArray("soon beam on\n") << QStringLiteral(":1: the time must be");
        QTest::newRow("order") << QByteArray("2 beam on\n1 beam off\n") << QStringLiteral(":2: the time is earlier");
        QTest::newRow("nothing") << QByteArray("2\n") << QStringLiteral(":1: a command is missing");
        QTest::newRow("empty") << QByteArray("# nothing\n") << QStringLiteral("has no step");
        QTest::newRow("nested") << QByteArray("0 play other\n") << QStringLiteral(":1: unknown command \"play\"");
    }

    void mistakesNameFileAndLine()
    {
        QFETCH(QByteArray, text);
        QFETCH(QString, words);
        const QString file = written(text);
        const ConsoleRun run = runConsole(forThisInstallation({QStringLiteral("play"), file}));
        QVERIFY2(run.isRefusal(2, words), run.described().constData());
        QVERIFY(run.error.contains(file));
        // Nothing of a scenario with a mistake is played.
        QCOMPARE(control->state().beamOn, true);
    }

    void consolePlaysAFileInRealTime()
    {
        control->useRealClock();
        const QString file = written("0 beam off\n0.2 kick 50 0\n0.3 unplug A\n0.4 status\n");
        const double before = control->time();
        const ConsoleRun run = runConsole(forThisInstallation({QStringLiteral("play"), file}));
        QVERIFY2(run.status == 0, run.described().constData());
        QVERIFY(control->time() - before >= 0.4);
        QVERIFY(run.output.startsWith(QStringLiteral("       0.0 s  beam off\n       0.2 s  kick 50 0\n")));
        QVERIFY(run.output.contains(QStringLiteral("SFP A         empty\n")));
        QCOMPARE(control->state().beamOn, false);
        QCOMPARE(control->state().ports[0], std::uint16_t(0));
    }

    void silentPlayShowsNothing()
    {
        const ConsoleRun run = runConsole(
            forThisInstallation({QStringLiteral("play"), QStringLiteral("--silent"), written("0 beam off\n")}));
        QVERIFY2(run.status == 0 && run.output.isEmpty() && run.error.isEmpty(), run.described().constData());
        QCOMPARE(control->state().beamOn, false);
    }

    void checkPlaysNothingAndNeedsNoSimulation()
    {
        const ConsoleRun run = runConsole(
            {QStringLiteral("play"), QStringLiteral("--check"), written("0 beam off\n2:00 beam on\n")}, scratch.path());
        QCOMPARE(run.status, 0);
        QCOMPARE(run.output, QStringLiteral("2 steps in 120 s\n"));
        QCOMPARE(control->state().beamOn, true);
    }

    void installedScenarioIsFoundByItsName()
    {
        const QDir root(scratch.path());
        QVERIFY(root.mkpath(QStringLiteral("bin")) && root.mkpath(QStringLiteral("share/kora-simulation/scenarios")));
        const QString console = root.filePath(QStringLiteral("bin/kora-sim"));
        QVERIFY(QFile::copy(QStringLiteral(KORA_CONSOLE), console));
        QVERIFY(QFile::copy(scenarioFolder + QStringLiteral("quiet-day"),
                            root.filePath(QStringLiteral("share/kora-simulation/scenarios/quiet-day"))));
        QProcess player;
        player.setWorkingDirectory(scratch.path());
        player.start(console, {QStringLiteral("play"), QStringLiteral("--check"), QStringLiteral("quiet-day")});
        QVERIFY(player.waitForFinished());
        QCOMPARE(player.exitCode(), 0);
        QVERIFY(player.readAllStandardOutput().endsWith(" steps in 28800 s\n"));
    }

    void consoleWaitsForADrivenClock()
    {
        QProcess player;
        player.start(QStringLiteral(KORA_CONSOLE),
                     forThisInstallation({QStringLiteral("play"), written("0 beam off\n30 beam on\n")}));
        QTRY_COMPARE(control->state().beamOn, false);
        QCOMPARE(player.state(), QProcess::Running);
        control->advance(31);
        QVERIFY(player.waitForFinished());
        QCOMPARE(player.exitCode(), 0);
        QCOMPARE(control->state().beamOn, true);
    }

    void playWithoutASimulationGetsStatus1()
    {
        const ConsoleRun run = runConsole({QStringLiteral("play"), written("0 beam off\n")}, scratch.path());
        QVERIFY2(run.isRefusal(1, QStringLiteral("no simulation is running")), run.described().constData());
    }

    void deliveredScenariosReachTheirEnd_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<double>("seconds");
        QTest::newRow("quiet day") << QStringLiteral("quiet-day") << 8 * 3600.0;
        QTest::newRow("beam dump") << QStringLiteral("beam-dump-and-recovery") << 360.0;
        QTest::newRow("cabling") << QStringLiteral("cabling-mistakes") << 1260.0;
    }

    void deliveredScenariosReachTheirEnd()
    {
        QFETCH(QString, name);
        QFETCH(double, seconds);
        const ConsoleRun check = runConsole({QStringLiteral("play"), QStringLiteral("--check"), scenarioFolder + name});
        QVERIFY2(check.output.endsWith(QStringLiteral(" steps in %1 s\n").arg(seconds)), check.described().constData());
        const InstallationState before = control->state();
        control->useRealClock();
        const ConsoleRun run = runConsole(forThisInstallation(
            {QStringLiteral("play"), QStringLiteral("--speed"), QStringLiteral("10000"), scenarioFolder + name}));
        QVERIFY2(run.status == 0, run.described().constData());
        // All of them leave the installation in order.
        const InstallationState after = control->state();
        QVERIFY(after.beamOn);
        QVERIFY(!after.isAnythingFailing());
        QCOMPARE(after.ports, before.ports);
        QCOMPARE(after.cables, before.cables);
        QCOMPARE(after.devicePresent, before.devicePresent);
        QCOMPARE(after.driftMicrometres, before.driftMicrometres);
        QCOMPARE(after.lines[6].xMicrometres, 0.0);
    }

    void beamDumpTakesTheBeamAwayAndBringsItBack()
    {
        std::vector<std::pair<double, bool>> changes;
        const QString file = scenarioFolder + QStringLiteral("beam-dump-and-recovery");
        for (const Scenario::Step& step : Scenario::load(file.toStdString()).steps)
            if (step.command.rfind("beam ", 0) == 0)
                changes.emplace_back(step.time, step.command == "beam on");
        const std::vector<std::pair<double, bool>> wanted = {
            {0, true}, {66, false}, {180, true}, {190, false}, {240, true}};
        QCOMPARE(changes, wanted);
    }

private:
    /// A scenario file with this text.
    QString written(const QByteArray& text)
    {
        const QString path = scratch.filePath(QStringLiteral("scenario"));
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size())
            qFatal("cannot write the scenario");
        return path;
    }

    /// Plays a file on a clock that sleeping alone moves, by at most a hundredth of a second.
    /// @return when each step came
    std::vector<double> timesOfSteps(const QByteArray& text, double speed)
    {
        double time = 17;
        std::vector<double> done;
        Scenario::load(written(text).toStdString())
            .play(speed, {[&] { return time; }, [&](double seconds) { time += std::min(seconds, 0.01); },
                          [&](const Scenario::Step&) { done.push_back(time - 17); }});
        return done;
    }

    QTemporaryDir scratch;
    SimulationControl* control = nullptr;
};

QTEST_GUILESS_MAIN(ScenarioTest)
#include "ScenarioTest.moc"
