#include "ConsoleRun.h"

#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

/// What kora-sim says to wrong input, where no simulation is running.
class ConsoleInputTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(scratch.isValid()); }

    void wrongInputGetsOneLineAndStatus2_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<QString>("words");
        const auto add = [](const char* line, const char* words) {
            QTest::newRow(*line ? line : "nothing") << QString::fromLatin1(line) << QString::fromLatin1(words);
        };
        add("", "a command is missing");
        add("dance", "unknown command \"dance\"");
        add("--loud status", "unknown option \"--loud\"");
        add("--pid", "--pid wants the number of a process");
        add("--pid x status", "--pid must be a whole number");
        add("--pid 0 status", "--pid must be a whole number");
        add("beam", "beam wants on|off");
        add("beam up", "beam: expected on or off, not \"up\"");
        add("beam on on", "beam wants on|off");
        add("drift", "drift wants AMPLITUDE");
        add("drift -1", "the drift must be a number from 0 to 10000, not \"-1\"");
        add("drift 5 0", "the period must be a number from 0.1 to 86400");
        add("drift 5 10 -1", "the random walk must be");
        add("drift off 3", "nothing after off");
        add("kick 5", "kick wants X Y");
        add("kick 5 five", "kick: y must be a number from -10000 to 10000, not \"five\"");
        add("kick nan 0", "x must be a number");
        add("kick inf 0", "x must be a number");
        add("kick 1e9 0", "x must be a number");
        add("kick 1,5 0", "x must be a number");
        add("kick 5um 0", "x must be a number");
        add("vibration 8 10 1", "the line must be a whole number from 0 to 7, not \"8\"");
        add("vibration -1 10 1", "the line must be a whole number");
        add("vibration 1.5 10 1", "the line must be a whole number");
        add("vibration 0 0 1", "the frequency must be a number from 0.001 to 25000");
        add("vibration 0 25001 1", "the frequency must be");
        add("vibration 0 10", "an amplitude is missing");
        add("vibration 0 10 -1", "the amplitude must be");
        add("vibration 0 10 1 x", "the amplitude in y must be");
        add("vibration 0 off 1", "nothing after off");
        add("noise", "noise wants POSITION [CURRENT]");
        add("noise -0.1", "the noise must be");
        add("noise 1 1", "the current noise must be a number from 0 to 0.001");
        add("quiet please", "quiet takes no arguments");
        add("plug A", "plug wants PORT CODE");
        add("plug E 2101", "plug: the port must be A, B, C or D, not \"E\"");
        add("plug 0 2101", "the port must be A, B, C or D");
        add("plug A 0", "the product code must be hexadecimal");
        add("plug A 12345", "the product code must be hexadecimal");
        add("plug A 21g1", "the product code must be hexadecimal");
        add("plug A 0x", "the product code must be hexadecimal");
        add("plug A -1", "the product code must be hexadecimal");
        add("unplug AB", "unplug: the port must be");
        add("cable 3 1 2 3 4", "the BPM must be a whole number from 1 to 2");
        add("cable 1 1 2 3 5", "a channel must be a whole number from 0 to 4");
        add("cable 1 1 1 2 3", "cable: two cables cannot share a channel");
        add("cable 1 1 2 3", "cable wants BPM TOP RIGHT BOTTOM LEFT");
        add("remove kora_ionbar2",
            "the device file must be one of kora_dma_displ, kora_ionbar0, kora_ionbar1, kora_anvolt0, not");
        add("restore /dev/null", "restore: the device file must be one of");
        add("fail", "fail wants FUNCTION");
        add("fail setNothing", "the control library has no function \"setNothing\"");
        add("fail setFBenable 0", "the number of failures (once, always, off) must be a whole number from 1");
        add("fail setFBenable twice", "the number of failures");
        add("blocks", "blocks wants good | short COUNT | garbage");
        add("blocks long", "expected good, short or garbage, not \"long\"");
        add("blocks short", "the number of missing records is missing");
        add("blocks short 0", "the number of missing records must be a whole number from 1 to 16383");
        add("blocks garbage 3", "nothing after the kind of blocks");
        add("repair all", "repair takes no arguments");
        add("reset now", "reset takes no arguments");
        add("time 1", "time takes no arguments");
        add("status --xml", "status: expected --json, not \"--xml\"");
        add("list all", "list takes no arguments");
        add("play", "play wants");
        add("play --speed", "play: unexpected \"--speed\"");
        add("play --speed 0 x", "play: the speed must be a number");
        add("play --loop x", "play: unexpected \"--loop\"");
        add("play a b", "play: unexpected \"b\"");
        add("play /no/such/file", "the scenario \"/no/such/file\" cannot be read");
        add("play /tmp", "the scenario \"/tmp\" is no regular file");
        add("play no-such-scenario", "the scenario \"no-such-scenario\" cannot be read");
    }

    void wrongInputGetsOneLineAndStatus2()
    {
        QFETCH(QString, line);
        QFETCH(QString, words);
        const ConsoleRun run = console(line.split(QLatin1Char(' '), Qt::SkipEmptyParts));
        QVERIFY2(run.isRefusal(2, words), run.described().constData());
    }

    void controlCharactersStayOnOneLine()
    {
        const ConsoleRun run = console({QStringLiteral("kick\nreset")});
        QVERIFY2(run.isRefusal(2, QStringLiteral("unknown command \"kick?reset\"")), run.described().constData());
    }

    void blanksWithinAWordAreNoSeparators()
    {
        const ConsoleRun run = console({QStringLiteral("beam on")});
        QVERIFY2(run.isRefusal(2, QStringLiteral("unknown command \"beam on\"")), run.described().constData());
    }

    void longWordIsCutAtACharacter()
    {
        const ConsoleRun run = console({QString(59, QLatin1Char('x')) + QString(5000, QChar(0xfc))});
        QVERIFY2(run.isRefusal(2, QStringLiteral("unknown command \"%1...\"\n").arg(QString(59, QLatin1Char('x')))),
                 run.described().constData());
    }

    void answerThatCannotBeWrittenIsTold()
    {
        QProcess shell;
        shell.start(QStringLiteral("sh"), {QStringLiteral("-c"), QStringLiteral(KORA_CONSOLE " --help >/dev/full")});
        QVERIFY(shell.waitForFinished());
        QCOMPARE(shell.exitCode(), 3);
        QCOMPARE(shell.readAllStandardError(), QByteArray("kora-sim: the answer cannot be written\n"));
        shell.start(QStringLiteral("sh"), {QStringLiteral("-c"), QStringLiteral(KORA_CONSOLE " --version >&-")});
        QVERIFY(shell.waitForFinished());
        QCOMPARE(shell.exitCode(), 3);
    }

    void withoutASimulationStatusIs1()
    {
        for (const char* line : {"status", "status --json", "beam off", "time", "list"}) {
            const ConsoleRun run = console(QString::fromLatin1(line).split(QLatin1Char(' ')));
            QVERIFY2(run.isRefusal(1, QStringLiteral("no simulation is running")), run.described().constData());
        }
        const ConsoleRun run = console({QStringLiteral("--pid"), QStringLiteral("1"), QStringLiteral("status")});
        QVERIFY2(run.isRefusal(1, QStringLiteral("no simulation is running in process 1")),
                 run.described().constData());
    }

    void helpNamesEveryCommand()
    {
        for (const char* option : {"--help", "-h"}) {
            const ConsoleRun run = console({QString::fromLatin1(option)});
            QCOMPARE(run.status, 0);
            QVERIFY(run.error.isEmpty());
            for (const char* command : {"beam",   "drift", "kick",   "vibration", "noise", "quiet",  "plug",
                                        "unplug", "cable", "remove", "restore",   "fail",  "blocks", "repair",
                                        "reset",  "time",  "status", "play",      "list",  "serve",  "stop"})
                QVERIFY2(run.output.contains(QStringLiteral("\n  ") + QLatin1String(command)), command);
            for (const QString& row : run.output.split(QLatin1Char('\n')))
                QVERIFY2(row.size() <= 100, qPrintable(row));
        }
    }

    void manualNamesEveryCommandOfTheHelp()
    {
        QFile manual(QStringLiteral(KORA_MANUAL));
        QVERIFY(manual.open(QIODevice::ReadOnly));
        const QString text = QString::fromUtf8(manual.readAll());
        int commands = 0;
        for (const QString& row : console({QStringLiteral("--help")}).output.split(QLatin1Char('\n'))) {
            if (!row.startsWith(QLatin1String("  ")) || row[2].isSpace() || row[2] == QLatin1Char('-'))
                continue;
            const QString command = row.trimmed().section(QLatin1Char(' '), 0, 0);
            const QRegularExpression heading(QStringLiteral("\\n\\.TP\\n\\.B[RI]? \"?%1\\b").arg(command));
            QVERIFY2(text.contains(heading), qPrintable(command));
            ++commands;
        }
        QCOMPARE(commands, 21);
    }

    void versionIsShown()
    {
        const ConsoleRun run = console({QStringLiteral("--version")});
        QCOMPARE(run.status, 0);
        QCOMPARE(run.output, QStringLiteral("kora-sim " KORA_VERSION "\n"));
    }

private:
    ConsoleRun console(const QStringList& arguments) { return runConsole(arguments, scratch.path()); }

    QTemporaryDir scratch;
};

QTEST_GUILESS_MAIN(ConsoleInputTest)
#include "ConsoleInputTest.moc"
