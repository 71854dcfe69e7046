#include "FrequencyTool.h"

#include "app/Globals.h"
#include "hardware/MailboxComm.h"
#include "support/DrivenPause.h"
#include "support/MessageBoxes.h"

#include <QTimer>
#include <QtTest>

#include <cmath>
#include <cstring>

using namespace koralink_double;
using operate::find;

class FrequencyEndsTest : public FrequencyTool
{
    Q_OBJECT

private slots:
    void missingStreamIsToldAndTheSlotCarriesOn()
    {
        setDevicePresent(streamDevicePath, false);
        setSweep("10", "20", "2");
        MessageBoxes boxes;
        start();
        QCOMPARE(boxes.count(), 1);
        QCOMPARE(boxes.boxes().first().title, QStringLiteral("Cannot open file"));
        QCOMPARE(boxes.boxes().first().text,
                 QStringLiteral("System file /dev/kora_dma_displ could not be opened.\n\nPlease check if KORA driver "
                                "is loaded.\nApplication will now quit.\n"));
        QCOMPARE(boxes.boxes().first().icon, QMessageBox::Critical);
        QCOMPARE(keys(0).size(), std::size_t(2));
        QCOMPARE(values(magnitudePlot(), 0).at(0), 0.0);
        QCOMPARE(callsOf("funcGenEnable").size(), std::size_t(4));
    }

    void missingStreamEndsTheProgramWhenTheSlotReturns()
    {
        setDevicePresent(streamDevicePath, false);
        setSweep("10", "20", "3");
        MessageBoxes boxes;
        QTimer::singleShot(0, this, [this] { start(); });
        QCOMPARE(QCoreApplication::exec(), 0);
        QCOMPARE(keys(0).size(), std::size_t(3));
    }

    void missingOutputDeviceIsNotNoticed()
    {
        setDevicePresent(outputDevicePath, false);
        MessageBoxes boxes;
        start();
        QCOMPARE(boxes.count(), 0);
        QCOMPARE(keys(0).size(), std::size_t(5));
    }

    void shortReadIsNotNoticed()
    {
        answers().deliveredBytes = 1000;
        answers().fillBlock = KnownResponse();
        MessageBoxes boxes;
        start();
        QCOMPARE(boxes.count(), 0);
        QCOMPARE(keys(0).size(), std::size_t(5));
    }

    void secondStartWithinASweepDoesNothing()
    {
        inPause(2, [this] {
            start();
            window->slotStartSweepPushButton();
        });
        start();
        QCOMPARE(tree()->topLevelItemCount(), 1);
        QCOMPARE(keys(0).size(), std::size_t(5));
        QCOMPARE(callsOf("funcGenConfig").size(), std::size_t(5));
    }

    void closedWindowGoesOnSweeping()
    {
        window->show();
        inPause(2, [this] { window->close(); });
        start();
        QVERIFY(!window->isVisible());
        QCOMPARE(keys(0).size(), std::size_t(5));
    }

    void windowDestroyedBetweenTwoPointsEndsTheSweep()
    {
        SAMP_FREQ = 3000;
        inPause(2, [this] { QTimer::singleShot(0, this, [this] { window.reset(); }); });
        start();
        QVERIFY(!window);
        QCOMPARE(callsOf("funcGenConfig").size(), std::size_t(2));
        QCOMPARE(callsOf("funcGenEnable").back(), std::string("funcGenEnable(0)"));
        QCOMPARE(SAMP_FREQ, 3000);
        QCOMPARE(callsOf("setDisplayFreq").back(), std::string("setDisplayFreq(3000, 0)"));
        QCOMPARE(openDescriptors(), 0);
    }

    void windowDestroyedBeneathItsRefusalIsSurvived_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("startText");
        QTest::addColumn<bool>("streamPresent");
        QTest::newRow("loop running") << int(PidStatusOn) << QByteArray("10") << true;
        QTest::newRow("start frequency") << int(PidStatusOff) << QByteArray("0") << true;
        QTest::newRow("stream missing") << int(PidStatusOff) << QByteArray("10") << false;
    }
    void windowDestroyedBeneathItsRefusalIsSurvived()
    {
        QFETCH(int, status);
        QFETCH(QByteArray, startText);
        QFETCH(bool, streamPresent);
        mailbox->pidStatus = status;
        setSweep(startText.constData(), "50", "5");
        setDevicePresent(streamDevicePath, streamPresent);
        MessageBoxes boxes;
        QTimer::singleShot(0, this, [this] { window.reset(); });
        start();
        QVERIFY(!window);
        QCOMPARE(boxes.count(), 1);
        QVERIFY(callsOf("funcGenConfig").empty());
        QCOMPARE(openDescriptors(), 0);
    }

    void programThatQuitsEndsTheSweepAtThatPoint()
    {
        QTimer::singleShot(0, this, [this] { start(); });
        inPause(2, [] { QCoreApplication::exit(7); });
        QCOMPARE(QCoreApplication::exec(), 7);
        QCOMPARE(keys(0).size(), std::size_t(2));
        QCOMPARE(SAMP_FREQ, 1000);
        // The stream, which the window keeps.
        QCOMPARE(openDescriptors(), 1);
        driven_pause::setAction(nullptr);
        start();
        QCOMPARE(keys(1).size(), std::size_t(5));
    }

    void closingTheLastWindowEndsTheSweepAndTheProgram()
    {
        QWidget main;
        main.show();
        QTimer::singleShot(0, this, [this] { start(); });
        inPause(3, [&] { main.close(); });
        QCOMPARE(QCoreApplication::exec(), 0);
        QCOMPARE(keys(0).size(), std::size_t(3));
    }

    void stopEndsTheSweepBeforeTheNextPoint()
    {
        bool startEnabled = true;
        inPause(2, [&] {
            startEnabled = button("StartSweepPushButton")->isEnabled();
            stop();
        });
        SAMP_FREQ = 4000;
        start();
        QVERIFY(!startEnabled);
        QCOMPARE(keys(0).size(), std::size_t(2));
        QCOMPARE(progress(), 40);
        QCOMPARE(SAMP_FREQ, 4000);
        QCOMPARE(callsOf("setDisplayFreq").back(), std::string("setDisplayFreq(4000, 0)"));
        QVERIFY(button("StartSweepPushButton")->isEnabled());
        start();
        QCOMPARE(keys(1).size(), std::size_t(5));
    }

    void stopWhileIdleAfterAStoppedSweepEndsTheNextOne()
    {
        inPause(1, [this] { stop(); });
        start();
        driven_pause::setAction(nullptr);
        stop();
        start();
        QCOMPARE(tree()->topLevelItemCount(), 2);
        QVERIFY(keys(1).empty());
        start();
        QCOMPARE(keys(2).size(), std::size_t(5));
    }

    void stopWhileIdleAfterAFinishedSweepIsForgotten()
    {
        start();
        stop();
        start();
        QCOMPARE(keys(1).size(), std::size_t(5));
    }

    void stopDuringTheLastPointDoesNotReachTheNextSweep()
    {
        inPause(5, [this] { stop(); });
        start();
        QCOMPARE(keys(0).size(), std::size_t(5));
        driven_pause::setAction(nullptr);
        start();
        QCOMPARE(keys(1).size(), std::size_t(5));
    }

    void streamStaysOpenUntilTheNextSweepHasItsOwn()
    {
        setSweep("10", "20", "2");
        start();
        QCOMPARE(openDescriptors(), 1);
        QVERIFY(!operate::lines(callsOf("close")).contains(QStringLiteral("close(/dev/kora_dma_displ)")));
        clearCalls();
        start();
        QStringList streamCalls;
        for (const Call& call : calls()) {
            if (!call.texts.empty() && call.texts[0] == streamDevicePath && call.name != "read")
                streamCalls.append(QString::fromStdString(call.name));
        }
        QCOMPARE(streamCalls, (QStringList{QStringLiteral("open"), QStringLiteral("close")}));
        QCOMPARE(openDescriptors(), 1);
    }

    void streamThatCannotBeOpenedLeavesTheOneBeforeOpen()
    {
        setSweep("10", "20", "2");
        start();
        setDevicePresent(streamDevicePath, false);
        MessageBoxes boxes;
        start();
        QCOMPARE(boxes.count(), 1);
        QCOMPARE(openDescriptors(), 1);
    }

    void streamIsClosedWithTheWindow()
    {
        start();
        window.reset();
        QCOMPARE(operate::lines(callsOf("close")).last(), QStringLiteral("close(/dev/kora_dma_displ)"));
        QCOMPARE(openDescriptors(), 0);
    }

    void startPressedAtTheVeryEndOfASweepStartsTheNextOne()
    {
        setSweep("10", "20", "2");
        // Queued when all is drawn, so that the last turn of events serves it.
        QPushButton* const startButton = button("StartSweepPushButton");
        driven_pause::setAction([&](unsigned long) {
            if (driven_pause::pauses().size() == 1)
                connect(phasePlot(), SIGNAL(afterReplot()), startButton, SLOT(click()), Qt::QueuedConnection);
            else if (driven_pause::pauses().size() == 3)
                disconnect(phasePlot(), SIGNAL(afterReplot()), startButton, SLOT(click()));
        });
        start();
        QCOMPARE(tree()->topLevelItemCount(), 2);
        QCOMPARE(keys(1).size(), std::size_t(2));
        QVERIFY(button("StartSweepPushButton")->isEnabled());
        start();
        QCOMPARE(tree()->topLevelItemCount(), 3);
    }

    void failingGeneratorIsIgnored()
    {
        for (const char* function : {"funcGenConfig", "funcGenEnable", "getPIDoutSel", "getBPMselector"})
            fail(function);
        MessageBoxes boxes;
        start();
        QCOMPARE(boxes.count(), 0);
        QCOMPARE(keys(0).size(), std::size_t(5));
    }

    void garbageInTheStreamIsSurvived()
    {
        answers().fillBlock = [](DisplayRecord* block, int count) {
            std::memset(static_cast<void*>(block), 0xff, std::size_t(count) * sizeof *block);
        };
        window->showTool();
        QCOMPARE(line("offsetspinBox")->text(), QStringLiteral("nan"));
        start();
        QCOMPARE(keys(0).size(), std::size_t(5));
        QVERIFY(std::isnan(values(magnitudePlot(), 0).at(4)));
        operate::press(button("pushButtonAutoscale"));
    }
};

QTEST_MAIN(FrequencyEndsTest)
#include "FrequencyEndsTest.moc"
