#include "MailboxOnDouble.h"

#include "app/Globals.h"
#include "app/WorkerThread.h"
#include "logging/Log.h"
#include "support/LogLines.h"
#include "support/Operator.h"

#include <QSignalSpy>
#include <QThread>
#include <QTimer>

#include <atomic>

using namespace koralink_double;
using operate::lines;

namespace {

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

} // namespace

/// The scan of the ports, the poll and the worker thread.
class MailboxPollTest : public MailboxOnDouble
{
    Q_OBJECT

private slots:
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
        QCOMPARE(
            log.lines(),
            (QStringList{QStringLiteral("3 getSFPinfo( 0 ) failed "), QStringLiteral("3 getSFPinfo( 1 ) failed "),
                         QStringLiteral("3 getSFPinfo( 2 ) failed "), QStringLiteral("3 getSFPinfo( 3 ) failed ")}));
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
        QCOMPARE(allCalls(), (QStringList{QStringLiteral("getSFPinfo(0)"), QStringLiteral("getSFPinfo(1)"),
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
};

QTEST_MAIN(MailboxPollTest)
#include "MailboxPollTest.moc"
