#include "BuiltMainWindow.h"

#include "hardware/MailboxComm.h"

#include <QCheckBox>
#include <QDialog>
#include <QMenu>
#include <QMenuBar>
#include <QMetaMethod>
#include <QStatusBar>
#include <QToolBar>

#include <qcustomplot.h>

using namespace koralink_double;
using operate::find;

namespace {

struct DockRow
{
    const char* title;
    Qt::DockWidgetArea area;
    const char* contentClass;
};

constexpr DockRow dockRows[] = {
    {"Graph XY", Qt::TopDockWidgetArea, "WidgetGraphXY"},
    {"Graph XY 2", Qt::TopDockWidgetArea, "WidgetGraphXY"},
    {"Feedback Control", Qt::TopDockWidgetArea, "WidgetFeedbackControl"},
    {"Graph FFT", Qt::LeftDockWidgetArea, "WidgetGraphFFT"},
    {"PID Configuration", Qt::RightDockWidgetArea, "WidgetPidCtrl"},
    {"Graph Currents BPM1", Qt::LeftDockWidgetArea, "WidgetGraphCurrents"},
    {"Graph Currents BPM2", Qt::LeftDockWidgetArea, "WidgetGraphCurrents"},
    {"Graph DAC", Qt::LeftDockWidgetArea, "WidgetGraphCurrents"},
    {"Graph Position X", Qt::LeftDockWidgetArea, "WidgetGraphPos"},
    {"Graph Position Y", Qt::LeftDockWidgetArea, "WidgetGraphPos"},
    {"Graph Intensity", Qt::LeftDockWidgetArea, "WidgetGraphInt"},
};

QStringList textsOf(const QList<QAction*>& actions)
{
    QStringList texts;
    for (const QAction* action : actions)
        texts.append(action->isSeparator() ? QStringLiteral("---") : action->text());
    return texts;
}

} // namespace

/// Menus, docks, access and what opens.
class MainWindowTest : public BuiltMainWindow
{
    Q_OBJECT

private:
    /// Windows of a class that are children of the main window.
    QVector<QDialog*> windowsOf(const char* className)
    {
        QVector<QDialog*> found;
        for (QDialog* dialog : window->findChildren<QDialog*>()) {
            if (QLatin1String(dialog->metaObject()->className()) == QLatin1String(className))
                found.append(dialog);
        }
        return found;
    }

    void announceMask(int mask)
    {
        mailbox->nrIonBars = mask;
        mailbox->emitNrIonBars();
    }

private slots:
    void titleCarriesTheInterfaceVersion()
    {
        build();
        QCOMPARE(window->windowTitle(), QStringLiteral("KORA Local User Interface v" KORA_VERSION));
    }

    void menusHaveTheirEntriesInOrder()
    {
        build();
        QStringList menuNames;
        for (QAction* entry : window->menuBar()->actions())
            menuNames.append(entry->menu()->objectName());
        QCOMPARE(menuNames, QStringList({QStringLiteral("menu_FIle"), QStringLiteral("menu_Tools"),
                                         QStringLiteral("menu_Tools_2"), QStringLiteral("menu_Help")}));
        QCOMPARE(textsOf(window->menuBar()->actions()),
                 QStringList({QStringLiteral("&File"), QStringLiteral("&Settings"), QStringLiteral("&Tools"),
                              QStringLiteral("&Help")}));
        QCOMPARE(textsOf(find<QMenu>(window.get(), "menu_FIle")->actions()), QStringList(QStringLiteral("&Exit")));
        QCOMPARE(
            textsOf(find<QMenu>(window.get(), "menu_Tools")->actions()),
            QStringList({QStringLiteral("&Display Settings"), QStringLiteral("Pico&Amp"), QStringLiteral("&Beamline "),
                         QStringLiteral("&PID Parameters"), QStringLiteral("Position Filter Settings"),
                         QStringLiteral("&ROC/ROI"), QStringLiteral("SFP &Info"), QStringLiteral("&Login")}));
        QCOMPARE(textsOf(find<QMenu>(window.get(), "menu_Tools_2")->actions()),
                 QStringList({QStringLiteral("&Rocking Curve"), QStringLiteral("Rocking Curve &3D"),
                              QStringLiteral("Step &Response (beta version)"), QStringLiteral("Frequency Analysis"),
                              QStringLiteral("Manual Output Control"), QStringLiteral("---"),
                              QStringLiteral("&Save Data")}));
        QCOMPARE(textsOf(find<QMenu>(window.get(), "menu_Help")->actions()),
                 QStringList({QStringLiteral("&Log"), QStringLiteral("&About")}));
    }

    void spareActionsStandInNoMenu_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("actionNew_Currents_Window") << QStringLiteral("New &Currents Window");
        QTest::newRow("actionNew_FFT_Window") << QStringLiteral("New &FFT Window");
        QTest::newRow("actionNew_XY_Window") << QStringLiteral("New &XY Window");
        QTest::newRow("actionGraph_XY1") << QStringLiteral("Graph XY1");
        QTest::newRow("actionGraph_XY2") << QStringLiteral("Graph XY2");
        QTest::newRow("actionGraph_FFT") << QStringLiteral("Graph FFT");
        QTest::newRow("actionGraph_Currents") << QStringLiteral("Graph Currents");
    }

    void spareActionsStandInNoMenu()
    {
        QFETCH(QString, text);
        build();
        QAction* spare = action(QTest::currentDataTag());
        QCOMPARE(spare->text(), text);
        QVERIFY(spare->associatedWidgets().isEmpty());
    }

    void docksHaveTitleAreaAndContent()
    {
        build();
        QCOMPARE(window->findChildren<QDockWidget*>().size(), int(std::size(dockRows)));
        for (const DockRow& row : dockRows) {
            QCOMPARE(QByteArray(content(row.title)->metaObject()->className()), QByteArray(row.contentClass));
            QCOMPARE(window->dockWidgetArea(dock(row.title)), row.area);
        }
        QVERIFY(!window->centralWidget() || window->centralWidget()->layout() == nullptr);
    }

    void docksAreTabbedInOrder()
    {
        build();
        QStringList titles;
        for (QDockWidget* tab : window->tabifiedDockWidgets(dock("Graph FFT")))
            titles.append(tab->windowTitle());
        QCOMPARE(titles, QStringList({QStringLiteral("Graph Currents BPM1"), QStringLiteral("Graph Currents BPM2"),
                                      QStringLiteral("Graph DAC"), QStringLiteral("Graph Position X"),
                                      QStringLiteral("Graph Position Y"), QStringLiteral("Graph Intensity")}));
    }

    void feedbackAndPidDocksCannotBeClosed()
    {
        build();
        QCOMPARE(dock("Feedback Control")->features(), QDockWidget::DockWidgetFeatures(QDockWidget::DockWidgetMovable));
        QVERIFY(!dock("Feedback Control")->isFloating());
        QCOMPARE(dock("PID Configuration")->features(),
                 QDockWidget::DockWidgetMovable | QDockWidget::DockWidgetFloatable);
    }

    void barsAreEmpty()
    {
        build();
        QVERIFY(find<QToolBar>(window.get(), "mainToolBar")->actions().isEmpty());
        QVERIFY(find<QStatusBar>(window.get(), "statusBar")->currentMessage().isEmpty());
    }

    void firmwareGateGoesByTextOrder_data()
    {
        QTest::addColumn<bool>("shown");
        QTest::newRow("1.0.02") << false;
        QTest::newRow("1.0.0") << false;
        QTest::newRow("1.0.03") << true;
        QTest::newRow("2") << true;
        QTest::newRow("1.0.1") << true;
    }

    void firmwareGateGoesByTextOrder()
    {
        QFETCH(bool, shown);
        answers().displayFreq = 4321;
        SAMP_FREQ = 7;
        build(QTest::currentDataTag());
        QCOMPARE(action("action_Display_Settings")->isVisible(), shown);
        QCOMPARE(SAMP_FREQ, shown ? 4321 : 1000);
        QVERIFY(action("actionPico_Amp")->isVisible());
    }

    void rateIsReadBeforeTheGraphsTakeTheirRange()
    {
        answers().displayFreq = 2000;
        build();
        auto* plot = find<QCustomPlot>(content("Graph DAC"), "graph");
        QCOMPARE(plot->xAxis->range().upper, 7.0);
    }

    void maskReshapesTheBoard_data()
    {
        QTest::addColumn<int>("mask");
        QTest::addColumn<bool>("first");
        QTest::addColumn<bool>("second");
        QTest::addColumn<bool>("box1");
        QTest::addColumn<bool>("box2");
        QTest::newRow("both") << 3 << true << true << true << true;
        QTest::newRow("only BPM2") << 2 << false << true << false << true;
        QTest::newRow("only BPM1") << 1 << true << false << true << false;
        QTest::newRow("none leaves BPM1 on the board") << 0 << true << false << false << false;
        QTest::newRow("unknown") << 7 << true << false << false << false;
    }

    void maskReshapesTheBoard()
    {
        QFETCH(int, mask);
        QFETCH(bool, first);
        QFETCH(bool, second);
        QFETCH(bool, box1);
        QFETCH(bool, box2);
        build();
        announceMask(mask == 3 ? 0 : 3);
        action("actionPico_Amp")->setVisible(false);
        announceMask(mask);
        QCOMPARE(!dock("Graph XY")->isHidden(), first);
        QCOMPARE(!dock("Graph Currents BPM1")->isHidden(), first);
        QCOMPARE(!dock("Graph XY 2")->isHidden(), second);
        QCOMPARE(!dock("Graph Currents BPM2")->isHidden(), second);
        for (const char* title : {"Graph Position X", "Graph Position Y", "Graph Intensity"}) {
            QCOMPARE(!find<QCheckBox>(content(title), "CheckCh1")->isHidden(), box1);
            QCOMPARE(!find<QCheckBox>(content(title), "CheckCh2")->isHidden(), box2);
        }
        QVERIFY(action("actionPico_Amp")->isVisible());
    }

    void maskFoundBeforeTheWindowStillArrives()
    {
        mailbox->nrIonBars = 2;
        build();
        QVERIFY(dock("Graph XY")->isHidden());
        QVERIFY(!dock("Graph XY 2")->isHidden());
        QVERIFY(!dock("Graph Currents BPM2")->isHidden());
    }

    void levelRulesOfTheMenus_data()
    {
        QTest::addColumn<int>("level");
        QTest::addColumn<bool>("manual");
        QTest::newRow("cruise") << 0 << false;
        QTest::newRow("user") << 1 << true;
        QTest::newRow("admin") << 2 << true;
        QTest::newRow("unknown") << 5 << false;
    }

    void levelRulesOfTheMenus()
    {
        QFETCH(int, level);
        QFETCH(bool, manual);
        build();
        QMetaObject::invokeMethod(window.get(), "handleUserLevelChange", Q_ARG(int, level));
        QCOMPARE(action("actionManual_Output_Control")->isEnabled(), manual);
        for (const char* closed : {"action_Rocking_Curve", "actionRocking_Curve_3D", "actionStep_Response"})
            QVERIFY(!action(closed)->isEnabled());
    }

    void levelOneLeavesTheClosedToolsAsTheyAre()
    {
        build();
        action("action_Rocking_Curve")->setEnabled(true);
        QMetaObject::invokeMethod(window.get(), "handleUserLevelChange", Q_ARG(int, 1));
        QVERIFY(action("action_Rocking_Curve")->isEnabled());
        QMetaObject::invokeMethod(window.get(), "handleUserLevelChange", Q_ARG(int, 2));
        QVERIFY(!action("action_Rocking_Curve")->isEnabled());
    }

    void entriesOpenTheirOneWindow_data()
    {
        QTest::addColumn<QString>("className");
        QTest::newRow("action_Display_Settings") << QStringLiteral("WindowDisplaySettings");
        QTest::newRow("actionPico_Amp") << QStringLiteral("WindowPico");
        QTest::newRow("action_Beamline_Settings") << QStringLiteral("WindowBeamlineConf");
        QTest::newRow("action_PID_Parameters") << QStringLiteral("WindowPIDparams");
        QTest::newRow("actionPosition_Filter_Settings") << QStringLiteral("WindowFiltparams");
        QTest::newRow("action_ROC_ROI") << QStringLiteral("WindowROC_ROI");
        QTest::newRow("actionSFP_info") << QStringLiteral("WindowSFPstatus");
        QTest::newRow("action_Login") << QStringLiteral("DialogLogin");
        QTest::newRow("actionStep_Response") << QStringLiteral("WindowStepResponse");
        QTest::newRow("actionFrequency_Analysis") << QStringLiteral("WindowFrequencyAnalysis");
        QTest::newRow("actionManual_Output_Control") << QStringLiteral("WindowManOutCtrl");
    }

    void entriesOpenTheirOneWindow()
    {
        QFETCH(QString, className);
        build();
        QAction* entry = action(QTest::currentDataTag());
        entry->setEnabled(true);
        QCOMPARE(windowsOf(qPrintable(className)).size(), 1);
        QVERIFY(windowsOf(qPrintable(className)).first()->isHidden());
        entry->trigger();
        entry->trigger();
        QCOMPARE(windowsOf(qPrintable(className)).size(), 1);
        QVERIFY(!windowsOf(qPrintable(className)).first()->isHidden());
    }

    void entriesOpenANewWindowEachTime_data()
    {
        QTest::addColumn<QString>("className");
        QTest::newRow("action_Rocking_Curve") << QStringLiteral("WindowRockingCurve");
        QTest::newRow("actionRocking_Curve_3D") << QStringLiteral("WindowRocking3D");
        QTest::newRow("action_Save_Data") << QStringLiteral("WindowSaveData");
        QTest::newRow("action_About") << QStringLiteral("about");
    }

    void entriesOpenANewWindowEachTime()
    {
        QFETCH(QString, className);
        build();
        QAction* entry = action(QTest::currentDataTag());
        entry->setEnabled(true);
        QVERIFY(windowsOf(qPrintable(className)).isEmpty());
        entry->trigger();
        entry->trigger();
        QCOMPARE(windowsOf(qPrintable(className)).size(), 2);
        windowsOf(qPrintable(className)).first()->close();
        QCOMPARE(windowsOf(qPrintable(className)).size(), 2);
    }

    void logEntryShowsTheLogWindow()
    {
        build();
        action("action_Log")->trigger();
        QVERIFY(!window->logWindow()->isHidden());
        QCOMPARE(windowsOf("QsLogging::Window").size(), 1);
    }

    void closingTheMainWindowIsTheEndAlsoWithTheLogOpen()
    {
        build();
        window->show();
        action("action_Log")->trigger();
        QTimer::singleShot(0, window.get(), SLOT(close()));
        QTimer tooLate;
        connect(&tooLate, SIGNAL(timeout()), qApp, SLOT(quit()));
        QSignalSpy stayedOpen(&tooLate, SIGNAL(timeout()));
        tooLate.start(3000);
        QApplication::exec();
        QCOMPARE(stayedOpen.count(), 0);
    }

    void openingTheLoginEmitsThePresentLevelAgain()
    {
        build();
        userLevel = 2;
        QSignalSpy levels(loginDialog, SIGNAL(userLevelChanged(int)));
        action("action_Login")->trigger();
        QCOMPARE(levels.count(), 1);
        QCOMPARE(levels.at(0).at(0).toInt(), 2);
        QVERIFY(action("actionManual_Output_Control")->isEnabled());
    }

    void slotsStandInTheirOrder()
    {
        const QMetaObject& object = MainWindow::staticMetaObject;
        QStringList found;
        for (int i = object.methodOffset(); i < object.methodCount(); ++i) {
            const QMetaMethod method = object.method(i);
            if (method.methodType() != QMetaMethod::Slot)
                continue;
            QCOMPARE(method.access(), QMetaMethod::Private);
            found.append(QString::fromLatin1(method.methodSignature()));
        }
        QCOMPARE(found.join(QLatin1Char(' ')),
                 QStringLiteral("nr_ionbars_changed(int) showBeamlineConf() showSFPinfo() dockDestroyed() "
                                "showPIDparams() showFiltparams() showRockCurve() showROCwindow() "
                                "showRockCurve3D() showPicoWindow() showSaveDataWindow() showLoginDialog() "
                                "showAboutDialog() Exit() showStepResponse() showDispSettings() "
                                "handleUserLevelChange(int) showManualOutputControl() showLogWindow() "
                                "showFrequencyAnalysisWindow()"));
    }

    void exitEndsTheEventLoopWithStatusZero()
    {
        build();
        QTimer::singleShot(0, action("action_Exit"), SLOT(trigger()));
        QCOMPARE(QCoreApplication::exec(), 0);
    }
};

QTEST_MAIN(MainWindowTest)
#include "MainWindowTest.moc"
