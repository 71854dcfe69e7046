#include "ConsoleRun.h"
#include "ServedInstallation.h"

#include <QTest>
#include <QThread>

#include <memory>
#include <random>
#include <vector>

namespace {

constexpr int programCount = 4;
constexpr int killsOfAShortRun = 12;
constexpr unsigned long stopMs = 5000;

} // namespace

/// Programs and the service are ended or stopped at random moments. KORA_SERVICE_KILLS says how often.
class ServiceKillsTest : public QObject
{
    Q_OBJECT

private slots:
    void survivorsGoOnAndNothingStays()
    {
        bool isNumber = false;
        const int given = qEnvironmentVariableIntValue("KORA_SERVICE_KILLS", &isNumber);
        const int kills = isNumber ? given : killsOfAShortRun;
        QVERIFY(scratch.isValid());
        startService();
        for (int kill = 0; kill < kills; ++kill) {
            while (programs.size() < programCount)
                startProgram();
            // All at work when it happens.
            for (const auto& program : programs)
                program->start(QStringLiteral("work 0.3"));
            QThread::usleep(static_cast<unsigned long>(choose(300000)));
            const int signal = std::vector<int>{SIGKILL, SIGSTOP, SIGTERM}[std::size_t(choose(3))];
            if (choose(4) == 0)
                endService(signal);
            else
                endProgram(signal, std::size_t(choose(programCount)));
            if (QTest::currentTestFailed()) {
                qInfo("kill %d, signal %d", kill, signal);
                return;
            }
        }
        programs.clear();
        service.reset();
        // The console takes away what a killed process cannot.
        runConsole({QStringLiteral("list")}, scratch.path());
        const QStringList left = QDir(scratch.filePath(QStringLiteral("kora-simulation")))
                                     .entryList(QDir::AllEntries | QDir::System | QDir::Hidden | QDir::NoDotAndDotDot);
        QVERIFY2(left.isEmpty(), qPrintable(left.join(QLatin1Char(' '))));
    }

private:
    int choose(int count) { return std::uniform_int_distribution<int>(0, count - 1)(random); }

    void startService()
    {
        service = std::make_unique<ServedInstallation>(scratch.path(),
                                                       QStringList{QStringLiteral("--name"), QStringLiteral("kills")});
        QVERIFY(service->isServing());
    }
    void startProgram()
    {
        programs.push_back(std::make_unique<JoiningProgram>(scratch.path(), QStringLiteral("kills")));
        QCOMPARE(programs.back()->does("rate").text, QStringLiteral("1000"));
    }

    /// @param failing whether calls may fail; none may take long in any case
    void expectWork(JoiningProgram& program, bool failing)
    {
        const QStringList figures = program.result().text.split(QLatin1Char(' '));
        QCOMPARE(figures.size(), 2);
        QVERIFY2(failing || figures[0] == QLatin1String("0"), qPrintable(figures[0] + QStringLiteral(" calls failed")));
        QVERIFY2(figures[1].toDouble() < 1.1, qPrintable(figures[1] + QStringLiteral(" s for a call")));
    }

    void endProgram(int signal, std::size_t victim)
    {
        JoiningProgram& ended = *programs[victim];
        QCOMPARE(::kill(pid_t(ended.process.processId()), signal), 0);
        for (std::size_t i = 0; i < programs.size(); ++i)
            if (i != victim)
                expectWork(*programs[i], false);
        if (signal == SIGSTOP) {
            QThread::msleep(stopMs);
            QCOMPARE(::kill(pid_t(ended.process.processId()), SIGCONT), 0);
            ended.result();
            QCOMPARE(ended.does("rate").text, QStringLiteral("1000"));
            return;
        }
        QVERIFY(ended.process.waitForFinished());
        programs.erase(programs.begin() + long(victim));
    }

    void endService(int signal)
    {
        QVERIFY(service->signal(signal));
        for (const auto& program : programs)
            expectWork(*program, true);
        if (signal == SIGSTOP) {
            QThread::msleep(stopMs);
            QVERIFY(service->signal(SIGCONT));
            for (const auto& program : programs)
                QTRY_COMPARE(program->does("rate").text, QStringLiteral("1000"));
            return;
        }
        QVERIFY(service->process.waitForFinished());
        for (const auto& program : programs)
            QCOMPARE(program->does("rate").text, QStringLiteral("-1"));
        // A program that has lost its service does not join another.
        programs.clear();
        startService();
    }

    QTemporaryDir scratch;
    std::unique_ptr<ServedInstallation> service;
    std::vector<std::unique_ptr<JoiningProgram>> programs;
    std::mt19937 random{20261122};
};

QTEST_GUILESS_MAIN(ServiceKillsTest)
#include "ServiceKillsTest.moc"
