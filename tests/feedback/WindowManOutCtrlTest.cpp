#include "feedback/WindowManOutCtrl.h"

#include "double/KoralinkDouble.h"
#include "support/Operator.h"
#include "support/World.h"

#include <QCheckBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QLineEdit>
#include <QSlider>
#include <QtTest>

#include <fcntl.h>
#include <memory>

using namespace koralink_double;
using operate::find;

class WindowManOutCtrlTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<World> world;
    std::unique_ptr<WindowManOutCtrl> window;

    QSlider* slider(int channel)
    {
        return find<QSlider>(window.get(), QByteArray("ch" + QByteArray::number(channel) + "slider").constData());
    }
    QDoubleSpinBox* box(int channel)
    {
        return find<QDoubleSpinBox>(window.get(), QByteArray("boxCh" + QByteArray::number(channel)).constData());
    }
    QCheckBox* manual() { return find<QCheckBox>(window.get(), "checboxEnableMan"); }
    static QStringList writes() { return operate::lines(callsOf("ioctl")); }
    static QString record(const char* volts)
    {
        return QStringLiteral("ioctl(/dev/kora_anvolt0, %1, 1)").arg(QLatin1String(volts));
    }

private slots:
    void init()
    {
        koralink_double::reset();
        world = std::make_unique<World>();
        window = std::make_unique<WindowManOutCtrl>(nullptr);
    }
    void cleanup()
    {
        window.reset();
        world.reset();
    }

    void formHasARowPerChannel()
    {
        QCOMPARE(window->windowTitle(), QStringLiteral("Manual Output Control"));
        QCOMPARE(manual()->text(), QStringLiteral("Enable Manual Control"));
        QCOMPARE(find<QLabel>(window.get(), "label")->text(), QStringLiteral("Ch1 output"));
        for (int channel = 1; channel <= 4; ++channel) {
            QCOMPARE(slider(channel)->orientation(), Qt::Vertical);
            QCOMPARE(slider(channel)->tickPosition(), QSlider::TicksRight);
            QCOMPARE(slider(channel)->minimum(), -2);
            QCOMPARE(slider(channel)->maximum(), 12);
            QCOMPARE(slider(channel)->value(), 0);
            QCOMPARE(box(channel)->decimals(), 5);
            QCOMPARE(box(channel)->minimum(), 0.0);
            QCOMPARE(box(channel)->maximum(), 12.0);
            QCOMPARE(box(channel)->singleStep(), 0.1);
            QCOMPARE(box(channel)->value(), 0.0);
        }
    }

    void channelsStandBelowEachOtherEachInARowOfItsOwn()
    {
        window->showWindow();
        QVERIFY(QTest::qWaitForWindowExposed(window.get()));
        const auto rectOf = [](const QWidget* widget) {
            return QRect(widget->mapTo(widget->window(), QPoint()), widget->size());
        };
        int above = rectOf(manual()).bottom();
        for (int channel = 1; channel <= 4; ++channel) {
            const QByteArray name = channel == 1 ? QByteArray("label") : "label_" + QByteArray::number(channel);
            const auto* label = find<QLabel>(window.get(), name.constData());
            QCOMPARE(label->text(), QStringLiteral("Ch%1 output").arg(channel));
            const QRect row[] = {rectOf(label), rectOf(slider(channel)), rectOf(box(channel))};
            for (int i = 0; i < 3; ++i) {
                QVERIFY(row[i].top() > above);
                // The centres of what stands in a row are at one height.
                QVERIFY(qAbs(row[i].center().y() - row[1].center().y()) <= 2);
                QVERIFY(i == 0 || row[i].left() > row[i - 1].right());
            }
            above = row[1].bottom();
        }
    }

    void boxesTellThatTheyDoNotShowThePresentOutputs()
    {
        for (int channel = 1; channel <= 4; ++channel) {
            QVERIFY(box(channel)->toolTip().contains(QLatin1String("does not show the present output")));
            QVERIFY(box(channel)->toolTip().contains(QLatin1String("All four are written together")));
        }
    }

    void deviceIsOpenForTheLifeOfTheWindow()
    {
        QCOMPARE(calls().size(), std::size_t(1));
        QCOMPARE(calls()[0].name, std::string("open"));
        QCOMPARE(calls()[0].texts[0], std::string("/dev/kora_anvolt0"));
        QCOMPARE(int(calls()[0].arguments[0]) & (O_ACCMODE | O_SYNC), O_RDWR | O_SYNC);
        window->showWindow();
        window->close();
        QCOMPARE(openDescriptors(), 1);
        window.reset();
        QCOMPARE(openDescriptors(), 0);
    }

    void showTicksTheBoxWhileTheOutputsAreManual()
    {
        answers().outputMux = 0;
        window->showWindow();
        QVERIFY(manual()->isChecked());
        QCOMPARE(operate::lines(commands()), QStringList{QStringLiteral("setOutputMux(0)")});
        answers().outputMux = 1;
        clearCalls();
        window->showWindow();
        QVERIFY(!manual()->isChecked());
        QCOMPARE(operate::lines(commands()), QStringList{QStringLiteral("setOutputMux(1)")});
        clearCalls();
        window->showWindow();
        QVERIFY(commands().empty());
    }

    void sourceThatCannotBeReadLeavesTheOutputsWithTheLoops()
    {
        fail("getOutputMux");
        window->showWindow();
        QVERIFY(!manual()->isChecked());
        QVERIFY(commands().empty());
    }

    void tickingTakesTheOutputsAndUntickingGivesThemBack()
    {
        window->showWindow();
        manual()->click();
        manual()->click();
        const QStringList expected = {QStringLiteral("setOutputMux(0)"), QStringLiteral("setOutputMux(1)")};
        QCOMPARE(operate::lines(commands()), expected);
    }

    void controlsWriteAlsoWithTheBoxUnticked()
    {
        window->showWindow();
        QVERIFY(!manual()->isChecked());
        QVERIFY(slider(2)->isEnabled());
        QVERIFY(box(2)->isEnabled());
        box(2)->setValue(0.5);
        QCOMPARE(writes(), QStringList{record("0, 0.5, 0, 0")});
    }

    void closingLeavesTheSourceAndTheVoltages()
    {
        window->showWindow();
        manual()->click();
        slider(1)->setValue(5);
        clearCalls();
        window->close();
        window.reset();
        QVERIFY(commands().empty());
        QCOMPARE(int(answers().outputMux), 0);
        QCOMPARE(answers().lastOutputs.volts[0], 5.0);
    }

    void allFourChannelsAreWrittenTogether()
    {
        slider(1)->setValue(1);
        slider(2)->setValue(2);
        slider(3)->setValue(3);
        clearCalls();
        slider(4)->setValue(4);
        // The box answers the slider, and both write.
        const QStringList expected = {record("1, 2, 3, 4"), record("1, 2, 3, 4")};
        QCOMPARE(writes(), expected);
    }

    void sliderDraggedBelowZeroJumpsBackToZero()
    {
        slider(1)->setValue(1);
        QCOMPARE(box(1)->value(), 1.0);
        slider(1)->setValue(-1);
        QCOMPARE(box(1)->value(), 0.0);
        QCOMPARE(slider(1)->value(), 0);
        QCOMPARE(writes().last(), record("0, 0, 0, 0"));
    }

    void sliderBelowZeroStaysWhileTheBoxIsAtZero()
    {
        slider(1)->setValue(-1);
        QCOMPARE(slider(1)->value(), -1);
        QCOMPARE(box(1)->value(), 0.0);
        QCOMPARE(writes(), QStringList{record("0, 0, 0, 0")});
    }

    void fractionIsLostWhenTheSliderMoves()
    {
        slider(1)->setValue(2);
        clearCalls();
        box(1)->setValue(3.7);
        QCOMPARE(slider(1)->value(), 3);
        QCOMPARE(box(1)->value(), 3.0);
        // Written only once the controls have settled: 3.7 V never goes out.
        QCOMPARE(writes(), QStringList({record("3, 0, 0, 0"), record("3, 0, 0, 0"), record("3, 0, 0, 0")}));
    }

    void fractionStaysWhenTheSliderIsThereAlready()
    {
        slider(1)->setValue(3);
        clearCalls();
        box(1)->setValue(3.9);
        QCOMPARE(slider(1)->value(), 3);
        QCOMPARE(box(1)->value(), 3.9);
        QCOMPARE(writes(), QStringList{record("3.9, 0, 0, 0")});
    }

    void typedFractionFollowsTheSameRule()
    {
        window->showWindow();
        QVERIFY(QTest::qWaitForWindowExposed(window.get()));
        slider(1)->setValue(2);
        box(1)->selectAll();
        QTest::keyClicks(box(1), QStringLiteral("3.7"));
        QCOMPARE(slider(1)->value(), 3);
        QCOMPARE(box(1)->value(), 3.0);
        box(1)->selectAll();
        QTest::keyClicks(box(1), QStringLiteral("3.9"));
        QCOMPARE(box(1)->value(), 3.9);
        QTest::keyClick(box(1), Qt::Key_Return);
        QVERIFY(window->isVisible());
    }

    void twelveVoltsIsTheTopOfBoth()
    {
        box(3)->setValue(12.0);
        QCOMPARE(slider(3)->value(), 12);
        slider(3)->setValue(13);
        QCOMPARE(slider(3)->value(), 12);
        box(3)->setValue(12.1);
        QCOMPARE(box(3)->value(), 12.0);
        QCOMPARE(writes().last(), record("0, 0, 12, 0"));
    }

    void fractionInAnEarlierChannelPutsALaterSliderBack()
    {
        slider(1)->setValue(3);
        box(1)->setValue(3.5);
        slider(2)->setValue(5);
        QCOMPARE(box(1)->value(), 3.0);
        QCOMPARE(slider(2)->value(), 0);
        QCOMPARE(box(2)->value(), 0.0);
        QCOMPARE(writes().last(), record("3, 0, 0, 0"));
    }

    void missingDeviceIsSilent()
    {
        window.reset();
        setDevicePresent("/dev/kora_anvolt0", false);
        clearCalls();
        window = std::make_unique<WindowManOutCtrl>(nullptr);
        window->showWindow();
        slider(1)->setValue(4);
        QCOMPARE(box(1)->value(), 4.0);
        QVERIFY(writes().isEmpty());
    }

    void failingSourceLeavesTheBoxAsTheOperatorSetIt()
    {
        window->showWindow();
        fail("setOutputMux");
        manual()->click();
        QVERIFY(manual()->isChecked());
    }
};

QTEST_MAIN(WindowManOutCtrlTest)
#include "WindowManOutCtrlTest.moc"
