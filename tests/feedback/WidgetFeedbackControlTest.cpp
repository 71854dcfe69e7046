#include "feedback/WidgetFeedbackControl.h"
#include "app/Globals.h"
#include "double/KoralinkDouble.h"
#include "hardware/MailboxComm.h"
#include "support/Contrast.h"
#include "support/Operator.h"
#include "support/QLed.h"
#include "support/World.h"

#include <QComboBox>
#include <QDoubleSpinBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>
#include <QSignalSpy>
#include <QSvgRenderer>
#include <QTimer>
#include <QToolBox>
#include <QtTest>

#include <memory>

using namespace koralink_double;
using operate::find;

namespace {

QImage iconImage(const QIcon& icon)
{
    return icon.pixmap(24, 24).toImage();
}

} // namespace

/// What the panel shows: statistics, state of the loops, access level.
class WidgetFeedbackControlTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<World> world;
    std::unique_ptr<WidgetFeedbackControl> panel;

    QString text(const char* field) const { return find<QLineEdit>(panel.get(), field)->text(); }
    void tick() { operate::fireTimers(panel.get()); }

private slots:
    void init()
    {
        koralink_double::reset();
        world = std::make_unique<World>();
        userLevel = 1;
        panel = std::make_unique<WidgetFeedbackControl>();
    }
    void cleanup()
    {
        panel.reset();
        world.reset();
    }

    void statisticsAreShownInTheirFormats_data()
    {
        QTest::addColumn<QString>("field");
        QTest::addColumn<QString>("shown");
        // Block of BPM1 from 1.23456789, of BPM2 from 2.3456789, scale X 2 and 20, scale Y 3 and 30
        QTest::newRow("1") << "posXMeanLineEdit"
                           << "2.469 um";
        QTest::newRow("2") << "posXStdLineEdit"
                           << "4.469136 um";
        QTest::newRow("3") << "posXStdFiltLineEdit"
                           << "6.469136 um";
        QTest::newRow("4") << "posYMeanLineEdit"
                           << "12.70370 um";
        QTest::newRow("5") << "posYStdLineEdit"
                           << "15.70370 um";
        QTest::newRow("6") << "posYStdFiltLineEdit"
                           << "18.703704 um";
        QTest::newRow("7") << "i0MeanLineEdit"
                           << "1.235e-06 A";
        QTest::newRow("8") << "i0StdLineEdit"
                           << "1.235e-09 A";
        QTest::newRow("9") << "i0StdFiltLineEdit"
                           << "1.235e-10 A";
        QTest::newRow("10") << "posXMeanLineEdit_2"
                            << "46.914 um";
        QTest::newRow("11") << "posXStdLineEdit_2"
                            << "66.913578 um";
        QTest::newRow("12") << "posXStdFiltLineEdit_2"
                            << "86.913578 um";
        QTest::newRow("13") << "posYMeanLineEdit_2"
                            << "160.37037 um";
        QTest::newRow("14") << "posYStdLineEdit_2"
                            << "190.37037 um";
        QTest::newRow("15") << "posYStdFiltLineEdit_2"
                            << "220.370367 um";
        QTest::newRow("16") << "i0MeanLineEdit_2"
                            << "2.346e-06 A";
        QTest::newRow("17") << "i0StdLineEdit_2"
                            << "2.346e-09 A";
        QTest::newRow("18") << "i0StdFiltLineEdit_2"
                            << "2.34568e-10 A";
    }
    void statisticsAreShownInTheirFormats()
    {
        QFETCH(QString, field);
        bpmScaleX[0] = 2.0;
        bpmScaleX[1] = 20.0;
        bpmScaleY[0] = 3.0;
        bpmScaleY[1] = 30.0;
        double first = 1.23456789;
        for (BPMStatsBlock& block : answers().stats.bpm) {
            block = {first,       first + 1.0,  first + 2.0,  first + 3.0,  first + 4.0,
                     first + 5.0, first * 1e-6, first * 1e-9, first * 1e-10};
            first = 2.3456789;
        }
        answers().sfp[0].deviceId = answers().sfp[1].deviceId = 0x2101;
        mailbox->refreshData();
        tick();
        QTEST(text(qPrintable(field)), "shown");
    }

    void onlyTheMonitorsOfPresentDevicesAreRefreshed_data()
    {
        QTest::addColumn<int>("mask");
        QTest::addColumn<bool>("first");
        QTest::addColumn<bool>("second");
        QTest::newRow("none") << 0 << false << false;
        QTest::newRow("first") << 1 << true << false;
        QTest::newRow("second") << 2 << false << true;
        QTest::newRow("both") << 3 << true << true;
    }
    void onlyTheMonitorsOfPresentDevicesAreRefreshed()
    {
        QFETCH(int, mask);
        mailbox->nrIonBars = 3;
        tick();
        mailbox->stats.bpm[0].posXMean = mailbox->stats.bpm[1].posXMean = 5.0;
        mailbox->nrIonBars = mask;
        tick();
        QFETCH(bool, first);
        QCOMPARE(text("posXMeanLineEdit"), first ? QStringLiteral("5.000 um") : QStringLiteral("0.000 um"));
        QFETCH(bool, second);
        QCOMPARE(text("posXMeanLineEdit_2"), second ? QStringLiteral("5.000 um") : QStringLiteral("0.000 um"));
    }

    void statisticsCannotBeEdited()
    {
        int fields = 0;
        for (const QLineEdit* field : find<QWidget>(panel.get(), "pageStatistics")->findChildren<QLineEdit*>()) {
            QVERIFY(field->isReadOnly());
            QVERIFY(!field->isEnabled());
            ++fields;
        }
        QCOMPARE(fields, 18);
    }

    void statusIsShownByLampAndText_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("shown");
        QTest::addColumn<int>("color");
        QTest::addColumn<QString>("button");
        QTest::newRow("off") << 0 << "Feedback OFF" << 3 << "Enable Feedback";
        QTest::newRow("fault") << 1 << "FAULT: Out of ROC" << 0 << "Disable Feedback";
        QTest::newRow("beam off") << 2 << "Beam OFF" << 5 << "Disable Feedback";
        QTest::newRow("on") << 3 << "Feedback ON" << 1 << "Disable Feedback";
    }
    void statusIsShownByLampAndText()
    {
        QFETCH(int, status);
        QFETCH(int, color);
        QFETCH(QString, button);
        answers().pidStatus = PID_Status_Type(status);
        mailbox->refreshData();
        tick();
        const auto* led = find<QLed>(panel.get(), "heartbeatLed");
        QCOMPARE(int(led->offColor()), color);
        QCOMPARE(led->value(), false);
        QCOMPARE(led->shape(), QLed::Rounded);
        QTEST(find<QLabel>(panel.get(), "heartbeatLabel")->text(), "shown");
        const auto* feedback = find<QPushButton>(panel.get(), "buttonFdbk");
        QCOMPARE(feedback->text(), button);
        QCOMPARE(feedback->isChecked(), false);
        const auto icon = status == 0 ? QStyle::SP_MediaPlay : QStyle::SP_MediaStop;
        QCOMPARE(iconImage(feedback->icon()), iconImage(panel->style()->standardIcon(icon)));
        QCOMPARE(feedback->iconSize(), QSize(24, 24));
    }

    void unknownStatusLeavesLampAndText()
    {
        panel->updateHeartbeat(PidStatusBeamOff);
        panel->updateHeartbeat(PID_Status_Type(4));
        panel->updateHeartbeat(PID_Status_Type(-1));
        QCOMPARE(find<QLed>(panel.get(), "heartbeatLed")->offColor(), QLed::Purple);
        QCOMPARE(find<QLabel>(panel.get(), "heartbeatLabel")->text(), QStringLiteral("Beam OFF"));
    }

    void feedbackButtonSendsItsCheckedState()
    {
        auto* button = find<QPushButton>(panel.get(), "buttonFdbk");
        operate::press(button);
        QCOMPARE(operate::lines(commands()), QStringList{QStringLiteral("setFBenable(1)")});
        // Its text follows the status alone, which the poll has not seen change.
        QCOMPARE(button->text(), QStringLiteral("Enable Feedback"));
        operate::press(button);
        QCOMPARE(operate::lines(callsOf("setFBenable")),
                 (QStringList{QStringLiteral("setFBenable(1)"), QStringLiteral("setFBenable(0)")}));
    }

    void changeOfStatusFromElsewhereSendsNothing()
    {
        operate::press(find<QPushButton>(panel.get(), "buttonFdbk"));
        clearCalls();
        mailbox->pidStatus = PidStatusOff;
        tick();
        QVERIFY(find<QPushButton>(panel.get(), "buttonFdbk")->isChecked());
        QCOMPARE(commands().size(), std::size_t(0));
    }

    void controllersCanBeResetWhileTheyRun()
    {
        mailbox->pidStatus = PidStatusOn;
        operate::press(find<QPushButton>(panel.get(), "resetPIDbutton"));
        QCOMPARE(operate::lines(commands()), QStringList{QStringLiteral("setCtrlReset()")});
    }

    void fieldsAreRefreshedOnceASecond()
    {
        const auto timers = panel->findChildren<QTimer*>(QString(), Qt::FindDirectChildrenOnly);
        QCOMPARE(timers.size(), 1);
        QCOMPARE(timers.first()->interval(), 1000);
        QVERIFY(timers.first()->isActive());
    }

    void secondMonitorIsHiddenOnlyForTheFirstDeviceAlone_data()
    {
        QTest::addColumn<int>("mask");
        QTest::addColumn<bool>("hidden");
        for (const int mask : {0, 1, 2, 3})
            QTest::newRow(qPrintable(QString::number(mask))) << mask << (mask == 1);
    }
    void secondMonitorIsHiddenOnlyForTheFirstDeviceAlone()
    {
        QFETCH(int, mask);
        QFETCH(bool, hidden);
        panel->nr_ionbars_changed(hidden ? 3 : 1);
        panel->nr_ionbars_changed(mask);
        QCOMPARE(find<QWidget>(panel.get(), "bpm2Table")->isHidden(), hidden);
        QCOMPARE(find<QLabel>(panel.get(), "BPM2label")->isHidden(), hidden);
        QVERIFY(!find<QLabel>(panel.get(), "label_11")->isHidden());
    }

    void accessLevelEnablesTheWholePanel()
    {
        const int levels[] = {0, 7, 1, 0, -1, 2, 9, 0};
        const bool enabled[] = {false, false, true, false, false, true, true, false};
        for (int i = 0; i < 8; ++i) {
            userLevel = levels[i];
            panel->checkUserLevel();
            QCOMPARE(panel->isEnabled(), enabled[i]);
        }
        userLevel = 0;
        QVERIFY(!WidgetFeedbackControl().isEnabled());
    }

    void formHasTheTextsAndRanges()
    {
        const auto* pages = find<QToolBox>(panel.get(), "toolBox");
        QCOMPARE(pages->count(), 2);
        QCOMPARE(pages->itemText(0), QStringLiteral("Statistics"));
        QCOMPARE(pages->itemText(1), QStringLiteral("Control"));
        QCOMPARE(find<QPushButton>(panel.get(), "resetPIDbutton")->text(), QStringLiteral("Reset Controller"));
        QCOMPARE(find<QPushButton>(panel.get(), "updateConfButton")->text(), QStringLiteral("Update Config"));
        QCOMPARE(find<QPushButton>(panel.get(), "buttonUpdate")->text(), QStringLiteral("Update Setpoint"));
        QCOMPARE(find<QLabel>(panel.get(), "confLabel")->text(), QStringLiteral("Regulate:"));
        QCOMPARE(find<QLabel>(panel.get(), "label_11")->text(), QStringLiteral("BPM1"));
        QCOMPARE(find<QLabel>(panel.get(), "BPM2label")->text(), QStringLiteral("BPM2"));
        QVERIFY(find<QPushButton>(panel.get(), "buttonFdbk")->isCheckable());
        QStringList captions;
        for (const QLabel* label : panel->findChildren<QLabel*>())
            captions.append(label->text());
        for (const char* caption : {"Heartbeat:", "Control:", "DAC Output", "Source", "Position X: ", "Position Y:"})
            QVERIFY2(captions.contains(QLatin1String(caption)), caption);
        QCOMPARE(captions.count(QStringLiteral("at 1000 Hz:")), 6);
        for (const char* name : {"posXDoubleSpinBox", "posYDoubleSpinBox"}) {
            const auto* box = find<QDoubleSpinBox>(panel.get(), name);
            QCOMPARE(box->decimals(), 3);
            QCOMPARE(box->minimum(), -10000.0);
            QCOMPARE(box->maximum(), 10000.0);
            QCOMPARE(box->singleStep(), 0.01);
            QCOMPARE(box->suffix(), QString::fromUtf8(" µm"));
        }
    }

    void theStateOfTheFeedbackIsSeenOnTheTitleOfItsPageAtEveryLevel_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("colour");
        QTest::newRow("off") << 0 << QStringLiteral("grey");
        QTest::newRow("fault") << 1 << QStringLiteral("red");
        QTest::newRow("beam off") << 2 << QStringLiteral("purple");
        QTest::newRow("on") << 3 << QStringLiteral("green");
    }
    void theStateOfTheFeedbackIsSeenOnTheTitleOfItsPageAtEveryLevel()
    {
        QFETCH(int, status);
        QFETCH(QString, colour);
        mailbox->pidStatus = status;
        tick();
        const QIcon icon = find<QToolBox>(panel.get(), "toolBox")->itemIcon(1);
        QImage lamp(16, 16, QImage::Format_ARGB32_Premultiplied);
        lamp.fill(Qt::transparent);
        QPainter painter(&lamp);
        painter.setRenderHint(QPainter::Antialiasing);
        QSvgRenderer(QStringLiteral(":/resources/round_%1.svg").arg(colour)).render(&painter);
        painter.end();
        for (const QIcon::Mode mode : {QIcon::Normal, QIcon::Disabled})
            QCOMPARE(icon.pixmap(16, mode).toImage().convertToFormat(lamp.format()), lamp);
    }

    void figuresAndTheirCaptionsAreLegibleForAWatcher()
    {
        userLevel = 0;
        panel->checkUserLevel();
        mailbox->nrIonBars = 3;
        tick();
        panel->resize(600, 700);
        panel->show();
        QCoreApplication::processEvents();
        int seen = 0;
        QWidget* page = find<QWidget>(panel.get(), "pageStatistics");
        for (QLineEdit* field : page->findChildren<QLineEdit*>()) {
            QVERIFY(!field->isEnabled());
            QVERIFY(contrast::ofPicture(field) > 7);
            ++seen;
        }
        for (QLabel* caption : page->findChildren<QLabel*>()) {
            QVERIFY(contrast::ratio(caption->palette().color(QPalette::Disabled, QPalette::WindowText),
                                    caption->palette().color(QPalette::Disabled, QPalette::Window)) > 7);
            ++seen;
        }
        QCOMPARE(seen, 18 + 18);
    }

    void figuresOfAMonitorThatIsUnpluggedAndOfAFailedPollAreGrey()
    {
        mailbox->nrIonBars = 3;
        tick();
        auto* first = find<QLineEdit>(panel.get(), "posXMeanLineEdit");
        auto* second = find<QLineEdit>(panel.get(), "posXMeanLineEdit_2");
        QVERIFY(contrast::ofPicture(first) > 7 && contrast::ofPicture(second) > 7);
        mailbox->nrIonBars = 2;
        tick();
        QVERIFY(contrast::ofPicture(first) < 3 && contrast::ofPicture(second) > 7);
        mailbox->nrIonBars = 3;
        fail("getBPMStats");
        mailbox->refreshData();
        mailbox->nrIonBars = 3;
        tick();
        QVERIFY(contrast::ofPicture(first) < 3 && contrast::ofPicture(second) < 3);
        fail("getBPMStats", 0);
        mailbox->refreshData();
        mailbox->nrIonBars = 3;
        tick();
        QVERIFY(contrast::ofPicture(first) > 7 && contrast::ofPicture(second) > 7);
    }

    void aFigureThatIsTooLongShowsItsStart()
    {
        auto* field = find<QLineEdit>(panel.get(), "posXStdLineEdit");
        panel->resize(500, 700);
        panel->show();
        QCoreApplication::processEvents();
        field->setText(QStringLiteral("2.483904 um"));
        const QRect start(4, 4, field->fontMetrics().horizontalAdvance(QStringLiteral("2.48")), field->height() - 8);
        const QImage expected = field->grab(start).toImage();
        field->setText(QStringLiteral("2.483904 um").leftJustified(200, QLatin1Char('9')));
        QCOMPARE(field->grab(start).toImage(), expected);
    }

    void aFigureIsNeverNarrowerThanItsDigits()
    {
        QFont large = panel->font();
        large.setPointSizeF(2 * large.pointSizeF());
        panel->setFont(large);
        for (const QLineEdit* field : find<QWidget>(panel.get(), "pageStatistics")->findChildren<QLineEdit*>())
            QVERIFY(field->minimumSizeHint().width() >
                    field->fontMetrics().horizontalAdvance(QStringLiteral("2.483904 um")));
    }

    void thePageTitlesShowTheFocus()
    {
        panel->resize(500, 700);
        panel->show();
        QApplication::setActiveWindow(panel.get());
        for (QAbstractButton* title : find<QToolBox>(panel.get(), "toolBox")
                                          ->findChildren<QAbstractButton*>(QString(), Qt::FindDirectChildrenOnly)) {
            find<QPushButton>(panel.get(), "buttonFdbk")->setFocus();
            title->clearFocus();
            const QImage without = title->grab().toImage();
            title->setFocus(Qt::TabFocusReason);
            QVERIFY(title->hasFocus());
            const QImage with = title->grab().toImage();
            QVERIFY(with != without);
            QCOMPARE(with.pixelColor(1, with.height() / 2), title->palette().color(QPalette::Highlight));
        }
    }
};

QTEST_MAIN(WidgetFeedbackControlTest)
#include "WidgetFeedbackControlTest.moc"
