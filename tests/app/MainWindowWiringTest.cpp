#include "app/Globals.h"
#include "app/MainWindow.h"
#include "double/KoralinkDouble.h"
#include "hardware/ConfigFile.h"
#include "hardware/MailboxComm.h"
#include "support/DialogLogin.h"
#include "support/MessageBoxes.h"
#include "support/Operator.h"
#include "support/World.h"

#include <QAction>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QtTest>

#include <qcustomplot.h>

#include <memory>

using namespace koralink_double;
using operate::find;

/// What one window does reaches those that the main window has joined to it.
class MainWindowWiringTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<World> world;
    std::unique_ptr<MainWindow> window;

    QVector<QWidget*> widgetsOf(const char* className)
    {
        QVector<QWidget*> found;
        for (QWidget* widget : window->findChildren<QWidget*>()) {
            if (QLatin1String(widget->metaObject()->className()) == QLatin1String(className))
                found.append(widget);
        }
        return found;
    }
    QWidget* widgetOf(const char* className) { return widgetsOf(className).constFirst(); }
    QCustomPlot* plotXY(int bpm) { return find<QCustomPlot>(widgetsOf("WidgetGraphXY").at(bpm), "graph"); }
    QWidget* panel() { return widgetOf("WidgetFeedbackControl"); }

    void logIn(const char* user, const char* password)
    {
        find<QLineEdit>(loginDialog, "usernameLineEdit")->setText(QLatin1String(user));
        find<QLineEdit>(loginDialog, "passwordLineEdit")->setText(QLatin1String(password));
        operate::press(find<QPushButton>(loginDialog, "logIn"));
    }

    /// Whether panel, limits, geometry, gains and manual outputs can be used, in this order.
    QVector<bool> enabled()
    {
        return {panel()->isEnabled(), find<QWidget>(widgetOf("WindowROC_ROI"), "roiXDoubleSpinBox")->isEnabled(),
                find<QWidget>(window.get(), "boxBPM1")->isEnabled(),
                find<QWidget>(window.get(), "verticalTabWidget")->isEnabled(),
                find<QAction>(window.get(), "actionManual_Output_Control")->isEnabled()};
    }

    static QVector<QPointF> marker(QCustomPlot* plot)
    {
        QVector<QPointF> points;
        for (const QCPGraphData& point : *plot->graph(1)->data())
            points.append(QPointF(point.key, point.value));
        return points;
    }

private slots:
    void init()
    {
        koralink_double::reset();
        world = std::make_unique<World>();
        configFile->writeROI(0, 80, 40, 0, 1e12, 50);
        configFile->writeROI(1, 20, 10, 0, 1e12, 50);
        bpmScaleX[0] = bpmScaleX[1] = 100;
        bpmScaleY[0] = bpmScaleY[1] = 200;
        answers().pidConf = 2;
        answers().setpoints[0] = 3;
        answers().setpoints[2] = -4;
        window = std::make_unique<MainWindow>();
        loginDialog = new DialogLogin(window.get());
        loginDialog->connectToMainWindow();
    }
    void cleanup()
    {
        window.reset();
        loginDialog = nullptr;
        world.reset();
    }

    void aLoginReachesPanelLimitsGeometryGainsAndMenu()
    {
        logIn("admin", "admin");
        QCOMPARE(enabled(), QVector<bool>({true, true, true, true, true}));
        logIn("user", "user");
        QCOMPARE(enabled(), QVector<bool>({true, false, false, false, true}));
        logIn("cruise", "cruise");
        QCOMPARE(enabled(), QVector<bool>({false, false, false, false, false}));
    }

    void aRefusedLoginShowsNowhereUntilTheDialogIsOpenedAgain()
    {
        logIn("admin", "admin");
        MessageBoxes boxes;
        logIn("user", "wrong");
        QCOMPARE(boxes.count(), 1);
        QCOMPARE(userLevel, 0);
        QCOMPARE(enabled(), QVector<bool>({true, true, true, true, true}));
        QCOMPARE(find<QLabel>(loginDialog, "currentLevel")->text(), QStringLiteral("admin"));
        find<QAction>(window.get(), "action_Login")->trigger();
        QCOMPARE(enabled(), QVector<bool>({false, false, false, false, false}));
        QCOMPARE(find<QLabel>(loginDialog, "currentLevel")->text(), QStringLiteral("cruise"));
    }

    void thePanelStartsWithConfigurationAndSetpointsAndTheGraphsWithTheirMarker()
    {
        QVERIFY(find<QAbstractButton>(panel(), "confXlfcheckbox")->isChecked());
        QVERIFY(!find<QAbstractButton>(panel(), "confXhfcheckbox")->isChecked());
        QVERIFY(find<QAbstractButton>(panel(), "confYlfcheckbox")->isChecked());
        QCOMPARE(find<QDoubleSpinBox>(panel(), "posXDoubleSpinBox")->value(), 3.0);
        QCOMPARE(find<QDoubleSpinBox>(panel(), "posYDoubleSpinBox")->value(), -4.0);
        QCOMPARE(marker(plotXY(0)), QVector<QPointF>({QPointF(3, -4)}));
        QVERIFY(marker(plotXY(1)).isEmpty());
    }

    void newSourcesMoveTheMarkersOfBothGraphs()
    {
        logIn("user", "user");
        find<QComboBox>(panel(), "comboBoxPidSourceYlf")->setCurrentText(QStringLiteral("BPM2"));
        operate::press(find<QPushButton>(panel(), "updateConfButton"));
        QCOMPARE(marker(plotXY(0)), QVector<QPointF>({QPointF(3, -200), QPointF(3, 200)}));
        QCOMPARE(marker(plotXY(1)), QVector<QPointF>({QPointF(-100, -4), QPointF(100, -4)}));
    }

    void setpointsSentByThePanelMoveTheMarker()
    {
        logIn("user", "user");
        find<QDoubleSpinBox>(panel(), "posXDoubleSpinBox")->setValue(7.5);
        operate::press(find<QPushButton>(panel(), "buttonUpdate"));
        QCOMPARE(marker(plotXY(0)), QVector<QPointF>({QPointF(7.5, -4)}));
    }

    void aSetpointPlacedOnEitherGraphShowsInThePanel_data()
    {
        QTest::addColumn<int>("bpm");
        QTest::newRow("BPM1") << 0;
        QTest::newRow("BPM2") << 1;
    }
    void aSetpointPlacedOnEitherGraphShowsInThePanel()
    {
        QFETCH(int, bpm);
        bpmSelXlf = bpmSelYlf = bpm;
        logIn("user", "user");
        window->show();
        QVERIFY(QTest::qWaitForWindowExposed(window.get()));
        operate::press(find<QPushButton>(widgetsOf("WidgetGraphXY").at(bpm), "targetEnable"));
        QCustomPlot* plot = plotXY(bpm);
        const QPoint pixel = plot->axisRect()->center() + QPoint(20, 10);
        QTest::mousePress(plot, Qt::LeftButton, Qt::NoModifier, pixel);
        QTest::mouseRelease(plot, Qt::LeftButton, Qt::NoModifier, pixel);
        const double x = plot->xAxis->pixelToCoord(pixel.x());
        const double y = plot->yAxis->pixelToCoord(pixel.y());
        QVERIFY(x != 3 && y != -4);
        QVERIFY(qAbs(find<QDoubleSpinBox>(panel(), "posXDoubleSpinBox")->value() - x) < 0.001);
        QVERIFY(qAbs(find<QDoubleSpinBox>(panel(), "posYDoubleSpinBox")->value() - y) < 0.001);
    }

    void aNewScaleResetsTheZoomOfBothGraphs()
    {
        for (int bpm = 0; bpm < 2; ++bpm) {
            plotXY(bpm)->xAxis->setRange(-1, 1);
            plotXY(bpm)->yAxis->setRange(-1, 1);
        }
        QMetaObject::invokeMethod(widgetOf("WindowBeamlineConf"), "BPMscaleChanged");
        QCOMPARE(plotXY(0)->xAxis->range().upper, 40.0);
        QCOMPARE(plotXY(0)->yAxis->range().upper, 20.0);
        QCOMPARE(plotXY(1)->xAxis->range().upper, 10.0);
        QCOMPARE(plotXY(1)->yAxis->range().upper, 5.0);
    }

    void newDevicesReachPanelLimitsAndGeometry()
    {
        const char* const ofSecondMonitor[] = {"bpm2Table", "rocWidget1", "boxBPM2"};
        for (const int mask : {3, 1, 2}) {
            mailbox->nrIonBars = mask;
            mailbox->emitNrIonBars();
            for (const char* name : ofSecondMonitor)
                QVERIFY2(find<QWidget>(window.get(), name)->isHidden() == (mask == 1), name);
        }
        QVERIFY(find<QWidget>(window.get(), "boxBPM1")->isHidden());
    }
};

QTEST_MAIN(MainWindowWiringTest)
#include "MainWindowWiringTest.moc"
