#include "MailboxOnDouble.h"

#include "app/Globals.h"
#include "hardware/VersionText.h"
#include "logging/Log.h"
#include "support/LogLines.h"
#include "support/Operator.h"

#include <functional>

using namespace koralink_double;
using operate::lines;

namespace {

/// One command of the mailbox: how it is called, what reaches the library, what a failure logs.
struct Command
{
    const char* function; ///< name in the library
    std::function<int()> call;
    const char* reaches;
    const char* warning;
};

const std::vector<Command>& commandTable()
{
    static unsigned char byte[6];
    static int number[4];
    static const std::vector<Command> table = {
        {"setFBenable", [] { return mailbox->setFBenable(1); }, "setFBenable(1)", "setFBenable() failed "},
        {"setCtrlReset", [] { return mailbox->setCtrlReset(); }, "setCtrlReset()", "setCtrlReset() failed "},
        {"setPIDconf", [] { return mailbox->setPIDconf(14); }, "setPIDconf(14)", "setPIDconf() failed "},
        {"setPIDparams", [] { return mailbox->setPIDparams(2, 1, 2, 3, 4, 5, -6, 7, 8); },
         "setPIDparams(2, 1, 2, 3, 4, 5, -6, 7, 8)", "setPIDparams() failed "},
        {"setOffset", [] { return mailbox->setOffset(1.5, 2.5, 3.5, -4.5); }, "setOffset(1.5, 2.5, 3.5, -4.5)",
         "setOffset() failed "},
        {"setWindAvg", [] { return mailbox->setWindAvg(3, 500); }, "setWindAvg(3, 500)", "setWindAvg() failed "},
        {"setSetpoint", [] { return mailbox->setSetpointXlf(10.5); }, "setSetpoint(0, 10.5)",
         "setSetpoint(Xlf) failed "},
        {"setSetpoint", [] { return mailbox->setSetpointXhf(11.5); }, "setSetpoint(1, 11.5)",
         "setSetpoint(Xhf) failed "},
        {"setSetpoint", [] { return mailbox->setSetpointYlf(12.5); }, "setSetpoint(2, 12.5)",
         "setSetpoint(Ylf) failed "},
        {"setSetpoint", [] { return mailbox->setSetpointYhf(13.5); }, "setSetpoint(3, 13.5)",
         "setSetpoint(Yhf) failed "},
        {"setPIDoutSel", [] { return mailbox->setPIDoutSel(3, 2, 1, 0); }, "setPIDoutSel(3, 2, 1, 0)",
         "setPIDoutSel() failed "},
        {"setBPMselector", [] { return mailbox->setBPMselector(0, 1, 1, 0); }, "setBPMselector(0, 1, 1, 0)",
         "setBPMselector() failed "},
        {"getBPMselector", [] { return mailbox->getBPMselector(&number[0], &number[1], &number[2], &number[3]); },
         "getBPMselector()", "getBPMselector() failed "},
        {"setOutputMux", [] { return mailbox->setOutputMux(1); }, "setOutputMux(1)", "setOutputMux( 1 ) failed "},
        {"setOutputMux", [] { return mailbox->setOutputMux(0); }, "setOutputMux(0)", "setOutputMux( 0 ) failed "},
        // The orientation and the crossbar take the monitor last; the library takes it first.
        {"setBPMorient", [] { return mailbox->setBPMorient(7, 1); }, "setBPMorient(1, 7)", "setBPMorient() failed "},
        {"setCrossBar", [] { return mailbox->setCrossBar(3, 2, 0, 5, 1); }, "setCrossBar(1, 3, 2, 0, 5)",
         "setCrossBar() failed "},
        {"setBPMscale", [] { return mailbox->setBPMscale(1, 100.5, 200.5); }, "setBPMscale(1, 100.5, 200.5)",
         "setBPMscale() failed "},
        {"setBPMoffset", [] { return mailbox->setBPMoffset(1, -1.5, 2.5); }, "setBPMoffset(1, -1.5, 2.5)",
         "setBPMoffset() failed "},
        {"setROCenable", [] { return mailbox->setROCenable(1, 0, 1, 1, 0, 0); }, "setROCenable(1, 0, 1, 1, 0, 0)",
         "setROCenable() failed "},
        {"getROCenable", [] { return mailbox->getROCenable(byte, byte + 1, byte + 2, byte + 3, byte + 4, byte + 5); },
         "getROCenable()", "getROCenable() failed "},
        {"setROClimits", [] { return mailbox->setROClimits(5, -2.5, 1e12); }, "setROClimits(5, -2.5, 1e+12)",
         "setROClimits() failed "},
        {"ionbarHVenable", [] { return mailbox->ionbarHVenable(7, 1); }, "ionbarHVenable(7, 1)",
         "ionbarHVenable() failed "},
        {"ionbarHVSetVoltage", [] { return mailbox->ionbarHVSetVoltage(1, 250.5F); }, "ionbarHVSetVoltage(1, 250.5)",
         "ionbarHVSetVoltage() failed "},
        {"ionbarSetRange", [] { return mailbox->ionbarSetRange(2, 1); }, "ionbarSetRange(2, 1)",
         "ionbarSetRange() failed "},
        {"setDisplayFreq", [] { return mailbox->setDisplayFreq(1); }, "setDisplayFreq(1000, 1)",
         "setDisplayFreq() failed "},
        {"getSystemVersion", [] { return mailbox->getSystemVersion(nullptr, nullptr, nullptr); }, "getSystemVersion()",
         "getSystemVersion() failed "},
    };
    return table;
}

} // namespace

class MailboxCommTest : public MailboxOnDouble
{
    Q_OBJECT

private slots:
    void statusOfTheFeedbackCrossesThreadsByItsName()
    {
        // By its name alone: nothing here has asked for the type before.
        QVERIFY(QMetaType::type("PID_Status_Type") != QMetaType::UnknownType);
    }

    void startsEmptyAndCallsNothing()
    {
        QCOMPARE(mailbox->nrIonBars, 0);
        QCOMPARE(mailbox->cogtrakPresent, 0);
        QCOMPARE(mailbox->stats.bpm[1].i0StdFilt, 0.0);
        QVERIFY(calls().empty());
    }

    void commandsReachTheLibraryInItsOwnOrder_data() { commandRows(); }
    void commandsReachTheLibraryInItsOwnOrder()
    {
        QFETCH(int, row);
        const Command& command = commandTable()[std::size_t(row)];
        LogLines log(QsLogging::TraceLevel);
        QCOMPARE(command.call(), 0);
        QCOMPARE(allCalls(), QStringList{QLatin1String(command.reaches)});
        QCOMPARE(log.lines(), QStringList());
    }

    void failingCommandWarnsOnceAndReturnsTheFailure_data() { commandRows(); }
    void failingCommandWarnsOnceAndReturnsTheFailure()
    {
        QFETCH(int, row);
        const Command& command = commandTable()[std::size_t(row)];
        fail(command.function);
        LogLines log(QsLogging::TraceLevel);
        QCOMPARE(command.call(), -1);
        QCOMPARE(allCalls(), QStringList{QLatin1String(command.reaches)});
        QCOMPARE(log.lines(), QStringList{QLatin1String("3 ") + QLatin1String(command.warning)});
    }

    void failuresAreSilentWhenWarningsAreOff()
    {
        fail("setOffset");
        LogLines log(QsLogging::ErrorLevel);
        QCOMPARE(mailbox->setOffset(0, 0, 0, 0), -1);
        QCOMPARE(log.lines(), QStringList());
    }

    void selectorsAndEnablesComeBackInOrder()
    {
        const int wanted[4] = {1, 0, 0, 1};
        std::copy(wanted, wanted + 4, answers().bpmSel);
        int selected[4] = {};
        mailbox->getBPMselector(&selected[0], &selected[1], &selected[2], &selected[3]);
        QVERIFY(std::equal(wanted, wanted + 4, selected));

        const unsigned char enabled[6] = {1, 0, 1, 0, 0, 1};
        std::copy(enabled, enabled + 6, answers().rocEnable);
        unsigned char read[6] = {};
        mailbox->getROCenable(&read[0], &read[1], &read[2], &read[3], &read[4], &read[5]);
        QVERIFY(std::equal(enabled, enabled + 6, read));
    }

    void codesAreReturnedAsValues()
    {
        answers().outputMux = 1;
        answers().pidConf = 11;
        QCOMPARE(int(mailbox->getOutputMux()), 1);
        QCOMPARE(int(mailbox->getPIDconf()), 11);
    }

    void codesThatCannotBeReadAreZeroAndThatOfTheOutputsIsThatOfTheLoops()
    {
        answers().outputMux = 0;
        answers().pidConf = 11;
        answers().displayFreq = 5000;
        for (const char* function : {"getOutputMux", "getPIDconf", "getDisplayFreq"})
            fail(function);
        bool filter = true;
        LogLines log(QsLogging::InfoLevel);
        QCOMPARE(int(mailbox->getOutputMux()), 1);
        QCOMPARE(int(mailbox->getPIDconf()), 0);
        QCOMPARE(mailbox->getDisplayFreq(&filter), 0.0);
        QCOMPARE(filter, false);
        QCOMPARE(log.lines(),
                 (QStringList{QStringLiteral("3 getOutputMux() failed "), QStringLiteral("3 getPIDconf() failed "),
                              QStringLiteral("3 getDisplayFreq() failed ")}));
    }

    void displayRateIsTakenFromTheGlobalAtTheCall()
    {
        SAMP_FREQ = 50000;
        mailbox->setDisplayFreq(0);
        SAMP_FREQ = 0;
        mailbox->setDisplayFreq(1);
        QCOMPARE(lines(callsOf("setDisplayFreq")),
                 (QStringList{QStringLiteral("setDisplayFreq(50000, 0)"), QStringLiteral("setDisplayFreq(0, 1)")}));
    }

    void displayFilterIsOnWhenNotZero()
    {
        answers().displayFreq = 2500;
        answers().displayFilter = 4;
        bool filter = false;
        QCOMPARE(mailbox->getDisplayFreq(&filter), 2500.0);
        QCOMPARE(filter, true);
        QCOMPARE(mailbox->getDisplayFreq(nullptr), 2500.0);
        answers().displayFilter = 0;
        mailbox->getDisplayFreq(&filter);
        QCOMPARE(filter, false);
    }

    void setSetpointsWithOneFailingControllerStillSetsTheOthers()
    {
        fail("setSetpoint", 1);
        LogLines log(QsLogging::InfoLevel);
        QVERIFY(mailbox->setSetpoints(1, 2, 3, 4) < 0);
        QCOMPARE(lines(callsOf("setSetpoint")),
                 (QStringList{QStringLiteral("setSetpoint(0, 1)"), QStringLiteral("setSetpoint(1, 2)"),
                              QStringLiteral("setSetpoint(2, 3)"), QStringLiteral("setSetpoint(3, 4)")}));
        QCOMPARE(answers().setpoints[0], 0.0);
        QCOMPARE(answers().setpoints[3], 4.0);
        QCOMPARE(log.lines(), QStringList{QStringLiteral("3 setSetpoint(Xlf) failed ")});
        QCOMPARE(mailbox->setSetpoints(0, 0, 0, 0), 0);
    }

    void getSetpointsReturnsTheResultOfTheLastReadAlone()
    {
        for (int i = 0; i < 4; ++i)
            answers().setpoints[i] = 1.5 * (i + 1);
        double values[4] = {-1, -1, -1, -1};
        fail("getSetpoint", 1);
        LogLines log(QsLogging::InfoLevel);
        QCOMPARE(mailbox->getSetpoints(&values[0], &values[1], &values[2], &values[3]), 0);
        QCOMPARE(values[0], -1.0);
        QCOMPARE(values[1], 3.0);
        QCOMPARE(values[2], 4.5);
        QCOMPARE(values[3], 6.0);
        fail("getSetpoint");
        QCOMPARE(mailbox->getSetpoints(&values[0], &values[1], &values[2], &values[3]), -1);
        QCOMPARE(
            log.lines(),
            (QStringList{QStringLiteral("3 getSetpoint(Xlf) failed "), QStringLiteral("3 getSetpoint(Xlf) failed "),
                         QStringLiteral("3 getSetpoint(Xhf) failed "), QStringLiteral("3 getSetpoint(Ylf) failed "),
                         QStringLiteral("3 getSetpoint(Yhf) failed ")}));
    }

    void nullPointersOfGetSetpointsGoToTheLibrary()
    {
        double xlf = 0;
        double ylf = 0;
        QCOMPARE(mailbox->getSetpoints(&xlf, nullptr, &ylf, nullptr), 0);
        QCOMPARE(lines(callsOf("getSetpoint")),
                 (QStringList{QStringLiteral("getSetpoint(0, 1)"), QStringLiteral("getSetpoint(1, 0)"),
                              QStringLiteral("getSetpoint(2, 1)"), QStringLiteral("getSetpoint(3, 0)")}));
    }

    void versionTextsFollowTheBytesInMemory()
    {
        answers().versions[0] = 4294967295U;
        answers().versions[1] = 0x02000001; // bytes 1, 0, 0, 2
        answers().versions[2] = 0x7f0c0aff; // bytes 255, 10, 12, 127
        QString time;
        QString software;
        QString pid;
        QCOMPARE(mailbox->getSystemVersion(&time, &software, &pid), 0);
        QCOMPARE(time, QStringLiteral("4294967295"));
        QCOMPARE(software, QStringLiteral("1.0.02"));
        QCOMPARE(pid, QStringLiteral("255.10.12127"));
        QString alone;
        mailbox->getSystemVersion(nullptr, &alone, nullptr);
        QCOMPARE(alone, software);
    }

    void versionTextsAreBuiltAfterAFailureToo()
    {
        fail("getSystemVersion");
        QString time;
        QString software;
        QString pid;
        QCOMPARE(mailbox->getSystemVersion(&time, &software, &pid), -1);
        QCOMPARE(time, QStringLiteral("0"));
        QCOMPARE(software, QStringLiteral("0.0.00"));
        QCOMPARE(pid, QStringLiteral("0.0.00"));
    }

    void versionsAreComparedAsTexts()
    {
        QVERIFY(!firmwareHasVariableRate(QStringLiteral("1.0.02")));
        QVERIFY(firmwareHasVariableRate(QStringLiteral("1.0.03")));
        QVERIFY(!firmwareHasVariableRate(QStringLiteral("1.0.010")));
        QVERIFY(firmwareHasVariableRate(QStringLiteral("1.0.1")));
        QVERIFY(!firmwareHasVariableRate(QStringLiteral("")));
    }

private:
    void commandRows()
    {
        QTest::addColumn<int>("row");
        for (std::size_t row = 0; row < commandTable().size(); ++row)
            QTest::newRow(commandTable()[row].warning) << int(row);
    }
};

QTEST_MAIN(MailboxCommTest)
#include "MailboxCommTest.moc"
