#include "app/Globals.h"
#include "double/KoralinkDouble.h"
#include "feedback/WidgetFeedbackControl.h"
#include "hardware/MailboxComm.h"
#include "support/MessageBoxes.h"
#include "support/Operator.h"
#include "support/ScratchSettings.h"
#include "support/World.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QSignalSpy>
#include <QToolBox>
#include <QWheelEvent>
#include <QtTest>

#include <atomic>
#include <memory>
#include <thread>

using namespace koralink_double;
using operate::find;

namespace {

constexpr const char* loops[4] = {"Xlf", "Xhf", "Ylf", "Yhf"};
constexpr const char* outputKeys[4] = {"Beamline/DAC_posXlf", "Beamline/DAC_posXhf", "Beamline/DAC_posYlf",
                                       "Beamline/DAC_posYhf"};

struct Row
{
    int mask, item;
    bool ticked[4];
    bool setpointX, setpointY;
};

// The library's numbers of the loops that regulate, written out.
constexpr Row rows[] = {
    {1, 0, {true, false, false, false}, true, false},  {3, 1, {true, true, false, false}, true, false},
    {5, 2, {true, false, true, false}, true, true},    {9, 3, {true, false, false, true}, true, false},
    {7, 4, {true, true, true, false}, true, true},     {11, 5, {true, true, false, true}, true, false},
    {13, 6, {true, false, true, true}, true, true},    {15, 7, {true, true, true, true}, true, true},
    {2, 8, {false, true, false, false}, true, false},  {6, 9, {false, true, true, false}, true, true},
    {10, 10, {false, true, false, true}, true, false}, {14, 11, {false, true, true, true}, true, true},
    {4, 12, {false, false, true, false}, false, true}, {12, 13, {false, false, true, true}, true, true},
    {8, 14, {false, false, false, true}, true, false},
};

} // namespace

/// Which loops regulate, from which monitor, onto which output.
class FeedbackConfigurationTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<World> world;
    std::unique_ptr<WidgetFeedbackControl> panel;

    template <typename T>
    T* ofLoop(const char* pattern, int loop) const
    {
        return find<T>(panel.get(), qPrintable(QString::fromLatin1(pattern).arg(QLatin1String(loops[loop]))));
    }
    QCheckBox* tick(int loop) const { return ofLoop<QCheckBox>("conf%1checkbox", loop); }
    QComboBox* output(int loop) const { return ofLoop<QComboBox>("position%1ComboBox", loop); }
    QComboBox* source(int loop) const { return ofLoop<QComboBox>("comboBoxPidSource%1", loop); }
    QDoubleSpinBox* field(const char* name) const { return find<QDoubleSpinBox>(panel.get(), name); }
    void pressUpdateConfig() { operate::press(find<QPushButton>(panel.get(), "updateConfButton")); }
    void setTicks(int mask)
    {
        for (int loop = 0; loop < 4; ++loop)
            tick(loop)->setChecked((mask >> loop & 1) != 0);
    }
    int ticks() const
    {
        int mask = 0;
        for (int loop = 0; loop < 4; ++loop)
            mask |= int(tick(loop)->isChecked()) << loop;
        return mask;
    }
    void open()
    {
        userLevel = 1;
        panel = std::make_unique<WidgetFeedbackControl>();
        clearCalls();
    }
    void addRows()
    {
        QTest::addColumn<int>("index");
        for (int i = 0; i < 15; ++i)
            QTest::newRow(qPrintable(QStringLiteral("item %1").arg(rows[i].item))) << i;
    }

private slots:
    void init()
    {
        koralink_double::reset();
        world = std::make_unique<World>();
        open();
    }
    void cleanup()
    {
        panel.reset();
        world.reset();
    }

    void ticksAreSentAsTheirItem_data() { addRows(); }
    void ticksAreSentAsTheirItem()
    {
        QFETCH(int, index);
        const Row& row = rows[index];
        for (int loop = 0; loop < 4; ++loop)
            tick(loop)->setChecked(row.ticked[loop]);
        pressUpdateConfig();
        QCOMPARE(operate::lines(callsOf("setPIDconf")), QStringList{QStringLiteral("setPIDconf(%1)").arg(row.item)});
        QCOMPARE(ticks(), row.mask);
        QCOMPARE(field("posXDoubleSpinBox")->isEnabled(), row.setpointX);
        QCOMPARE(field("posYDoubleSpinBox")->isEnabled(), row.setpointY);
    }

    void itemIsShownAsItsTicks_data() { addRows(); }
    void itemIsShownAsItsTicks()
    {
        QFETCH(int, index);
        const Row& row = rows[index];
        setTicks(~row.mask);
        QSignalSpy changed(panel.get(), SIGNAL(somethingChanged()));
        panel->confChanged(row.item);
        for (int loop = 0; loop < 4; ++loop)
            QCOMPARE(tick(loop)->isChecked(), row.ticked[loop]);
        QCOMPARE(field("posXDoubleSpinBox")->isEnabled(), row.setpointX);
        QCOMPARE(field("posYDoubleSpinBox")->isEnabled(), row.setpointY);
        QCOMPARE(changed.count(), 1);
        QCOMPARE(commands().size(), std::size_t(0));
    }

    void itemsThatNameNoLoopsDisableBothSetpointsAndLeaveTheTicks_data()
    {
        QTest::addColumn<int>("item");
        for (const int item : {15, 16, 127, -1, -128})
            QTest::newRow(qPrintable(QString::number(item))) << item;
    }
    void itemsThatNameNoLoopsDisableBothSetpointsAndLeaveTheTicks()
    {
        QFETCH(int, item);
        panel->confChanged(6);
        QSignalSpy changed(panel.get(), SIGNAL(somethingChanged()));
        panel->confChanged(item);
        QCOMPARE(ticks(), 13);
        QVERIFY(!field("posXDoubleSpinBox")->isEnabled());
        QVERIFY(!field("posYDoubleSpinBox")->isEnabled());
        QCOMPARE(changed.count(), 1);
    }

    void noLoopTickedSendsThatNoneRegulates()
    {
        setTicks(0);
        pressUpdateConfig();
        QCOMPARE(operate::lines(callsOf("setPIDconf")), QStringList{QStringLiteral("setPIDconf(15)")});
        QCOMPARE(ticks(), 0);
        QVERIFY(!field("posXDoubleSpinBox")->isEnabled());
        QVERIFY(!field("posYDoubleSpinBox")->isEnabled());
    }

    void updateConfigSendsOutputsThenSourcesThenLoops()
    {
        for (int loop = 0; loop < 4; ++loop) {
            output(loop)->setCurrentIndex(3 - loop);
            source(loop)->setCurrentIndex(loop == 0 || loop == 3 ? 1 : 0);
        }
        setTicks(15);
        QSignalSpy selector(panel.get(), SIGNAL(BPMselectorChanged()));
        QSignalSpy changed(panel.get(), SIGNAL(somethingChanged()));
        pressUpdateConfig();
        QCOMPARE(operate::lines(commands()),
                 (QStringList{QStringLiteral("setPIDoutSel(3, 2, 1, 0)"), QStringLiteral("setBPMselector(1, 0, 0, 1)"),
                              QStringLiteral("setPIDconf(7)")}));
        for (int loop = 0; loop < 4; ++loop)
            QCOMPARE(scratch_settings::value(outputKeys[loop]).toInt(), 3 - loop);
        QCOMPARE(bpmSelXlf, 1);
        QCOMPARE(bpmSelXhf, 0);
        QCOMPARE(bpmSelYlf, 0);
        QCOMPARE(bpmSelYhf, 1);
        QCOMPARE(selector.count(), 1);
        // Once by the configuration shown, once by the press
        QCOMPARE(changed.count(), 2);
    }

    void eachSourceGoesToItsOwnLoop_data()
    {
        QTest::addColumn<int>("loop");
        for (int loop = 0; loop < 4; ++loop)
            QTest::newRow(loops[loop]) << loop;
    }
    void eachSourceGoesToItsOwnLoop()
    {
        QFETCH(int, loop);
        source(loop)->setCurrentIndex(1);
        pressUpdateConfig();
        const int selectors[4] = {bpmSelXlf, bpmSelXhf, bpmSelYlf, bpmSelYhf};
        for (int i = 0; i < 4; ++i) {
            QCOMPARE(selectors[i], int(i == loop));
            QCOMPARE(answers().bpmSel[i], int(i == loop));
        }
    }

    void sourcesThatWereChosenAreSentWhateverThePollWritesMeanwhile()
    {
        std::atomic<bool> polling{true};
        std::thread poll([&] {
            while (polling) {
                for (int* selector : {&bpmSelXlf, &bpmSelXhf, &bpmSelYlf, &bpmSelYhf})
                    *static_cast<volatile int*>(selector) = 1;
            }
        });
        for (int press = 0; press < 50; ++press)
            pressUpdateConfig();
        polling = false;
        poll.join();
        const QStringList sent = operate::lines(callsOf("setBPMselector"));
        QCOMPARE(sent.size(), 50);
        QCOMPARE(sent.count(QStringLiteral("setBPMselector(0, 0, 0, 0)")), 50);
    }

    void failingLibraryCallsDoNotStopTheUpdate()
    {
        for (const char* function : {"setPIDoutSel", "setBPMselector", "setPIDconf"})
            fail(function);
        output(0)->setCurrentIndex(1);
        output(1)->setCurrentIndex(0);
        source(2)->setCurrentIndex(1);
        setTicks(4);
        pressUpdateConfig();
        QCOMPARE(operate::lines(commands()),
                 (QStringList{QStringLiteral("setPIDoutSel(1, 0, 2, 3)"), QStringLiteral("setBPMselector(0, 0, 1, 0)"),
                              QStringLiteral("setPIDconf(12)")}));
        QCOMPARE(scratch_settings::value("Beamline/DAC_posXlf").toInt(), 1);
        QCOMPARE(bpmSelYlf, 1);
        QVERIFY(!field("posXDoubleSpinBox")->isEnabled());
    }

    void updateIsRefusedWhileThePidRuns_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<bool>("refused");
        QTest::newRow("off") << 0 << false;
        QTest::newRow("fault") << 1 << false;
        QTest::newRow("beam off") << 2 << true;
        QTest::newRow("on") << 3 << true;
    }
    void updateIsRefusedWhileThePidRuns()
    {
        QFETCH(int, status);
        QFETCH(bool, refused);
        mailbox->pidStatus = status;
        source(0)->setCurrentIndex(1);
        setTicks(2);
        MessageBoxes boxes;
        QSignalSpy changed(panel.get(), SIGNAL(somethingChanged()));
        pressUpdateConfig();
        QCOMPARE(boxes.count(), int(refused));
        QCOMPARE(commands().empty(), refused);
        QCOMPARE(bpmSelXlf, int(!refused));
        QCOMPARE(changed.count(), refused ? 0 : 2);
        QCOMPARE(scratch_settings::value(outputKeys[0]).isValid(), !refused);
        if (refused) {
            const MessageBoxes::Box& box = boxes.boxes().first();
            QCOMPARE(box.title, QStringLiteral("PID running ..."));
            QCOMPARE(box.text, QStringLiteral("Configuration can be change only if the PID is stopped."));
            QCOMPARE(box.icon, QMessageBox::Warning);
            QCOMPARE(box.buttons, QMessageBox::Ok);
            QVERIFY(!box.hasParent);
            QCOMPARE(ticks(), 2);
        }
    }

    void twoLoopsOnOneOutputAreRefusedAlsoUnticked_data()
    {
        QTest::addColumn<int>("first");
        QTest::addColumn<int>("second");
        for (int first = 0; first < 4; ++first) {
            for (int second = first + 1; second < 4; ++second)
                QTest::newRow(qPrintable(QStringLiteral("%1 %2").arg(first).arg(second))) << first << second;
        }
    }
    void twoLoopsOnOneOutputAreRefusedAlsoUnticked()
    {
        QFETCH(int, first);
        QFETCH(int, second);
        output(first)->setCurrentIndex(output(second)->currentIndex());
        source(0)->setCurrentIndex(1);
        setTicks(15 & ~(1 << first));
        MessageBoxes boxes;
        QSignalSpy selector(panel.get(), SIGNAL(BPMselectorChanged()));
        pressUpdateConfig();
        QCOMPARE(boxes.count(), 1);
        const MessageBoxes::Box& box = boxes.boxes().first();
        QCOMPARE(box.title, QStringLiteral("DAC outputs not unique"));
        QCOMPARE(box.text, QStringLiteral("DAC outputs must be unique"));
        QCOMPARE(box.icon, QMessageBox::Warning);
        QCOMPARE(box.buttons, QMessageBox::Ok);
        QVERIFY(!box.hasParent);
        QVERIFY(commands().empty());
        QCOMPARE(bpmSelXlf, 0);
        QCOMPARE(selector.count(), 0);
        QVERIFY(!scratch_settings::value(outputKeys[0]).isValid());
        QCOMPARE(ticks(), 15 & ~(1 << first));
    }

    void storedOutputsAreShownAndNothingIsSent()
    {
        for (int loop = 0; loop < 4; ++loop)
            scratch_settings::setValue(outputKeys[loop], 3 - loop);
        answers().bpmSel[0] = bpmSelXlf = 1;
        clearCalls();
        panel = std::make_unique<WidgetFeedbackControl>();
        QVERIFY(calls().empty());
        for (int loop = 0; loop < 4; ++loop) {
            QCOMPARE(output(loop)->currentIndex(), 3 - loop);
            // Never loaded: they show the first monitor until the operator changes them.
            QCOMPARE(source(loop)->currentIndex(), 0);
        }
    }

    void withoutStoredOutputsEachLoopHasItsOwn()
    {
        for (int loop = 0; loop < 4; ++loop)
            QCOMPARE(output(loop)->currentIndex(), loop);
    }

    void storedNumbersThatAreNoOutputsAreNotShown()
    {
        scratch_settings::setValue(outputKeys[1], 7);
        scratch_settings::setValue(outputKeys[2], -1);
        open();
        QCOMPARE(output(1)->currentIndex(), 0);
        QCOMPARE(output(2)->currentIndex(), 0);
        MessageBoxes boxes;
        pressUpdateConfig();
        QCOMPARE(boxes.count(), 1);
        QVERIFY(commands().empty());
    }

    void wheelOverAFieldScrollsThePageUnlessTheFieldHasTheFocus()
    {
        find<QToolBox>(panel.get(), "toolBox")->setCurrentIndex(1);
        panel->resize(400, 250);
        panel->show();
        QVERIFY(QTest::qWaitForWindowExposed(panel.get()));
        // Without a window manager nobody else does.
        QApplication::setActiveWindow(panel.get());
        field("posXDoubleSpinBox")->setEnabled(true);
        QWidget* page = find<QWidget>(panel.get(), "pageControl");
        QScrollBar* bar = nullptr;
        for (QWidget* around = page->parentWidget(); around && !bar; around = around->parentWidget()) {
            if (auto* area = qobject_cast<QScrollArea*>(around))
                bar = area->verticalScrollBar();
        }
        QVERIFY(bar && bar->maximum() > 0);
        const auto wheelDown = [](QWidget* widget) {
            const QPointF centre = widget->rect().center();
            QWheelEvent event(centre, widget->mapToGlobal(centre.toPoint()), QPoint(), QPoint(0, -120), Qt::NoButton,
                              Qt::NoModifier, Qt::NoScrollPhase, false);
            // As from the mouse: others are not passed on.
            QSpontaneKeyEvent::setSpontaneous(&event);
            qApp->notify(widget, &event);
        };
        QWidget* const fields[] = {output(0), source(3), field("posXDoubleSpinBox")};
        for (QWidget* each : fields) {
            bar->setValue(0);
            wheelDown(each);
            QVERIFY(bar->value() > 0);
        }
        QCOMPARE(output(0)->currentIndex(), 0);
        QCOMPARE(source(3)->currentIndex(), 0);
        QCOMPARE(field("posXDoubleSpinBox")->value(), 0.0);
        for (QWidget* each : fields) {
            each->setFocus();
            wheelDown(each);
        }
        QCOMPARE(output(0)->currentIndex(), 1);
        QCOMPARE(source(3)->currentIndex(), 1);
        QCOMPARE(field("posXDoubleSpinBox")->value(), -0.01);
    }

    void choicesHaveTheirTexts()
    {
        const char* captions[4] = {"Position X (LF)", "Position X (HF)", "Position Y (LF)", "Position Y (HF)"};
        for (int loop = 0; loop < 4; ++loop) {
            QCOMPARE(tick(loop)->text(), QString::fromLatin1(captions[loop]));
            QCOMPARE(output(loop)->count(), 4);
            for (int i = 0; i < 4; ++i)
                QCOMPARE(output(loop)->itemText(i), QStringLiteral("CH%1").arg(i + 1));
            QCOMPARE(source(loop)->count(), 2);
            QCOMPARE(source(loop)->itemText(0), QStringLiteral("BPM1"));
            QCOMPARE(source(loop)->itemText(1), QStringLiteral("BPM2"));
        }
    }

    void aChoiceThatWasNotSentIsBoldUntilUpdateConfig()
    {
        for (int loop = 0; loop < 4; ++loop)
            scratch_settings::setValue(outputKeys[loop], loop);
        open();
        panel->confChanged(7);
        pressUpdateConfig();
        QWidget* const changed[] = {tick(1), output(0), output(1), source(2)};
        tick(1)->setChecked(false);
        output(0)->setCurrentIndex(1);
        output(1)->setCurrentIndex(0);
        source(2)->setCurrentIndex(1);
        for (const QWidget* field : changed)
            QVERIFY(field->font().bold());
        QVERIFY(!output(2)->font().bold());

        // Refused: nothing was sent.
        mailbox->pidStatus = PidStatusOn;
        const MessageBoxes boxes;
        pressUpdateConfig();
        for (const QWidget* field : changed)
            QVERIFY(field->font().bold());
        mailbox->pidStatus = PidStatusOff;
        pressUpdateConfig();
        for (const QWidget* field : changed)
            QVERIFY(!field->font().bold());
    }
};

QTEST_MAIN(FeedbackConfigurationTest)
#include "FeedbackConfigurationTest.moc"
