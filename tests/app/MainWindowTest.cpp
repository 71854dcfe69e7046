#include "app/Globals.h"
#include "app/MainWindow.h"
#include "double/KoralinkDouble.h"
#include "hardware/MailboxComm.h"
#include "stream/Updater.h"
#include "support/DialogLogin.h"
#include "support/Operator.h"
#include "support/World.h"

#include <QAction>
#include <QCheckBox>
#include <QDialog>
#include <QDockWidget>
#include <QMenu>
#include <QMenuBar>
#include <QMetaMethod>
#include <QStatusBar>
#include <QToolBar>
#include <QtTest>

#include <qcustomplot.h>

#include <memory>

using namespace koralink_double;
using operate::find;

namespace {

struct DockRow {
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

class MainWindowTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<World> world;
    std::unique_ptr<MainWindow> window;

    /// Builds the window on what the test scripted before, and the login dialog as main does.
    void build(const char* swVersion = "1.0.03")
    {
        window.reset();
        swVersionText = QString::fromLatin1(swVersion);
        window = std::make_unique<MainWindow>();
        loginDialog = new DialogLogin(window.get());
        loginDialog->connectToMainWindow();
    }

    QAction* action(const char* name) { return find<QAction>(window.get(), name); }

    QDockWidget* dock(const char* title)
    {
        for (QDockWidget* candidate : window->findChildren<QDockWidget*>()) {
            if (candidate->windowTitle() == QLatin1String(title))
                return candidate;
        }
        qFatal("no dock \"%s\"", title);
    }

    QWidget* content(const char* title) { return dock(title)->widget(); }

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
    void init()
    {
        koralink_double::reset();
        world = std::make_unique<World>();
    }

    void cleanup()
    {
        window.reset();
        loginDialog = nullptr;
        world.reset();
    }

    void titleCarriesTheInterfaceVersion()
    {
        build();
        QCOMPARE(window->windowTitle(), QStringLiteral("KORA Local User Interface v1.3"));
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
        QCOMPARE(textsOf(find<QMenu>(window.get(), "menu_Tools")->actions()),
                 QStringList({QStringLiteral("&Display Settings"), QStringLiteral("Pico&Amp"),
                              QStringLiteral("&Beamline "), QStringLiteral("&PID Parameters"),
                              QStringLiteral("Position Filter Settings"), QStringLiteral("&ROC/ROI"),
                              QStringLiteral("SFP &Info"), QStringLiteral("&Login")}));
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
        QCOMPARE(dock("Feedback Control")->features(),
                 QDockWidget::DockWidgetFeatures(QDockWidget::DockWidgetMovable));
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

    void everyTraceIsRegistered()
    {
        build();
        for (int bpm = 0; bpm < 2; ++bpm) {
            QVERIFY(updater->dataXY[bpm]);
            QVERIFY(updater->dataInt[bpm]);
        }
        QVERIFY(updater->dataFFT);
        for (int channel = 0; channel < 4; ++channel) {
            QVERIFY(updater->dataCurrents[0][channel]);
            QVERIFY(updater->dataCurrents[1][channel]);
            QVERIFY(updater->dataDAC[channel]);
            QVERIFY(updater->dataPosX[channel]);
            QVERIFY(updater->dataPosY[channel]);
        }
        auto* plot = find<QCustomPlot>(content("Graph Currents BPM2"), "graph");
        QCOMPARE(plot->graph(2)->data().data(), updater->dataCurrents[1][2]);
    }

    void timeGraphsCarryTheirLabels_data()
    {
        QTest::addColumn<QString>("yLabel");
        QTest::addColumn<QStringList>("names");
        const auto four = [](const char* a, const char* b, const char* c, const char* d) {
            return QStringList({QLatin1String(a), QLatin1String(b), QLatin1String(c), QLatin1String(d)});
        };
        QTest::newRow("Graph Currents BPM1") << QStringLiteral("Current [A]")
                                             << four("Ionbar Ch1", "Ionbar Ch2", "Ionbar Ch3", "Ionbar Ch4");
        QTest::newRow("Graph Currents BPM2") << QStringLiteral("Current [A]")
                                             << four("Ionbar2 Ch1", "Ionbar2 Ch2", "Ionbar2 Ch3", "Ionbar Ch4");
        QTest::newRow("Graph DAC") << QStringLiteral("Voltage [V]")
                                   << four("DAC Ch1", "DAC Ch2", "DAC Ch3", "DAC Ch4");
        QTest::newRow("Graph Position X") << QStringLiteral("Position [um]")
                                          << four("X (BPM1)", "X (BPM2)", "X (LF)", "X (HF)");
        QTest::newRow("Graph Position Y") << QStringLiteral("Position [um]")
                                          << four("Y (BPM1)", "Y (BPM2)", "Y (LF)", "Y (HF)");
        QTest::newRow("Graph Intensity") << QStringLiteral("Intensity [A]")
                                         << QStringList({QStringLiteral("Int BPM1"), QStringLiteral("Int BPM2")});
    }

    void timeGraphsCarryTheirLabels()
    {
        QFETCH(QString, yLabel);
        QFETCH(QStringList, names);
        build();
        auto* plot = find<QCustomPlot>(content(QTest::currentDataTag()), "graph");
        QCOMPARE(plot->xAxis->label(), QStringLiteral("Time [s]"));
        QCOMPARE(plot->yAxis->label(), yLabel);
        QStringList found;
        for (int i = 0; i < plot->graphCount(); ++i)
            found.append(plot->graph(i)->name());
        QCOMPARE(found, names);
    }

    void unselectedPositionTracesStartInvisible()
    {
        mailbox->nrIonBars = 3;
        build();
        auto* plot = find<QCustomPlot>(content("Graph Position X"), "graph");
        QVERIFY(plot->graph(0)->visible());
        QVERIFY(plot->graph(1)->visible());
        QVERIFY(!plot->graph(2)->visible());
        QVERIFY(!plot->graph(3)->visible());
    }

    void secondIntensityIsDrawnUntilTheFirstToggle()
    {
        build();
        auto* plot = find<QCustomPlot>(content("Graph Intensity"), "graph");
        QVERIFY(plot->graph(1)->visible());
        auto* first = find<QCheckBox>(content("Graph Intensity"), "CheckCh1");
        first->toggle();
        first->toggle();
        QVERIFY(!plot->graph(1)->visible());
    }

    void oneTickReachesEveryGraph()
    {
        answers().fillBlock = [](DisplayRecord* block, int count) {
            for (int i = 0; i < count; ++i) {
                block[i].dac[2] = i;
                block[i].cur2[3] = 1e-6 * i;
            }
        };
        build();
        updater->updateGraphs();
        QCOMPARE(updater->dataDAC[2]->size(), 14336);
        QCOMPARE(updater->dataDAC[2]->at(77)->value, 77.0);
        auto* plot = find<QCustomPlot>(content("Graph DAC"), "graph");
        QCOMPARE(plot->yAxis->range().upper, 14335.0);
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

    void oneTickScalesEveryGraph_data()
    {
        QTest::addColumn<double>("lastKey");
        for (const char* title : {"Graph Currents BPM1", "Graph Currents BPM2", "Graph DAC", "Graph Position X",
                                  "Graph Position Y", "Graph Intensity"})
            QTest::newRow(title) << double(14335.0f / 1000.0f);
        QTest::newRow("Graph FFT") << 500.0;
    }
    void oneTickScalesEveryGraph()
    {
        QFETCH(double, lastKey);
        mailbox->nrIonBars = 3;
        build();
        answers().fillBlock = [](DisplayRecord* block, int count) {
            auto* values = reinterpret_cast<double*>(block);
            for (int i = 0; i < count * slotsPerRecord; ++i)
                values[i] = i / slotsPerRecord % 2 ? 8000.0 : -8000.0;
        };
        auto* plot = find<QCustomPlot>(content(QTest::currentDataTag()), "graph");
        QVERIFY(plot->xAxis->range().upper != lastKey);
        updater->updateGraphs();
        QCOMPARE(plot->xAxis->range().upper, lastKey);
        // The line of the spectrum, alone on a logarithmic axis, gets room on both sides.
        QVERIFY(plot->yAxis->range().contains(8000.0));
    }

    void oneTickRedrawsBothClouds()
    {
        mailbox->nrIonBars = 3;
        build();
        window->resize(1800, 980);
        window->show();
        QVERIFY(QTest::qWaitForWindowExposed(window.get()));
        QTest::qWait(50);
        QSignalSpy first(find<QCustomPlot>(content("Graph XY"), "graph"), SIGNAL(afterReplot()));
        QSignalSpy second(find<QCustomPlot>(content("Graph XY 2"), "graph"), SIGNAL(afterReplot()));
        updater->updateGraphs();
        QTRY_COMPARE(first.count(), 1);
        QTRY_COMPARE(second.count(), 1);
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
