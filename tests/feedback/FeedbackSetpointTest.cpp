#include "app/Globals.h"
#include "double/KoralinkDouble.h"
#include "feedback/WidgetFeedbackControl.h"
#include "graphs/WidgetGraphXY.h"
#include "hardware/MailboxComm.h"
#include "support/MessageBoxes.h"
#include "support/Operator.h"
#include "support/ScratchSettings.h"
#include "support/World.h"

#include <QCheckBox>
#include <QDoubleSpinBox>
#include <QPushButton>
#include <QSignalSpy>
#include <QtTest>
#include <qcustomplot.h>

#include <limits>
#include <memory>

using namespace koralink_double;
using operate::find;

/// Set-points sent, read back, placed by a click, and what the operator typed meanwhile.
class FeedbackSetpointTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<World> world;
    std::unique_ptr<WidgetFeedbackControl> panel;
    std::unique_ptr<WidgetGraphXY> graph;

    QDoubleSpinBox* x() const { return find<QDoubleSpinBox>(panel.get(), "posXDoubleSpinBox"); }
    QDoubleSpinBox* y() const { return find<QDoubleSpinBox>(panel.get(), "posYDoubleSpinBox"); }
    void pressUpdateSetpoint() { operate::press(find<QPushButton>(panel.get(), "buttonUpdate")); }

    static void type(QDoubleSpinBox* box, const QString& text)
    {
        box->selectAll();
        QTest::keyClicks(box, text);
    }

    /// @return the X position of the click, um
    double clickAt(const QPoint& pixel)
    {
        auto* plot = find<QCustomPlot>(graph.get(), "graph");
        QTest::mousePress(plot, Qt::LeftButton, Qt::NoModifier, pixel);
        QTest::mouseRelease(plot, Qt::LeftButton, Qt::NoModifier, pixel);
        return plot->xAxis->pixelToCoord(pixel.x());
    }

    void openGraph()
    {
        for (const char* key : {"ROCandROI/RoiX", "ROCandROI/RoiY", "ROCandROI/Roc"})
            scratch_settings::setValue(key, 100.0);
        graph = std::make_unique<WidgetGraphXY>(0, nullptr);
        graph->resize(500, 400);
        graph->show();
        find<QPushButton>(graph.get(), "targetEnable")->setChecked(true);
        connect(graph.get(), SIGNAL(XYchanged()), panel.get(), SLOT(updateXYfields()));
    }

private slots:
    void init()
    {
        koralink_double::reset();
        world = std::make_unique<World>();
        userLevel = 1;
        panel = std::make_unique<WidgetFeedbackControl>();
        panel->confChanged(7);
        answers().setpoints[0] = 3.0;
        answers().setpoints[1] = 111.0;
        answers().setpoints[2] = -4.0;
        answers().setpoints[3] = 222.0;
        panel->updateXYfields();
        clearCalls();
    }
    void cleanup()
    {
        graph.reset();
        panel.reset();
        world.reset();
    }

    void lowFrequencySetpointsAreShownUnscaled()
    {
        bpmScaleX[0] = bpmScaleY[0] = 1000.0;
        answers().setpoints[0] = 12.3456;
        answers().setpoints[2] = -0.5;
        panel->updateXYfields();
        QCOMPARE(x()->text(), QString::fromUtf8("12.346 µm"));
        QCOMPARE(y()->text(), QString::fromUtf8("-0.500 µm"));
    }

    void valuesSetWithoutTypingGiveWayToTheSetpointsInForce()
    {
        x()->setValue(55.0);
        y()->setValue(66.0);
        panel->updateXYfields();
        QCOMPARE(x()->value(), 3.0);
        QCOMPARE(y()->value(), -4.0);
    }

    void setpointThatCannotBeReadLeavesItsField()
    {
        answers().setpoints[0] = 9.0;
        fail("getSetpoint", 1);
        panel->updateXYfields();
        QCOMPARE(x()->value(), 3.0);
        QCOMPARE(y()->value(), -4.0);
    }

    void updateSetpointSendsAllFourLoops()
    {
        bpmScaleX[0] = bpmScaleY[0] = 1000.0;
        x()->setValue(12.5);
        y()->setValue(-7.25);
        QSignalSpy changed(panel.get(), SIGNAL(somethingChanged()));
        pressUpdateSetpoint();
        QCOMPARE(operate::lines(commands()),
                 (QStringList{QStringLiteral("setSetpoint(0, 12.5)"), QStringLiteral("setSetpoint(1, 12.5)"),
                              QStringLiteral("setSetpoint(2, -7.25)"), QStringLiteral("setSetpoint(3, -7.25)")}));
        QCOMPARE(changed.count(), 1);
    }

    void disabledFieldIsSentToo()
    {
        x()->setValue(1.5);
        panel->confChanged(12);
        QVERIFY(!x()->isEnabled());
        clearCalls();
        pressUpdateSetpoint();
        QCOMPARE(operate::lines(callsOf("setSetpoint")).mid(0, 2),
                 (QStringList{QStringLiteral("setSetpoint(0, 1.5)"), QStringLiteral("setSetpoint(1, 1.5)")}));
    }

    void setpointsCanBeSentWhileThePidRuns()
    {
        mailbox->pidStatus = PidStatusOn;
        pressUpdateSetpoint();
        QCOMPARE(callsOf("setSetpoint").size(), std::size_t(4));
    }

    void failingLoopDoesNotStopTheOthers()
    {
        fail("setSetpoint", 1);
        QSignalSpy changed(panel.get(), SIGNAL(somethingChanged()));
        pressUpdateSetpoint();
        QCOMPARE(callsOf("setSetpoint").size(), std::size_t(4));
        QCOMPARE(changed.count(), 1);
    }

    void clickOfOneAxisPutsTheSetpointInForceIntoTheFieldOfTheOther()
    {
        // Y (LF) alone: what was typed for X must not go to the X loops with the next press.
        answers().pidConf = 12;
        panel->confChanged(2);
        openGraph();
        type(x(), QStringLiteral("50"));
        panel->confChanged(12);
        QVERIFY(!x()->isEnabled());
        clickAt(QPoint(300, 150));
        QCOMPARE(callsOf("setSetpoint").size(), std::size_t(1));
        QCOMPARE(x()->value(), 3.0);
        pressUpdateSetpoint();
        QCOMPARE(answers().setpoints[0], 3.0);
        QCOMPARE(answers().setpoints[1], 3.0);
    }

    void clickMovesItsAxisAndTheOtherFieldShowsWhatIsInForce()
    {
        // Both low-frequency loops run, but this monitor feeds that of X alone.
        answers().pidConf = 2;
        bpmSelYlf = 1;
        openGraph();
        type(x(), QStringLiteral("9"));
        type(y(), QStringLiteral("7.25"));
        const double clicked = clickAt(QPoint(300, 150));
        QCOMPARE(callsOf("setSetpoint").size(), std::size_t(1));
        QVERIFY(qAbs(clicked - 3.0) > 1.0);
        QVERIFY(qAbs(x()->value() - clicked) < 0.001);
        QCOMPARE(y()->value(), -4.0);
    }

    void refillReplacesWhateverStandsInTheFields_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::newRow("a value") << QStringLiteral("8.5");
        QTest::newRow("half typed") << QStringLiteral("-");
        QTest::newRow("more decimals than are kept") << QStringLiteral("3.00");
    }
    void refillReplacesWhateverStandsInTheFields()
    {
        QFETCH(QString, typed);
        type(x(), typed);
        type(y(), typed);
        panel->updateXYfields();
        QCOMPARE(x()->text(), QString::fromUtf8("3.000 µm"));
        QCOMPARE(y()->text(), QString::fromUtf8("-4.000 µm"));
    }

    void refillReplacesAStepAndAGreyedField()
    {
        QTest::keyClick(y(), Qt::Key_Up);
        x()->setValue(55.0);
        x()->setEnabled(false);
        panel->updateXYfields();
        QCOMPARE(x()->value(), 3.0);
        QCOMPARE(y()->value(), -4.0);
    }

    void setpointThatIsNoNumberLeavesItsField()
    {
        answers().setpoints[0] = std::numeric_limits<double>::infinity();
        answers().setpoints[2] = std::numeric_limits<double>::quiet_NaN();
        panel->updateXYfields();
        QCOMPARE(x()->value(), 3.0);
        QCOMPARE(y()->value(), -4.0);
    }

    void buttonsTicksAndTheClockKeepWhatWasTyped()
    {
        type(x(), QStringLiteral("1.25"));
        type(y(), QStringLiteral("-2.5"));
        operate::fireTimers(panel.get());
        operate::press(find<QPushButton>(panel.get(), "resetPIDbutton"));
        operate::press(find<QPushButton>(panel.get(), "buttonFdbk"));
        operate::press(find<QCheckBox>(panel.get(), "confXhfcheckbox"));
        operate::press(find<QPushButton>(panel.get(), "updateConfButton"));
        mailbox->pidStatus = PidStatusOn;
        MessageBoxes boxes;
        operate::press(find<QCheckBox>(panel.get(), "confYhfcheckbox"));
        operate::press(find<QPushButton>(panel.get(), "updateConfButton"));
        QCOMPARE(boxes.count(), 1);
        panel->nr_ionbars_changed(1);
        userLevel = 0;
        panel->checkUserLevel();
        userLevel = 2;
        panel->checkUserLevel();
        QCOMPARE(x()->value(), 1.25);
        QCOMPARE(y()->value(), -2.5);
        QVERIFY(!find<QCheckBox>(panel.get(), "confXhfcheckbox")->isChecked());
        QVERIFY(!find<QCheckBox>(panel.get(), "confYhfcheckbox")->isChecked());
    }

    void aSetpointThatWasNotSentIsBoldUntilUpdateSetpoint()
    {
        QVERIFY(!x()->font().bold());
        type(x(), QStringLiteral("12.5"));
        QVERIFY(x()->font().bold());
        QVERIFY(!y()->font().bold());
        pressUpdateSetpoint();
        QVERIFY(!x()->font().bold());
        y()->stepUp();
        QVERIFY(y()->font().bold());
        y()->stepDown();
        QVERIFY(!y()->font().bold());
    }

    void aSetpointPlacedElsewhereIsNotBold()
    {
        type(x(), QStringLiteral("12.5"));
        answers().setpoints[0] = 7.0;
        panel->updateXYfields();
        QCOMPARE(x()->value(), 7.0);
        QVERIFY(!x()->font().bold());
    }
};

QTEST_MAIN(FeedbackSetpointTest)
#include "FeedbackSetpointTest.moc"
