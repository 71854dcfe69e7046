// The built program as a process of its own, on a control library that records every call.

#include "support/PrivateSettings.h"

#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
#include <csignal>

namespace {

constexpr int startMs = 30000;

} // namespace

class ProgramTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir folder;
    QProcess program;

    QString recordPath() const { return folder.filePath(QStringLiteral("calls.txt")); }

    /// Starts the program with a settings folder of its own.
    void start(const char* action, const QStringList& arguments = {})
    {
        startBy(action, QStringLiteral(KORA_PROGRAM), arguments);
    }
    /// Starts the program with much to write to its standard error.
    /// @param redirection of its input and output, as a shell writes it
    void startInShell(const char* action, const char* redirection)
    {
        const QString command = QStringLiteral("export QT_FORCE_STDERR_LOGGING=1 QT_LOGGING_RULES='qt.*=true'; "
                                               "exec \"$0\" ") +
                                QLatin1String(redirection);
        startBy(action, QStringLiteral("bash"), {QStringLiteral("-c"), command, QStringLiteral(KORA_PROGRAM)});
    }
    void startBy(const char* action, const QString& launcher, const QStringList& arguments)
    {
        QFile::remove(recordPath());
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("LD_LIBRARY_PATH"), QStringLiteral(KORA_RECORDER_FOLDER));
        environment.insert(QStringLiteral("KORA_RECORDER_FILE"), recordPath());
        environment.insert(QStringLiteral("KORA_RECORDER_ACTION"), QString::fromLatin1(action));
        program.setProcessEnvironment(environment);
        private_settings::start(program, folder.path(), {}, launcher, arguments);
        QVERIFY(program.waitForStarted(startMs));
    }

    QString settingsPath() const { return folder.filePath(QStringLiteral("config_koralink.ini")); }

    void writeSettings(const char* text)
    {
        QFile file(settingsPath());
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(text), qint64(qstrlen(text)));
    }

    QStringList record() const
    {
        QFile file(recordPath());
        return file.open(QIODevice::ReadOnly) ? QString::fromLatin1(file.readAll()).split(QLatin1Char('\n'))
                                              : QStringList();
    }

    /// The program behind its launcher; 0 without one.
    qint64 processOfTheProgram() const
    {
        QFile children(QStringLiteral("/proc/%1/task/%1/children").arg(program.processId()));
        if (!children.open(QIODevice::ReadOnly))
            return 0;
        const qint64 pid = children.readAll().simplified().split(' ').value(0).toLongLong();
        // The namespace has a first process of its own between the launcher and the program.
        QFile grandchildren(QStringLiteral("/proc/%1/task/%1/children").arg(pid));
        const qint64 below = grandchildren.open(QIODevice::ReadOnly)
                                 ? grandchildren.readAll().simplified().split(' ').value(0).toLongLong()
                                 : 0;
        return below > 0 ? below : pid;
    }

    void verifyCleanEnd()
    {
        QVERIFY(program.waitForFinished(startMs));
        QCOMPARE(program.exitStatus(), QProcess::NormalExit);
        QCOMPARE(program.exitCode(), 0);
        const QByteArray errors = program.readAllStandardError();
        QVERIFY2(!errors.contains("Destroyed while thread"), errors.constData());
        QVERIFY2(!errors.contains("terminate called"), errors.constData());
    }

private slots:
    void init()
    {
        if (!private_settings::isPossible())
            QSKIP("user namespaces are refused here: no settings folder of its own for the program");
    }

    void cleanup() { QFile::remove(settingsPath()); }

    void menuExitEndsWithStatusZero()
    {
        start("exit");
        verifyCleanEnd();
    }

    void closingTheLastWindowEndsWithStatusZero()
    {
        start("close");
        verifyCleanEnd();
    }

    void shortWindowOfTheStreamEndsTheProgram()
    {
        start("short");
        verifyCleanEnd();
    }

    void terminationSignalEndsWithStatusZero_data()
    {
        QTest::addColumn<int>("number");
        QTest::newRow("SIGTERM") << SIGTERM;
        QTest::newRow("SIGINT") << SIGINT;
        QTest::newRow("SIGHUP") << SIGHUP;
    }
    void terminationSignalEndsWithStatusZero()
    {
        QFETCH(int, number);
        start("none");
        QTRY_VERIFY_WITH_TIMEOUT(record().contains(QStringLiteral("getBuffer(14336)")), startMs);
        const qint64 pid = processOfTheProgram();
        QVERIFY(pid > 0);
        QCOMPARE(::kill(pid_t(pid), number), 0);
        verifyCleanEnd();
    }

    void eachMonitorIsShownInItsOwnScalesFromTheStart()
    {
        writeSettings("[BPM1]\nScale_X=2\nScale_Y=3\n[BPM2]\nScale_X=5\nScale_Y=7\n");
        start("statistics");
        verifyCleanEnd();
        // The double delivers 1, 2, 3 and 4 as the raw means of the four positions.
        QVERIFY(record().contains(QStringLiteral("posXMeanLineEdit 2.000 um")));
        QVERIFY(record().contains(QStringLiteral("posYMeanLineEdit 6.00000 um")));
        QVERIFY(record().contains(QStringLiteral("posXMeanLineEdit_2 15.000 um")));
        QVERIFY(record().contains(QStringLiteral("posYMeanLineEdit_2 28.00000 um")));
    }

    void standardErrorThatNobodyReadsEndsNothing()
    {
        startInShell("report", "2> >(exec true)");
        verifyCleanEnd();
        QCOMPARE(record().count(QStringLiteral("log Info: Started logger")), 1);
    }

    void noFileTakesThePlaceOfAMissingStandardError()
    {
        QStringList targets;
        startInShell("none", "<&- >&- 2>&-");
        QTRY_VERIFY_WITH_TIMEOUT(record().contains(QStringLiteral("getBuffer(14336)")), startMs);
        const qint64 pid = processOfTheProgram();
        // The recorder opens its own file before the program begins, and takes the first.
        for (int descriptor = 1; descriptor < 3; ++descriptor)
            targets.append(QFileInfo(QStringLiteral("/proc/%1/fd/%2").arg(pid).arg(descriptor)).symLinkTarget());
        QCOMPARE(::kill(pid_t(pid), SIGTERM), 0);
        verifyCleanEnd();
        QCOMPARE(targets, QStringList({QStringLiteral("/dev/null"), QStringLiteral("/dev/null")}));
    }

    void aCallOfTheLibraryThatNeverReturnsEndsTheProcessWithStatusOne()
    {
        start("hang");
        QVERIFY(program.waitForFinished(startMs));
        QCOMPARE(program.exitStatus(), QProcess::NormalExit);
        QCOMPARE(program.exitCode(), 1);
        QVERIFY(program.readAllStandardError().contains(
            "kora-local-ui: a call of the control library does not return; the program ends without it\n"));
    }

    void startLoadsNoGraphicsDriver()
    {
        start("none");
        QTRY_VERIFY_WITH_TIMEOUT(record().contains(QStringLiteral("getBuffer(14336)")), startMs);
        const qint64 pid = processOfTheProgram();
        QFile mapped(QStringLiteral("/proc/%1/maps").arg(pid));
        QVERIFY(mapped.open(QIODevice::ReadOnly));
        const QByteArray libraries = mapped.readAll();
        QVERIFY(libraries.contains("libqxcb.so"));
        QVERIFY(!libraries.contains("xcbglintegrations"));
        QVERIFY(!libraries.contains("_dri.so"));
        QCOMPARE(::kill(pid_t(pid), SIGTERM), 0);
        verifyCleanEnd();
    }

    void hardwareIsTouchedInTheOrderOfTheStart()
    {
        start("exit");
        verifyCleanEnd();
        const QStringList calls = record();
        const QStringList order = {
            QStringLiteral("getSystemVersion()"), QStringLiteral("getBPMselector()"),
            QStringLiteral("getDisplayFreq()"),   QStringLiteral("setROCenable(0, 0, 0, 0, 0, 0)"),
            QStringLiteral("getPIDconf()"),       QStringLiteral("getBuffer(14336)")};
        int last = -1;
        for (const QString& call : order) {
            const int place = calls.indexOf(call);
            QVERIFY2(place > last, qPrintable(call));
            last = place;
        }
        QVERIFY(calls.contains(QStringLiteral("getSFPinfo(0)")));
        QVERIFY(calls.contains(QStringLiteral("getBPMStats()")));
        QVERIFY(calls.contains(QStringLiteral("getPIDstatus()")));
    }

    void traceIsTheOnlyArgumentAndStandsAlone_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<bool>("traces");
        const auto texts = [](std::initializer_list<const char*> arguments) {
            QStringList list;
            for (const char* argument : arguments)
                list.append(QLatin1String(argument));
            return list;
        };
        QTest::newRow("none") << texts({}) << false;
        QTest::newRow("--trace") << texts({"--trace"}) << true;
        QTest::newRow("--trace and another") << texts({"--trace", "more"}) << false;
        QTest::newRow("--trace as the second") << texts({"more", "--trace"}) << false;
        QTest::newRow("nearly --trace") << texts({"--traces"}) << false;
        QTest::newRow("in capitals") << texts({"--TRACE"}) << false;
    }
    void traceIsTheOnlyArgumentAndStandsAlone()
    {
        QFETCH(QStringList, arguments);
        QFETCH(bool, traces);
        start("report", arguments);
        verifyCleanEnd();
        QCOMPARE(record().count(QStringLiteral("log Info: Started logger")), 1);
        QCOMPARE(record().contains(QStringLiteral("log Debug: updateGraphs read 14336 samples")), traces);
    }

    void startsMaximisedInItsOwnStyle()
    {
        start("report");
        verifyCleanEnd();
        QVERIFY(record().contains(QStringLiteral("title KORA Local User Interface v" KORA_VERSION)));
        QVERIFY(record().contains(QStringLiteral("maximised 11")));
        QVERIFY(record().contains(
            QStringLiteral("style QWidget::title { font-size: 20pt; background: rgb(150, 150, 150); "
                           "padding-left: 10px; padding-top: 8px; } "
                           "QMainWindow::separator { background: rgb(220, 220, 220); width: 3px; height: 3px; }")));
    }

    void versionsAndSelectorsAreReadBeforeAnyWindowCalls()
    {
        start("exit");
        verifyCleanEnd();
        // The worker polls meanwhile; everything that a window calls comes behind the two.
        const QStringList polled = {QStringLiteral("getSFPinfo("), QStringLiteral("getBPMStats("),
                                    QStringLiteral("getPIDstatus(")};
        QStringList fromMain;
        for (const QString& call : record()) {
            const bool ofThePoll = std::any_of(polled.cbegin(), polled.cend(),
                                               [&call](const QString& start) { return call.startsWith(start); });
            if (!ofThePoll)
                fromMain.append(call);
        }
        QCOMPARE(fromMain.mid(0, 3),
                 QStringList({QStringLiteral("getSystemVersion()"), QStringLiteral("getBPMselector()"),
                              QStringLiteral("getDisplayFreq()")}));
    }
};

QTEST_GUILESS_MAIN(ProgramTest)
#include "ProgramTest.moc"
