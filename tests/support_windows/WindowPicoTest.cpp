#include "support/WindowPico.h"
#include "app/Globals.h"
#include "double/KoralinkDouble.h"
#include "hardware/MailboxComm.h"
#include "stream/Updater.h"
#include "support/Contrast.h"
#include "support/Operator.h"
#include "support/WidgetPico.h"
#include "support/World.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStandardItemModel>
#include <QTimer>
#include <QtTest>

#include <memory>

using namespace koralink_double;

namespace {

const QStringList currentLines{QStringLiteral("currentCh1Line"), QStringLiteral("currentCh2Line"),
                               QStringLiteral("currentCh3Line"), QStringLiteral("currentCh4Line")};

QStringList shownCurrents(const WidgetPico* widget)
{
    QStringList shown;
    for (const QString& name : currentLines)
        shown.append(widget->findChild<QLineEdit*>(name)->text());
    return shown;
}

/// The record of the driver, where the channels stand in reverse order.
AmplifierStatus statusWithCurrents(double ch1, double ch2, double ch3, double ch4)
{
    AmplifierStatus status = {};
    status.setField(28, ch4);
    status.setField(36, ch3);
    status.setField(44, ch2);
    status.setField(52, ch1);
    return status;
}

} // namespace

class WindowPicoTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<World> world;
    std::unique_ptr<WindowPico> window;

    void openWithDevices(int mask)
    {
        mailbox->nrIonBars = mask;
        window = std::make_unique<WindowPico>();
        window->show();
    }
    WidgetPico* amplifier(int index)
    {
        return operate::find<WidgetPico>(window.get(), index == 0 ? "widgetPico0" : "widgetPico1");
    }
    QLabel* caption(int index)
    {
        return operate::find<QLabel>(window.get(), index == 0 ? "label_ionbar0" : "label_ionbar1");
    }

private slots:
    void init()
    {
        koralink_double::reset();
        world = std::make_unique<World>();
    }
    void cleanup()
    {
        window.reset();
        world.reset();
    }

    void textsOfTheForm()
    {
        openWithDevices(3);
        QCOMPARE(window->windowTitle(), QStringLiteral("PicoAmperMeter"));
        QCOMPARE(caption(0)->text(), QStringLiteral("IonBar 1"));
        QCOMPARE(caption(1)->text(), QStringLiteral("IonBar 2"));
        for (int index = 0; index < 2; ++index) {
            QStringList labels;
            for (const QLabel* label : amplifier(index)->findChildren<QLabel*>())
                labels.append(label->text());
            QCOMPARE(labels, QStringList({QStringLiteral("Current CH1:"), QStringLiteral("Current CH2:"),
                                          QStringLiteral("Current CH3:"), QStringLiteral("Current CH4:"),
                                          QStringLiteral("Range: ")}));
            QCOMPARE(operate::find<QPushButton>(amplifier(index), "saveButton")->text(),
                     QStringLiteral("Update range"));
            for (const QString& name : currentLines)
                QVERIFY(!amplifier(index)->findChild<QLineEdit*>(name)->isEnabled());
        }
    }

    void currentsReadZeroAfterConstruction()
    {
        openWithDevices(3);
        QCOMPARE(shownCurrents(amplifier(0)),
                 QStringList({QStringLiteral("0.00000e+00"), QStringLiteral("0.00000e+00"),
                              QStringLiteral("0.00000e+00"), QStringLiteral("0.00000e+00")}));
    }

    void rangesAreListedAndAutoCannotBePicked()
    {
        openWithDevices(3);
        auto* range = operate::find<QComboBox>(amplifier(0), "rangeBox");
        QStringList items;
        for (int i = 0; i < range->count(); ++i)
            items.append(range->itemText(i));
        QCOMPARE(items, QStringList({QStringLiteral("0"), QStringLiteral("1"), QStringLiteral("AUTO")}));
        QCOMPARE(range->currentText(), QStringLiteral("0"));
        QVERIFY(range->model()->flags(range->model()->index(1, 0)) & Qt::ItemIsEnabled);
        QVERIFY(!(range->model()->flags(range->model()->index(2, 0)) & Qt::ItemIsEnabled));

        range->setFocus();
        for (int i = 0; i < 5; ++i)
            QTest::keyClick(range, Qt::Key_Down);
        QCOMPARE(range->currentText(), QStringLiteral("1"));
    }

    void updateRangeSendsTheChosenRangeOfThatAmplifierAlone()
    {
        openWithDevices(3);
        operate::press(operate::find<QPushButton>(amplifier(0), "saveButton"));
        operate::find<QComboBox>(amplifier(1), "rangeBox")->setCurrentText(QStringLiteral("1"));
        operate::press(operate::find<QPushButton>(amplifier(1), "saveButton"));
        QCOMPARE(operate::lines(commands()),
                 QStringList({QStringLiteral("ionbarSetRange(0, 0)"), QStringLiteral("ionbarSetRange(1, 1)")}));
    }

    void rangeCanBeChangedByAWatcher()
    {
        userLevel = 0;
        openWithDevices(1);
        QVERIFY(operate::find<QPushButton>(amplifier(0), "saveButton")->isEnabled());
        QVERIFY(operate::find<QComboBox>(amplifier(0), "rangeBox")->isEnabled());
    }

    void refusedRangeIsKeptInTheFieldAndNotShown()
    {
        openWithDevices(1);
        fail("ionbarSetRange");
        auto* range = operate::find<QComboBox>(amplifier(0), "rangeBox");
        range->setCurrentText(QStringLiteral("1"));
        operate::press(operate::find<QPushButton>(amplifier(0), "saveButton"));
        QCOMPARE(operate::lines(commands()), QStringList(QStringLiteral("ionbarSetRange(1, 0)")));
        QCOMPARE(range->currentText(), QStringLiteral("1"));
    }

    void reopeningLeavesTheRangeWhereTheOperatorLeftIt()
    {
        openWithDevices(1);
        auto* range = operate::find<QComboBox>(amplifier(0), "rangeBox");
        range->setCurrentText(QStringLiteral("1"));
        operate::press(operate::find<QDialogButtonBox>(window.get(), "buttonBox"), QStringLiteral("Cancel"));
        QVERIFY(!window->isVisible());
        window->show();
        operate::fireTimers(window.get());
        QCOMPARE(range->currentText(), QStringLiteral("1"));
        QVERIFY(commands().empty());
    }

    void constructionHidesTheOtherAmplifierOfASingleOne_data()
    {
        QTest::addColumn<int>("mask");
        QTest::addColumn<bool>("firstShown");
        QTest::addColumn<bool>("secondShown");
        QTest::newRow("none, until the first refresh") << 0 << true << true;
        QTest::newRow("first") << 1 << true << false;
        QTest::newRow("second") << 2 << false << true;
        QTest::newRow("both") << 3 << true << true;
    }
    void constructionHidesTheOtherAmplifierOfASingleOne()
    {
        QFETCH(int, mask);
        openWithDevices(mask);
        QTEST(amplifier(0)->isVisible(), "firstShown");
        QTEST(caption(0)->isVisible(), "firstShown");
        QTEST(amplifier(1)->isVisible(), "secondShown");
        QTEST(caption(1)->isVisible(), "secondShown");
    }

    void refreshShowsAndFillsThePresentAmplifiers_data()
    {
        QTest::addColumn<int>("mask");
        QTest::addColumn<bool>("firstShown");
        QTest::addColumn<bool>("secondShown");
        QTest::newRow("none leaves only the buttons") << 0 << false << false;
        QTest::newRow("first") << 1 << true << false;
        QTest::newRow("second") << 2 << false << true;
        QTest::newRow("both") << 3 << true << true;
        QTest::newRow("a value that is no mask") << 7 << false << false;
    }
    void refreshShowsAndFillsThePresentAmplifiers()
    {
        QFETCH(int, mask);
        QFETCH(bool, firstShown);
        QFETCH(bool, secondShown);
        openWithDevices(mask == 1 ? 2 : 1);
        answers().amplifierStatus[0] = statusWithCurrents(1.5e-9, -2e-6, 3e-12, 0.25);
        answers().amplifierStatus[1] = statusWithCurrents(1e-9, 2e-9, 3e-9, 123456789e-12);
        updater->updateIonBars();
        mailbox->nrIonBars = mask;
        operate::fireTimers(window.get());

        QCOMPARE(amplifier(0)->isVisible(), firstShown);
        QCOMPARE(caption(0)->isVisible(), firstShown);
        QCOMPARE(amplifier(1)->isVisible(), secondShown);
        QCOMPARE(caption(1)->isVisible(), secondShown);
        QVERIFY(operate::find<QDialogButtonBox>(window.get(), "buttonBox")->isVisible());

        const QString zero = QStringLiteral("0.00000e+00");
        const QStringList untouched{zero, zero, zero, zero};
        const QStringList first{QStringLiteral("1.50000e-09"), QStringLiteral("-2.00000e-06"),
                                QStringLiteral("3.00000e-12"), QStringLiteral("2.50000e-01")};
        const QStringList second{QStringLiteral("1.00000e-09"), QStringLiteral("2.00000e-09"),
                                 QStringLiteral("3.00000e-09"), QStringLiteral("1.23457e-04")};
        QCOMPARE(shownCurrents(amplifier(0)), firstShown ? first : untouched);
        QCOMPARE(shownCurrents(amplifier(1)), secondShown ? second : untouched);
    }

    void refreshGoesOnWhileTheDialogIsHidden()
    {
        openWithDevices(1);
        window->hide();
        answers().amplifierStatus[0] = statusWithCurrents(1.5e-9, 0, 0, 0);
        updater->updateIonBars();
        operate::fireTimers(window.get());
        QCOMPARE(shownCurrents(amplifier(0)).first(), QStringLiteral("1.50000e-09"));
    }

    void vanishedDeviceKeepsTheLastCurrents()
    {
        openWithDevices(1);
        answers().amplifierStatus[0] = statusWithCurrents(1.5e-9, 0, 0, 0);
        updater->updateIonBars();
        setDevicePresent(amplifierDevicePath[0], false);
        answers().amplifierStatus[0] = statusWithCurrents(9e-9, 0, 0, 0);
        updater->updateIonBars();
        operate::fireTimers(window.get());
        QCOMPARE(shownCurrents(amplifier(0)).first(), QStringLiteral("1.50000e-09"));
    }

    void refreshTimerRunsFromConstruction()
    {
        window = std::make_unique<WindowPico>();
        const QList<QTimer*> timers = window->findChildren<QTimer*>(QString(), Qt::FindDirectChildrenOnly);
        QCOMPARE(timers.size(), 1);
        QVERIFY(timers.first()->isActive());
        QCOMPARE(timers.first()->interval(), 970);
    }

    void okAndCancelOnlyClose()
    {
        for (const QString& button : {QStringLiteral("OK"), QStringLiteral("Cancel")}) {
            openWithDevices(3);
            operate::press(operate::find<QDialogButtonBox>(window.get(), "buttonBox"), button);
            QVERIFY(!window->isVisible());
            QVERIFY(commands().empty());
        }
    }

    void aRangeThatWasNotSentIsBoldUntilUpdateRange()
    {
        openWithDevices(3);
        auto* range = operate::find<QComboBox>(amplifier(0), "rangeBox");
        QVERIFY(!range->font().bold());
        range->setCurrentText(QStringLiteral("1"));
        QVERIFY(range->font().bold());
        operate::press(operate::find<QPushButton>(amplifier(0), "saveButton"));
        QVERIFY(!range->font().bold());
    }

    void currentsThatAreNoLongerReadAreGrey()
    {
        openWithDevices(3);
        updater->updateIonBars();
        operate::fireTimers(window.get());
        auto* line = operate::find<QLineEdit>(amplifier(0), "currentCh1Line");
        QVERIFY(contrast::ofPicture(line) > 7);
        setDevicePresent(amplifierDevicePath[0], false);
        updater->updateIonBars();
        operate::fireTimers(window.get());
        QVERIFY(contrast::ofPicture(line) < 3);
        QVERIFY(contrast::ofPicture(operate::find<QLineEdit>(amplifier(1), "currentCh1Line")) > 7);
        setDevicePresent(amplifierDevicePath[0], true);
        updater->updateIonBars();
        operate::fireTimers(window.get());
        QVERIFY(contrast::ofPicture(line) > 7);
    }
};

QTEST_MAIN(WindowPicoTest)
#include "WindowPicoTest.moc"
