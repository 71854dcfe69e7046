#include "hardware/MailboxComm.h"
#include "app/Globals.h"
#include "app/WorkerThread.h"
#include "double/KoralinkDouble.h"
#include "hardware/VersionText.h"
#include "logging/Log.h"
#include "support/LogLines.h"
#include "support/Operator.h"
#include "support/World.h"

#include <QSignalSpy>
#include <QThread>
#include <QTimer>
#include <QtTest>

#include <atomic>
#include <functional>
#include <memory>

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
        {"setOffset", [] { return mailbox->setOffset(1.5, 2.5, 3.5, -4.5); },
         "setOffset(1.5, 2.5, 3.5, -4.5)", "setOffset() failed "},
        {"setWindAvg", [] { return mailbox->setWindAvg(3, 500); }, "setWindAvg(3, 500)",
         "setWindAvg() failed "},
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
        {"getBPMselector",
         [] { return mailbox->getBPMselector(&number[0], &number[1], &number[2], &number[3]); },
         "getBPMselector()", "getBPMselector() failed "},
        {"setOutputMux", [] { return mailbox->setOutputMux(1); }, "setOutputMux(1)",
         "setOutputMux( 1 ) failed "},
        {"setOutputMux", [] { return mailbox->setOutputMux(0); }, "setOutputMux(0)",
         "setOutputMux( 0 ) failed "},
        // The orientation and the crossbar take the monitor last; the library takes it first.
        {"setBPMorient", [] { return mailbox->setBPMorient(7, 1); }, "setBPMorient(1, 7)",
         "setBPMorient() failed "},
        {"setCrossBar", [] { return mailbox->setCrossBar(3, 2, 0, 5, 1); }, "setCrossBar(1, 3, 2, 0, 5)",
         "setCrossBar() failed "},
        {"setBPMscale", [] { return mailbox->setBPMscale(1, 100.5, 200.5); }, "setBPMscale(1, 100.5, 200.5)",
         "setBPMscale() failed "},
        {"setBPMoffset", [] { return mailbox->setBPMoffset(1, -1.5, 2.5); }, "setBPMoffset(1, -1.5, 2.5)",
         "setBPMoffset() failed "},
        {"setROCenable", [] { return mailbox->setROCenable(1, 0, 1, 1, 0, 0); },
         "setROCenable(1, 0, 1, 1, 0, 0)", "setROCenable() failed "},
        {"getROCenable",
         [] { return mailbox->getROCenable(byte, byte + 1, byte + 2, byte + 3, byte + 4, byte + 5); },
         "getROCenable()", "getROCenable() failed "},
        {"setROClimits", [] { return mailbox->setROClimits(5, -2.5, 1e12); }, "setROClimits(5, -2.5, 1e+12)",
         "setROClimits() failed "},
        {"ionbarHVenable", [] { return mailbox->ionbarHVenable(7, 1); }, "ionbarHVenable(7, 1)",
         "ionbarHVenable() failed "},
        {"ionbarHVSetVoltage", [] { return mailbox->ionbarHVSetVoltage(1, 250.5F); },
         "ionbarHVSetVoltage(1, 250.5)", "ionbarHVSetVoltage() failed "},
        {"ionbarSetRange", [] { return mailbox->ionbarSetRange(2, 1); }, "ionbarSetRange(2, 1)",
         "ionbarSetRange() failed "},
        {"setDisplayFreq", [] { return mailbox->setDisplayFreq(1); }, "setDisplayFreq(1000, 1)",
         "setDisplayFreq() failed "},
        {"getSystemVersion", [] { return mailbox->getSystemVersion(nullptr, nullptr, nullptr); },
         "getSystemVersion()", "getSystemVersion() failed "},
    };
    return table;
}

void plug(std::initializer_list<int> deviceIds)
{
    int port = 0;
    for (int deviceId : deviceIds)
        answers().sfp[port++].deviceId = std::uint16_t(deviceId);
}

QVector<int> announced(const QSignalSpy& changes)
{
    QVector<int> masks;
    for (const QList<QVariant>& arguments : changes)
        masks.append(arguments.at(0).toInt());
    return masks;
}

QStringList allCalls()
{
    QStringList texts;
    for (const Call& call : calls())
        texts.append(QString::fromStdString(call.text()));
    return texts;
}

} // namespace

class MailboxCommTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<World> world;

private slots:
    void init()
    {
        koralink_double::reset();
        world = std::make_unique<World>();
    }
    void cleanup() { world.reset(); }

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

    void codesThatCannotBeReadAreZeroAndWarn()
    {
        answers().outputMux = 1;
        answers().pidConf = 11;
        answers().displayFreq = 5000;
        for (const char* function : {"getOutputMux", "getPIDconf", "getDisplayFreq"})
            fail(function);
        bool filter = true;
        LogLines log(QsLogging::InfoLevel);
        QCOMPARE(int(mailbox->getOutputMux()), 0);
        QCOMPARE(int(mailbox->getPIDconf()), 0);
        QCOMPARE(mailbox->getDisplayFreq(&filter), 0.0);
        QCOMPARE(filter, false);
        QCOMPARE(log.lines(), (QStringList{QStringLiteral("3 getOutputMux() failed "),
                                           QStringLiteral("3 getPIDconf() failed "),
                                           QStringLiteral("3 getDisplayFreq() failed ")}));
    }

    void displayRateIsTakenFromTheGlobalAtTheCall()
    {
        SAMP_FREQ = 50000;
        mailbox->setDisplayFreq(0);
        SAMP_FREQ = 0;
        mailbox->setDisplayFreq(1);
        QCOMPARE(lines(callsOf("setDisplayFreq")), (QStringList{QStringLiteral("setDisplayFreq(50000, 0)"),
                                                                QStringLiteral("setDisplayFreq(0, 1)")}));
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
        QCOMPARE(log.lines(), (QStringList{QStringLiteral("3 getSetpoint(Xlf) failed "),
                                           QStringLiteral("3 getSetpoint(Xlf) failed "),
                                           QStringLiteral("3 getSetpoint(Xhf) failed "),
                                           QStringLiteral("3 getSetpoint(Ylf) failed "),
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

    void scanFormsTheMask_data()
    {
        QTest::addColumn<int>("a");
        QTest::addColumn<int>("b");
        QTest::addColumn<int>("c");
        QTest::addColumn<int>("d");
        QTest::addColumn<int>("mask");
        QTest::addColumn<int>("encoderBox");
        QTest::newRow("nothing") << 0 << 0 << 0 << 0 << 0 << 0;
        QTest::newRow("amplifier on A") << 0x2101 << 0 << 0 << 0 << 1 << 0;
        QTest::newRow("amplifier on B") << 0 << 0x21ff << 0 << 0 << 2 << 0;
        QTest::newRow("amplifiers on A and B") << 0x2100 << 0x2101 << 0 << 0 << 3 << 0;
        QTest::newRow("amplifiers on C and D never count") << 0 << 0 << 0x2101 << 0x2101 << 0 << 0;
        QTest::newRow("other devices on A and B") << 0x1101 << 0x2201 << 0 << 0 << 0 << 0;
        QTest::newRow("amplifier on A, encoder box on B") << 0x2101 << 0x2301 << 0 << 0 << 2 << 1;
        QTest::newRow("encoder box on A, amplifier on B") << 0x2301 << 0x2101 << 0 << 0 << 1 << 1;
        QTest::newRow("encoder boxes on A and B") << 0x2300 << 0x2301 << 0 << 0 << 3 << 1;
        QTest::newRow("encoder box on C alone") << 0x2101 << 0x2101 << 0x2301 << 0 << 0 << 1;
        QTest::newRow("encoder box on D alone") << 0x2101 << 0x2101 << 0 << 0x23ff << 0 << 1;
    }
    void scanFormsTheMask()
    {
        QFETCH(int, a);
        QFETCH(int, b);
        QFETCH(int, c);
        QFETCH(int, d);
        plug({a, b, c, d});
        mailbox->refreshData();
        QTEST(mailbox->nrIonBars, "mask");
        QTEST(mailbox->cogtrakPresent, "encoderBox");
    }

    void withoutDevicesNoSignalIsEverSentByTheScan()
    {
        QSignalSpy changes(mailbox, SIGNAL(nrIonBarsChanged(int)));
        mailbox->refreshData();
        mailbox->refreshData();
        QCOMPARE(changes.count(), 0);
        QVERIFY(callsOf("getBPMselector").empty());
        mailbox->emitNrIonBars();
        QCOMPARE(announced(changes), QVector<int>{0});
    }

    void encoderBoxWithANewMaskIsAnnouncedTwice()
    {
        plug({0x2101, 0x2300});
        QSignalSpy changes(mailbox, SIGNAL(nrIonBarsChanged(int)));
        mailbox->refreshData();
        QCOMPARE(announced(changes), (QVector<int>{2, 2}));
        mailbox->refreshData();
        QCOMPARE(changes.count(), 2);
        mailbox->emitNrIonBars();
        QCOMPARE(announced(changes), (QVector<int>{2, 2, 2}));
    }

    void encoderBoxThatLeavesTheMaskIsAnnouncedOnce()
    {
        plug({0, 0, 0x2300});
        QSignalSpy changes(mailbox, SIGNAL(nrIonBarsChanged(int)));
        mailbox->refreshData();
        QCOMPARE(announced(changes), QVector<int>{0});
        QVERIFY(callsOf("getBPMselector").empty());
    }

    void loopRateStaysAt5000OnceAnEncoderBoxWasSeen()
    {
        plug({0x2101});
        mailbox->refreshData();
        QCOMPARE(sampFreq, 10000);
        plug({0x2300});
        mailbox->refreshData();
        QCOMPARE(sampFreq, 5000);
        sampFreq = 10000;
        mailbox->refreshData();
        QCOMPARE(sampFreq, 10000);
        plug({0x2101});
        mailbox->refreshData();
        QCOMPARE(mailbox->cogtrakPresent, 0);
        QCOMPARE(sampFreq, 5000);
    }

    void maskChangesOnlyAfterTheEmissionAndTheSelectorsBefore()
    {
        plug({0x2101, 0x2101});
        const int selectors[4] = {1, 0, 1, 0};
        std::copy(selectors, selectors + 4, answers().bpmSel);
        int maskDuringEmission = -1;
        int selectorDuringEmission = -1;
        QObject::connect(mailbox, &MailboxComm::nrIonBarsChanged, this, [&] {
            maskDuringEmission = mailbox->nrIonBars;
            selectorDuringEmission = bpmSelYlf;
        });
        mailbox->refreshData();
        QCOMPARE(maskDuringEmission, 0);
        QCOMPARE(selectorDuringEmission, 1);
        QCOMPARE(mailbox->nrIonBars, 3);
        QCOMPARE(bpmSelXlf, 1);
        QCOMPARE(bpmSelXhf, 0);
        QCOMPARE(bpmSelYhf, 0);
    }

    void selectorsThatCannotBeReadStayAndTheChangeIsAnnounced()
    {
        plug({0x2101});
        bpmSelXlf = 1;
        fail("getBPMselector");
        QSignalSpy changes(mailbox, SIGNAL(nrIonBarsChanged(int)));
        LogLines log(QsLogging::InfoLevel);
        mailbox->refreshData();
        QCOMPARE(bpmSelXlf, 1);
        QCOMPARE(announced(changes), QVector<int>{1});
        QCOMPARE(log.lines(), QStringList{QStringLiteral("3 getBPMselector() failed ")});
    }

    void scanLogsItsChangesAtDebugLevelInOrder()
    {
        plug({0x2300});
        LogLines log(QsLogging::DebugLevel);
        mailbox->refreshData();
        QCOMPARE(log.lines(), (QStringList{QStringLiteral("1 Cogtrak change detected "),
                                           QStringLiteral("1 Number of acquisition devices changed ")}));
    }

    void failedPortCountsAsEmptyAndTheScanGoesOn()
    {
        plug({0x2101, 0x2101, 0x1101, 0x2201});
        mailbox->refreshData();
        QCOMPARE(mailbox->nrIonBars, 3);
        QSignalSpy changes(mailbox, SIGNAL(nrIonBarsChanged(int)));
        LogLines log(QsLogging::InfoLevel);
        fail("getSFPinfo", 1);
        mailbox->refreshData();
        QCOMPARE(mailbox->nrIonBars, 2);
        QCOMPARE(int(mailbox->sfpPorts()[0].deviceId), 0);
        QCOMPARE(int(mailbox->sfpPorts()[3].deviceId), 0x2201);
        mailbox->refreshData();
        QCOMPARE(announced(changes), (QVector<int>{2, 3}));
        QCOMPARE(log.lines(), QStringList{QStringLiteral("3 getSFPinfo( 0 ) failed ")});
    }

    void everyFailedPortIsNamed()
    {
        LogLines log(QsLogging::InfoLevel);
        fail("getSFPinfo");
        mailbox->refreshData();
        QCOMPARE(log.lines(), (QStringList{QStringLiteral("3 getSFPinfo( 0 ) failed "),
                                           QStringLiteral("3 getSFPinfo( 1 ) failed "),
                                           QStringLiteral("3 getSFPinfo( 2 ) failed "),
                                           QStringLiteral("3 getSFPinfo( 3 ) failed ")}));
        QCOMPARE(mailbox->nrIonBars, 0);
    }

    void scanClearsAnEntryButForWhatKeepsItsOldValue()
    {
        answers().sfp[1] = {0x2101, 7, {'a', 'b', 'c', 'd'}, 1234};
        mailbox->refreshData();
        QCOMPARE(mailbox->sfpPorts()[1].hwVersion, 7U);
        QCOMPARE(mailbox->sfpPorts()[1].serialNumber, 1234U);
        fail("getSFPinfo");
        mailbox->refreshData();
        const SFPinfo& port = mailbox->sfpPorts()[1];
        QCOMPARE(int(port.deviceId), 0);
        QCOMPARE(port.hwVersion, 0U);
        QCOMPARE(QByteArray(port.version, 4), QByteArray("\0\0cd", 4));
        QCOMPARE(port.serialNumber, 1234U);
    }

    void pollScansThenReadsStatisticsAndStatus()
    {
        answers().stats.bpm[0].posXMean = 1.25;
        answers().stats.bpm[1].i0StdFilt = 2.5;
        answers().pidStatus = PidStatusOutOfRoc;
        mailbox->refreshData();
        QCOMPARE(mailbox->stats.bpm[0].posXMean, 1.25);
        QCOMPARE(mailbox->stats.bpm[1].i0StdFilt, 2.5);
        QCOMPARE(mailbox->pidStatus, int(PidStatusOutOfRoc));
        QCOMPARE(allCalls(),
                 (QStringList{QStringLiteral("getSFPinfo(0)"), QStringLiteral("getSFPinfo(1)"),
                              QStringLiteral("getSFPinfo(2)"), QStringLiteral("getSFPinfo(3)"),
                              QStringLiteral("getBPMStats()"), QStringLiteral("getPIDstatus()")}));
    }

    void failedStatisticsKeepTheOldOnesSilently()
    {
        answers().stats.bpm[0].posXMean = 1.25;
        mailbox->refreshData();
        answers().stats.bpm[0].posXMean = 9;
        answers().pidStatus = PidStatusOn;
        fail("getBPMStats");
        fail("getPIDstatus");
        LogLines log(QsLogging::TraceLevel);
        mailbox->refreshData();
        QCOMPARE(mailbox->stats.bpm[0].posXMean, 1.25);
        QCOMPARE(mailbox->pidStatus, int(PidStatusOn));
        QCOMPARE(log.lines(), QStringList());
    }

    void setUpOnTheWorkerStartsTheSecondTimerAndScansOnce()
    {
        mailbox->doSetupOnNewThread();
        QCOMPARE(callsOf("getSFPinfo").size(), std::size_t(4));
        QVERIFY(callsOf("getPIDstatus").empty());
        auto* timer = mailbox->findChild<QTimer*>();
        QVERIFY(timer);
        QVERIFY(timer->isActive());
        QVERIFY(!timer->isSingleShot());
        QCOMPARE(timer->interval(), 1000);
        operate::fire(timer);
        QCOMPARE(callsOf("getPIDstatus").size(), std::size_t(1));
    }

    void startedThreadPollsFirstAndThenSetsUp()
    {
        QThread worker;
        mailbox->doSetup(worker);
        mailbox->moveToThread(&worker);
        connect(&worker, SIGNAL(started()), mailbox, SLOT(doSetupOnNewThread()));
        worker.start(QThread::InheritPriority);
        QTRY_COMPARE(int(callsOf("getSFPinfo").size()), 8);
        const QStringList order = allCalls();
        QCOMPARE(order.at(4), QStringLiteral("getBPMStats()"));
        QCOMPARE(order.at(5), QStringLiteral("getPIDstatus()"));
        QCOMPARE(order.at(6), QStringLiteral("getSFPinfo(0)"));

        // finished() ends the worker's loop, through this thread, and the object.
        std::atomic<bool> gone{false};
        connect(mailbox, &QObject::destroyed, [&gone] { gone = true; });
        QMetaObject::invokeMethod(mailbox, "finished");
        QTRY_VERIFY_WITH_TIMEOUT(worker.isFinished(), 10000);
        QTRY_VERIFY(gone.load());
        mailbox = nullptr;
    }

    void commandsRunWhileTheWorkerPolls()
    {
        constexpr int turns = 200;
        plug({0x2101, 0x2101});
        answers().stats.bpm[0].posXMean = 1.25;
        WorkerThread worker;
        mailbox->moveToThread(&worker);
        for (int turn = 0; turn < turns; ++turn)
            QMetaObject::invokeMethod(mailbox, "refreshData", Qt::QueuedConnection);
        worker.start(QThread::InheritPriority);
        for (int turn = 0; turn < turns; ++turn) {
            QCOMPARE(mailbox->setSetpoints(turn, 0, -turn, 0), 0);
            for (int look = 0; look < 20; ++look) {
                const double mean = mailbox->stats.bpm[0].posXMean;
                QVERIFY(mean == 0.0 || mean == 1.25);
                QVERIFY(mailbox->nrIonBars == 0 || mailbox->nrIonBars == 3);
            }
        }
        QTRY_COMPARE(int(callsOf("getPIDstatus").size()), turns);
        worker.quit();
        QVERIFY(worker.wait());
        QCOMPARE(mailbox->nrIonBars, 3);
        QCOMPARE(int(callsOf("setSetpoint").size()), 4 * turns);
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
