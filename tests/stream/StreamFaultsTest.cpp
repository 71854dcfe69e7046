#include "Window.h"

#include "support/MessageBoxes.h"
#include "support/OddNumbers.h"
#include "support/Operator.h"

#include <QApplication>
#include <QSignalSpy>
#include <QTimer>
#include <QtTest>

#include <fcntl.h>

#include <climits>
#include <cmath>

using namespace koralink_double;

class StreamFaultsTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<Window> window;

    std::vector<QCPDataMap*> registerEverything()
    {
        std::vector<QCPDataMap*> maps = {window->registered(KindXY1), window->registered(KindXY2),
                                         window->registered(KindFFT)};
        for (int kind : {3, 4, 7, 8, 10}) {
            for (int channel = 0; channel < 4; ++channel)
                maps.push_back(window->registered(kind, channel));
        }
        maps.push_back(window->registered(KindInt, 0));
        maps.push_back(window->registered(KindInt, 1));
        return maps;
    }

private slots:
    // A message box that closes is the last window here: it alone must not end the event loop.
    void initTestCase() { QApplication::setQuitOnLastWindowClosed(false); }
    void init()
    {
        window = std::make_unique<Window>();
        Window::setSlots([](int record, int slot) { return 1.0 + slot + 1e-3 * record; });
    }
    void cleanup() { window.reset(); }

    void statusOfAnAmplifierThatNeverAnsweredIsOffAndZero()
    {
        for (const AmplifierStatus& status : updater->ionbarStatus) {
            QCOMPARE(status.highVoltageCode(), 0);
            QCOMPARE(status.highVoltageVolts(), 0.0f);
            QCOMPARE(status.highVoltageMicroamps(), 0.0f);
            QCOMPARE(status.current(3), 0.0);
        }
    }

    void anAbsentAmplifierKeepsItsStatusAndDoesNotStopTheNext()
    {
        answers().amplifierStatus[0].setField(16, 100.0f);
        answers().amplifierStatus[1].setField(16, 200.0f);
        updater->updateIonBars();
        answers().amplifierStatus[0].setField(16, 101.0f);
        answers().amplifierStatus[1].setField(16, 201.0f);
        setDevicePresent("/dev/kora_ionbar0", false);
        updater->updateIonBars();
        QCOMPARE(updater->ionbarStatus[0].highVoltageVolts(), 100.0f);
        QCOMPARE(updater->ionbarStatus[1].highVoltageVolts(), 201.0f);
        setDevicePresent("/dev/kora_ionbar0", true);
        updater->updateIonBars();
        QCOMPARE(updater->ionbarStatus[0].highVoltageVolts(), 101.0f);
    }

    void descriptorThatOneTestLeavesOpenIsNotSeenByTheNext()
    {
        const int left = open("/dev/kora_ionbar0", O_RDONLY);
        QVERIFY(left >= 0);
        QCOMPARE(openDescriptors(), 1);
        reset();
        QCOMPARE(openDescriptors(), 0);
        QCOMPARE(fcntl(left, F_GETFD), -1);
    }

    void everyStatusIsReadFromADeviceThatIsOpenedAndClosedForIt()
    {
        clearCalls();
        updater->updateIonBars();
        updater->updateIonBars();
        QCOMPARE(callsOf("open").size(), std::size_t(4));
        QCOMPARE(callsOf("close").size(), std::size_t(4));
        QCOMPARE(openDescriptors(), 0);
        const Call opened = calls().front();
        QCOMPARE(opened.texts.at(0), std::string("/dev/kora_ionbar0"));
        QCOMPARE(opened.arguments.at(0), 0.0);
    }

    void aShortCountTellsTheOperatorAndEndsTheProgram()
    {
        MessageBoxes boxes;
        QCPDataMap* trace = window->registered(KindInt);
        QSignalSpy replots(updater, SIGNAL(replotGraphs()));
        answers().deliveredRecords = 14335;
        QTimer::singleShot(0, updater, SLOT(updateGraphs()));
        QTimer hangs;
        connect(&hangs, &QTimer::timeout, qApp, [] { QCoreApplication::exit(99); });
        hangs.start(20000);
        QCOMPARE(QCoreApplication::exec(), 0);
        QCOMPARE(boxes.count(), 1);
        QCOMPARE(boxes.boxes().at(0).title, QStringLiteral("Cannot open file"));
        QCOMPARE(boxes.boxes().at(0).text,
                 QStringLiteral("System file /dev/kora_dma_displ could not be opened.\n\n"
                                "Please check if KORA driver is loaded.\nApplication will now quit.\n"));
        QCOMPARE(boxes.boxes().at(0).icon, QMessageBox::Critical);
        QCOMPARE(boxes.boxes().at(0).buttons, QMessageBox::StandardButtons(QMessageBox::Ok));
        QVERIFY(!boxes.boxes().at(0).hasParent);
        // The slot has gone on with what the buffer holds.
        QCOMPARE(trace->size(), 14336);
        QCOMPARE(trace->at(14334)->value, 3.0 + 14.334);
        QCOMPARE(replots.count(), 1);
    }

    void aFailingStreamEndsTheProgramToo()
    {
        MessageBoxes boxes;
        fail("getBuffer");
        QTimer::singleShot(0, updater, SLOT(updateGraphs()));
        QTimer::singleShot(20000, qApp, [] { QCoreApplication::exit(99); });
        QCOMPARE(QCoreApplication::exec(), 0);
        QCOMPARE(boxes.count(), 1);
    }

    void theStreamGoesOnBehindTheOpenBox()
    {
        MessageBoxes boxes;
        QSignalSpy replots(updater, SIGNAL(replotGraphs()));
        answers().deliveredRecords = 0;
        QTimer::singleShot(0, updater, SLOT(updateGraphs()));
        QTimer::singleShot(0, updater, SLOT(updateGraphs()));
        QTimer::singleShot(20000, qApp, [] { QCoreApplication::exit(99); });
        QCOMPARE(QCoreApplication::exec(), 0);
        QCOMPARE(boxes.count(), 2);
        QCOMPARE(replots.count(), 2);
    }

    void aRateThatIsNoneDoesNoHarm_data()
    {
        QTest::addColumn<int>("rate");
        QTest::addColumn<int>("points");
        QTest::newRow("zero: all records at infinity but the first, which has no time") << 0 << 1;
        QTest::newRow("negative: time runs backwards") << -1000 << 14336;
        QTest::newRow("largest") << INT_MAX << 14336;
        QTest::newRow("smallest") << INT_MIN << 14336;
    }
    void aRateThatIsNoneDoesNoHarm()
    {
        QFETCH(int, rate);
        QFETCH(int, points);
        const std::vector<QCPDataMap*> maps = registerEverything();
        updater->fftLength = 8192;
        SAMP_FREQ = rate;
        updater->updateGraphs();
        for (const QCPDataMap* map : maps)
            QVERIFY(isOrderedAsMap(map));
        QCOMPARE(maps.back()->size(), points);

        SAMP_FREQ = 1000;
        updater->updateGraphs();
        for (const QCPDataMap* map : maps)
            QVERIFY(isOrderedAsMap(map));
        QCOMPARE(maps.back()->size(), 14336);
        QCOMPARE(maps.back()->at(1000)->key, 1.0);
    }

    void garbageInRecordsDoesNoHarm_data() { addOddNumbers(); }
    void garbageInRecordsDoesNoHarm()
    {
        QFETCH(double, number);
        const std::vector<QCPDataMap*> maps = registerEverything();
        Window::setSlots([number](int record, int) { return record % 3 ? number : 0.0; });
        updater->removeDC = true;
        updater->updateGraphs();
        for (const QCPDataMap* map : maps)
            QVERIFY(isOrderedAsMap(map));
        QCOMPARE(maps.back()->size(), 14336);
        // What is no position has no place in a cloud; all else is there once.
        QCOMPARE(maps.front()->size(), std::isnan(number) ? 1 : 2);

        Window::setSlots([](int record, int) { return double(record); });
        updater->updateGraphs();
        QCOMPARE(maps.front()->size(), 1000);
        QCOMPARE(maps.back()->at(77)->value, 77.0);
    }

    void aWindowBeyondTheBufferIsCutToIt()
    {
        QCPDataMap* trace = window->registered(KindInt);
        dispBufferBytes = INT_MAX - 255;
        updater->updateGraphs();
        QCOMPARE(trace->size(), 0x2000000 / 256);
        dispBufferBytes = -256;
        updater->updateGraphs();
        QVERIFY(trace->isEmpty());
    }
};

QTEST_MAIN(StreamFaultsTest)
#include "StreamFaultsTest.moc"
