// An operator closes the loop on the simulated installation, through the real windows.

#include "app/Globals.h"
#include "app/SimulatedSession.h"
#include "hardware/MailboxComm.h"
#include "stream/Updater.h"
#include "support/MessageBoxes.h"
#include "support/Operator.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDockWidget>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QtTest>

#include <qcustomplot.h>

#include <cmath>

using operate::find;
using operate::press;

namespace {

double numberIn(const QLineEdit* field)
{
    return field->text().section(QLatin1Char(' '), 0, 0).toDouble();
}

} // namespace

class FeedbackTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<SimulatedSession> session;

    QWidget* panel() { return session->widgetOf("WidgetFeedbackControl"); }
    double statistic(const char* field) { return numberIn(find<QLineEdit>(panel(), field)); }
    QString heartbeat() { return find<QLabel>(panel(), "heartbeatLabel")->text(); }

    /// Level 2, limits, gains and the four loops as the training settings have them.
    void prepare()
    {
        session->logIn(QStringLiteral("admin"), QStringLiteral("admin"));
        QCOMPARE(userLevel, 2);
        session->trigger("action_ROC_ROI");
        press(find<QDialogButtonBox>(session->widgetOf("WindowROC_ROI"), "buttonBox"), QStringLiteral("OK"));
        press(find<QPushButton>(session->widgetOf("WidgetPidCtrl"), "pushButtonUpdate"));
        for (const char* box : {"confXlfcheckbox", "confXhfcheckbox", "confYlfcheckbox", "confYhfcheckbox"})
            find<QCheckBox>(panel(), box)->setChecked(true);
        press(find<QPushButton>(panel(), "updateConfButton"));
    }

    void enable()
    {
        press(find<QPushButton>(panel(), "buttonFdbk"));
        session->tick();
        QCOMPARE(heartbeat(), QStringLiteral("Feedback ON"));
    }

    /// Root mean square of the amplitudes below 10 Hz as the FFT graph shows them.
    double lowFrequencyAmplitude()
    {
        double squares = 0;
        const QCPDataMap& spectrum = *session->plotOf(QStringLiteral("Graph FFT"))->graph(0)->data();
        for (auto point = spectrum.constBegin(); point != spectrum.constEnd() && point->key < 10; ++point)
            squares += point->value * point->value;
        return std::sqrt(squares);
    }

    void chooseSpectrumOfPosX()
    {
        QWidget* fft = session->widgetOf("WidgetGraphFFT");
        find<QComboBox>(fft, "selectorComboBox")->setCurrentText(QStringLiteral("BPM1, PosX"));
        find<QComboBox>(fft, "fFTLengthComboBox")->setCurrentText(QStringLiteral("8192"));
        find<QCheckBox>(fft, "removeDCCheckBox")->setChecked(true);
    }

    void click(double x, double y)
    {
        QWidget* graph = session->dock(QStringLiteral("Graph XY"))->widget();
        auto* plot = find<QCustomPlot>(graph, "graph");
        find<QPushButton>(graph, "targetEnable")->setChecked(true);
        const QPoint place(qRound(plot->xAxis->coordToPixel(x)), qRound(plot->yAxis->coordToPixel(y)));
        QTest::mousePress(plot, Qt::LeftButton, Qt::NoModifier, place);
        QTest::mouseRelease(plot, Qt::LeftButton, Qt::NoModifier, place);
    }

private slots:
    void init() { session = std::make_unique<SimulatedSession>(); }
    void cleanup() { session.reset(); }

    void enabledFeedbackBringsTheBeamToRest()
    {
        prepare();
        chooseSpectrumOfPosX();
        session->tick(20);
        const double openX = statistic("posXStdLineEdit");
        const double openY = statistic("posYStdLineEdit");
        const double openAmplitude = lowFrequencyAmplitude();
        QVERIFY(openX > 0.1 && openY > 0.1);

        enable();
        session->tick(9);
        const double closedX = statistic("posXStdLineEdit");
        const double closedY = statistic("posYStdLineEdit");
        QVERIFY2(closedX <= openX / 5, qPrintable(QStringLiteral("%1 from %2").arg(closedX).arg(openX)));
        QVERIFY2(closedY <= openY / 5, qPrintable(QStringLiteral("%1 from %2").arg(closedY).arg(openY)));

        session->tick(10);
        const double closedAmplitude = lowFrequencyAmplitude();
        QVERIFY2(closedAmplitude <= openAmplitude / 10,
                 qPrintable(QStringLiteral("%1 from %2").arg(closedAmplitude).arg(openAmplitude)));
    }

    void theBeamFollowsASetPointPlacedByAClick()
    {
        prepare();
        enable();
        session->tick(5);
        QCustomPlot* plot = session->plotOf(QStringLiteral("Graph XY"));
        const double targetX = 3;
        const double targetY = -4;
        click(targetX, targetY);
        // What the pixel under the cursor stands for, as the fields of the panel show it.
        const double x = find<QDoubleSpinBox>(panel(), "posXDoubleSpinBox")->value();
        const double y = find<QDoubleSpinBox>(panel(), "posYDoubleSpinBox")->value();
        QVERIFY(std::abs(x - targetX) < plot->xAxis->range().size() / 100);
        QVERIFY(std::abs(y - targetY) < plot->yAxis->range().size() / 100);
        session->tick(8);
        QVERIFY2(std::abs(statistic("posXMeanLineEdit") - x) < 0.2,
                 qPrintable(QString::number(statistic("posXMeanLineEdit"))));
        QVERIFY2(std::abs(statistic("posYMeanLineEdit") - y) < 0.2,
                 qPrintable(QString::number(statistic("posYMeanLineEdit"))));
    }

    void beamOffHoldsTheLoopsAndItsReturnResumes()
    {
        prepare();
        enable();
        session->plant().setBeamOn(false);
        session->tick();
        QCOMPARE(heartbeat(), QStringLiteral("Beam OFF"));
        session->plant().setBeamOn(true);
        session->tick();
        QCOMPARE(heartbeat(), QStringLiteral("Feedback ON"));
    }

    void aKickBeyondTheRegionOfConfidenceStopsTheLoops()
    {
        prepare();
        enable();
        session->plant().kick(500, 0);
        session->tick();
        QCOMPARE(heartbeat(), QStringLiteral("FAULT: Out of ROC"));
        QCOMPARE(find<QPushButton>(panel(), "buttonFdbk")->text(), QStringLiteral("Disable Feedback"));
        press(find<QPushButton>(panel(), "buttonFdbk"));
        session->tick();
        QCOMPARE(heartbeat(), QStringLiteral("Feedback OFF"));
    }

    void noLoopTickedIsAcceptedAsNoneRegulates()
    {
        prepare();
        for (const char* box : {"confXlfcheckbox", "confXhfcheckbox", "confYlfcheckbox", "confYhfcheckbox"})
            find<QCheckBox>(panel(), box)->setChecked(false);
        press(find<QPushButton>(panel(), "updateConfButton"));
        QCOMPARE(int(mailbox->getPIDconf()), 15);
        const double before = session->plant().outputVolts(0);
        press(find<QPushButton>(panel(), "buttonFdbk"));
        session->tick(2);
        QCOMPARE(session->plant().outputVolts(0), before);
    }
};

QTEST_MAIN(FeedbackTest)
#include "FeedbackTest.moc"
