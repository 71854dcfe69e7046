#include "app/MainWindow.h"

#include "app/BoardShares.h"
#include "app/DockTitleButtons.h"
#include "app/Globals.h"
#include "app/HiddenDockFocusGuard.h"
#include "app/TabOrder.h"
#include "feedback/WidgetFeedbackControl.h"
#include "feedback/WidgetPidCtrl.h"
#include "feedback/WindowBeamlineConf.h"
#include "feedback/WindowFiltparams.h"
#include "feedback/WindowManOutCtrl.h"
#include "feedback/WindowPIDparams.h"
#include "feedback/WindowROC_ROI.h"
#include "graphs/PlotTheme.h"
#include "graphs/WidgetGraphCurrents.h"
#include "graphs/WidgetGraphFFT.h"
#include "graphs/WidgetGraphInt.h"
#include "graphs/WidgetGraphPos.h"
#include "graphs/WidgetGraphXY.h"
#include "hardware/MailboxComm.h"
#include "hardware/VersionText.h"
#include "stream/SignalTable.h"
#include "stream/Updater.h"
#include "support/DialogLogin.h"
#include "support/Legibility.h"
#include "support/ScreenFit.h"
#include "support/WindowDisplaySettings.h"
#include "support/WindowPico.h"
#include "support/WindowSFPstatus.h"
#include "support/about.h"
#include "tools/WindowFrequencyAnalysis.h"
#include "tools/WindowRocking3D.h"
#include "tools/WindowRockingCurve.h"
#include "tools/WindowSaveData.h"
#include "tools/WindowStepResponse.h"
#include "ui_MainWindow.h"

#include <QDockWidget>

namespace {

constexpr int fixedDisplayRate = 1000;

/// What an action of the menus triggers.
struct ActionSlot
{
    QAction* Ui::MainWindow::*action;
    const char* slot;
};

const ActionSlot actionSlots[] = {
    {&Ui::MainWindow::action_Exit, SLOT(Exit())},
    {&Ui::MainWindow::action_Display_Settings, SLOT(showDispSettings())},
    {&Ui::MainWindow::actionPico_Amp, SLOT(showPicoWindow())},
    {&Ui::MainWindow::action_Beamline_Settings, SLOT(showBeamlineConf())},
    {&Ui::MainWindow::action_PID_Parameters, SLOT(showPIDparams())},
    {&Ui::MainWindow::actionPosition_Filter_Settings, SLOT(showFiltparams())},
    {&Ui::MainWindow::action_ROC_ROI, SLOT(showROCwindow())},
    {&Ui::MainWindow::actionSFP_info, SLOT(showSFPinfo())},
    {&Ui::MainWindow::action_Login, SLOT(showLoginDialog())},
    {&Ui::MainWindow::action_Rocking_Curve, SLOT(showRockCurve())},
    {&Ui::MainWindow::actionRocking_Curve_3D, SLOT(showRockCurve3D())},
    {&Ui::MainWindow::actionStep_Response, SLOT(showStepResponse())},
    {&Ui::MainWindow::actionFrequency_Analysis, SLOT(showFrequencyAnalysisWindow())},
    {&Ui::MainWindow::actionManual_Output_Control, SLOT(showManualOutputControl())},
    {&Ui::MainWindow::action_Save_Data, SLOT(showSaveDataWindow())},
    {&Ui::MainWindow::action_Log, SLOT(showLogWindow())},
    {&Ui::MainWindow::action_About, SLOT(showAboutDialog())},
};

/// Registers the traces of a time-series graph with the updater, then labels it.
template <typename Graph>
void connectTimeGraph(Graph* graph, GraphKind kind)
{
    QStringList names;
    const std::vector<const StreamSignal*> traces = tracesOf(kind);
    for (const StreamSignal* signal : traces) {
        updater->setGraphData(kind, names.size(), graph->dataMap(names.size()));
        names.append(QLatin1String(signal->trace.legend));
    }
    QObject::connect(updater, SIGNAL(replotGraphs()), graph, SLOT(replot()));
    graph->setLabels(QStringLiteral("Time [s]"), plot_theme::axisTitle(traces.front()->quantity), names);
}

/// A window that is open already may be covered or an icon. A closed one comes up in front when it is shown.
void bringToFrontIfOpen(QWidget* window)
{
    if (!window->isVisible())
        return;
    window->setWindowState(window->windowState() & ~Qt::WindowMinimized);
    window->raise();
    window->activateWindow();
}

/// A new tool window, opened.
template <typename Window>
void openNew(QWidget* parent)
{
    auto* window = new Window(parent);
    new ScreenFit(window);
    window->show();
}

/// Fills a dock and puts it behind the tabs of another dock.
void placeBehindTabs(QMainWindow* mainWindow, QDockWidget* first, QDockWidget* dock, QWidget* content)
{
    dock->setWidget(content);
    mainWindow->addDockWidget(Qt::BottomDockWidgetArea, dock);
    mainWindow->tabifyDockWidget(first, dock);
}

} // namespace

MainWindow::MainWindow(QWidget* parent) : QMainWindow(parent), ui(std::make_unique<Ui::MainWindow>())
{
    legibility::keepLockedFieldsLegible();
    ui->setupUi(this);
    // Out of the layout at once, so that the docks share the whole window from the first moment.
    takeCentralWidget()->deleteLater();
    // It holds nothing: neither room for it nor an entry without a name in the menu of the docks.
    ui->mainToolBar->hide();
    ui->mainToolBar->toggleViewAction()->setVisible(false);
    setWindowTitle(QStringLiteral("KORA Local User Interface v") + QLatin1String(guiVersion));

    // The graphs take their first time range from the display rate.
    applyFirmwareGate();
    ui->actionPico_Amp->setVisible(true);

    createWidgets();
    createWindows();
    fillFormDocks();
    connectActions();
    connectDeviceMask();
    connectXyGraph(graphXY1, KindXY1);
    connectXyGraph(graphXY2, KindXY2);
    connectFftGraph();
    connectTimeGraphs();
    arrangeDocks();
    orderFields();
    initialiseFeedbackControl();

    // Devices that were found before the connections existed.
    mailbox->emitNrIonBars();
    handleUserLevelChange(userLevel);
}

MainWindow::~MainWindow() = default;

void MainWindow::applyFirmwareGate()
{
    const bool variableRate = firmwareHasVariableRate(swVersionText);
    SAMP_FREQ = variableRate ? int(mailbox->getDisplayFreq(nullptr)) : fixedDisplayRate;
    ui->action_Display_Settings->setVisible(variableRate);
}

void MainWindow::createWidgets()
{
    graphXY1 = new WidgetGraphXY(0, this);
    graphXY2 = new WidgetGraphXY(1, this);
    graphFFT = new WidgetGraphFFT(this);
    feedbackControl = new WidgetFeedbackControl(this);
    pidCtrl = new WidgetPidCtrl(this);
    graphCurrents1 = new WidgetGraphCurrents(this, traceCount(KindCurrents1), KindCurrents1);
    graphCurrents2 = new WidgetGraphCurrents(this, traceCount(KindCurrents2), KindCurrents2);
    graphDAC = new WidgetGraphCurrents(this, traceCount(KindDAC), KindDAC);
    dockCurrents1 = new QDockWidget(QStringLiteral("Graph Currents BPM1"), this);
    dockCurrents1->setObjectName(QStringLiteral("dockCurrents1"));
    dockCurrents1->hide();
    dockCurrents2 = new QDockWidget(QStringLiteral("Graph Currents BPM2"), this);
    dockCurrents2->setObjectName(QStringLiteral("dockCurrents2"));
    dockCurrents2->hide();
    graphPosX = new WidgetGraphPos(this, 0, traceCount(KindPosX));
    graphPosY = new WidgetGraphPos(this, 1, traceCount(KindPosY));
    graphInt = new WidgetGraphInt(this, traceCount(KindInt));
}

void MainWindow::createWindows()
{
    beamlineConf = new WindowBeamlineConf(this);
    pidParams = new WindowPIDparams(this);
    filtParams = new WindowFiltparams(this);
    rocRoi = new WindowROC_ROI(this);
    stepResponse = new WindowStepResponse(this);
    displaySettings = new WindowDisplaySettings(this);
    manOutCtrl = new WindowManOutCtrl(this);
    pico = new WindowPico(this);
    frequencyAnalysis = new WindowFrequencyAnalysis(this);
    sfpStatus = new WindowSFPstatus(this);
    for (QWidget* dialog : findChildren<QDialog*>())
        new ScreenFit(dialog);
}

void MainWindow::fillFormDocks()
{
    ui->dockXY1->setWidget(graphXY1);
    ui->dockXY2->setWidget(graphXY2);
    ui->dockFBctrl->setWidget(feedbackControl);
    ui->dockFFT->setWidget(graphFFT);
    ui->dockPID->setWidget(pidCtrl);
    ui->dockXY1->setVisible(mailbox->nrIonBars != 2);
    ui->dockXY2->setVisible(mailbox->nrIonBars != 1);
}

void MainWindow::connectActions()
{
    for (const ActionSlot& row : actionSlots)
        connect(ui.get()->*row.action, SIGNAL(triggered()), this, row.slot);
    connect(ui->dockFFT, SIGNAL(visibilityChanged(bool)), this, SLOT(dockDestroyed()));
}

void MainWindow::connectDeviceMask()
{
    connect(mailbox, SIGNAL(nrIonBarsChanged(int)), this, SLOT(nr_ionbars_changed(int)));
    connect(mailbox, SIGNAL(nrIonBarsChanged(int)), beamlineConf, SLOT(nr_ionbars_changed(int)));
    connect(mailbox, SIGNAL(nrIonBarsChanged(int)), feedbackControl, SLOT(nr_ionbars_changed(int)));
    connect(mailbox, SIGNAL(nrIonBarsChanged(int)), rocRoi, SLOT(nrIonbarChanged(int)));
}

void MainWindow::connectXyGraph(WidgetGraphXY* graph, int kind)
{
    QCPDataMap* map = graph->dataMap();
    graph->resetZoom();
    updater->setGraphData(kind, 0, map);
    connect(updater, SIGNAL(replotGraphs()), graph, SLOT(replot()));
    connect(feedbackControl, SIGNAL(somethingChanged()), graph, SLOT(updateGraphXY()));
    connect(graph, SIGNAL(XYchanged()), feedbackControl, SLOT(updateXYfields()));
    connect(beamlineConf, SIGNAL(BPMscaleChanged()), graph, SLOT(resetZoom()));
    connect(feedbackControl, SIGNAL(BPMselectorChanged()), graph, SLOT(updateGraphXY()));
}

void MainWindow::connectFftGraph()
{
    updater->setGraphData(KindFFT, 0, graphFFT->dataMap());
    connect(updater, SIGNAL(replotGraphs()), graphFFT, SLOT(replot()));
}

void MainWindow::connectTimeGraphs()
{
    auto* dockDac = new QDockWidget(QStringLiteral("Graph DAC"), this);
    auto* dockPosX = new QDockWidget(QStringLiteral("Graph Position X"), this);
    auto* dockPosY = new QDockWidget(QStringLiteral("Graph Position Y"), this);
    auto* dockInt = new QDockWidget(QStringLiteral("Graph Intensity"), this);

    placeBehindTabs(this, ui->dockFFT, dockCurrents1, graphCurrents1);
    connectTimeGraph(graphCurrents1, KindCurrents1);
    placeBehindTabs(this, ui->dockFFT, dockCurrents2, graphCurrents2);
    connectTimeGraph(graphCurrents2, KindCurrents2);
    placeBehindTabs(this, ui->dockFFT, dockDac, graphDAC);
    connectTimeGraph(graphDAC, KindDAC);
    placeBehindTabs(this, ui->dockFFT, dockPosX, graphPosX);
    connectTimeGraph(graphPosX, KindPosX);
    placeBehindTabs(this, ui->dockFFT, dockPosY, graphPosY);
    connectTimeGraph(graphPosY, KindPosY);
    placeBehindTabs(this, ui->dockFFT, dockInt, graphInt);
    connectTimeGraph(graphInt, KindInt);

    graphPosX->chEnablesChanged();
    graphPosY->chEnablesChanged();
}

void MainWindow::arrangeDocks()
{
    ui->dockFFT->raise();
    auto* shares = new BoardShares(this);
    shares->share(Qt::Vertical, {{ui->dockXY1, 48}, {ui->dockFFT, 52}});
    shares->share(Qt::Horizontal, {{ui->dockXY1, 33}, {ui->dockXY2, 33}, {ui->dockFBctrl, 34}});
    shares->share(Qt::Horizontal, {{ui->dockFFT, 75}, {ui->dockPID, 25}});
    for (QDockWidget* dock : findChildren<QDockWidget*>())
        new DockTitleButtons(dock);
}

void MainWindow::orderFields()
{
    // The panels as they stand on the board, not as they were made. The PID panel is left behind, at the end, where it
    // belongs.
    orderTabKey({graphXY1, graphXY2, feedbackControl, graphFFT, graphCurrents1, graphCurrents2, graphDAC, graphPosX,
                 graphPosY, graphInt});
    for (QDockWidget* dock : findChildren<QDockWidget*>())
        new HiddenDockFocusGuard(dock);
}

void MainWindow::initialiseFeedbackControl()
{
    feedbackControl->confChanged(mailbox->getPIDconf());
    feedbackControl->updateXYfields();
    feedbackControl->updateHeartbeat(PID_Status_Type(mailbox->pidStatus));
}

void MainWindow::connectLoginDialog()
{
    new ScreenFit(loginDialog);
    connect(loginDialog, SIGNAL(userLevelChanged(int)), feedbackControl, SLOT(checkUserLevel()));
    connect(loginDialog, SIGNAL(userLevelChanged(int)), pidCtrl, SLOT(enableAndDisableFields()));
    connect(loginDialog, SIGNAL(userLevelChanged(int)), rocRoi, SLOT(checkUserLevel()));
    connect(loginDialog, SIGNAL(userLevelChanged(int)), beamlineConf, SLOT(checkUserLevel()));
    connect(loginDialog, SIGNAL(userLevelChanged(int)), this, SLOT(handleUserLevelChange(int)));
}

void MainWindow::nr_ionbars_changed(int mask)
{
    const bool bpm1Shown = mask != 2;
    const bool bpm2Shown = mask == 2 || mask == 3;
    ui->dockXY1->setVisible(bpm1Shown);
    dockCurrents1->setVisible(bpm1Shown);
    ui->dockXY2->setVisible(bpm2Shown);
    dockCurrents2->setVisible(bpm2Shown);

    const bool box1Hidden = mask != 1 && mask != 3;
    const bool box2Hidden = mask != 2 && mask != 3;
    graphInt->setChannelHidden(box1Hidden, box2Hidden);
    graphPosX->setChannelHidden(box1Hidden, box2Hidden);
    graphPosY->setChannelHidden(box1Hidden, box2Hidden);
    ui->actionPico_Amp->setVisible(true);
}

void MainWindow::handleUserLevelChange(int user_level)
{
    // Level 1 leaves the three as they are, and no level enables them: these tools stay closed to the operator.
    if (user_level != 1) {
        ui->action_Rocking_Curve->setEnabled(false);
        ui->actionRocking_Curve_3D->setEnabled(false);
        ui->actionStep_Response->setEnabled(false);
    }
    ui->actionManual_Output_Control->setEnabled(user_level == 1 || user_level == 2);
}

void MainWindow::showBeamlineConf()
{
    bringToFrontIfOpen(beamlineConf);
    beamlineConf->showAndRefresh();
}

void MainWindow::showSFPinfo()
{
    bringToFrontIfOpen(sfpStatus);
    sfpStatus->show();
}

void MainWindow::dockDestroyed() {}

void MainWindow::showPIDparams()
{
    bringToFrontIfOpen(pidParams);
    pidParams->show();
}

void MainWindow::showFiltparams()
{
    bringToFrontIfOpen(filtParams);
    filtParams->showWindow();
}

void MainWindow::showRockCurve()
{
    openNew<WindowRockingCurve>(this);
}

void MainWindow::showROCwindow()
{
    rocRoi->setUpdater(updater);
    rocRoi->setBeamlineWindow(beamlineConf);
    rocRoi->setGraph(graphXY1, 0);
    rocRoi->setGraph(graphXY2, 1);
    bringToFrontIfOpen(rocRoi);
    rocRoi->showWindow();
}

void MainWindow::showRockCurve3D()
{
    openNew<WindowRocking3D>(this);
}

void MainWindow::showPicoWindow()
{
    bringToFrontIfOpen(pico);
    pico->show();
}

void MainWindow::showSaveDataWindow()
{
    openNew<WindowSaveData>(this);
}

void MainWindow::showLoginDialog()
{
    loginDialog->showCurrentLevel();
    bringToFrontIfOpen(loginDialog);
    loginDialog->show();
}

void MainWindow::showAboutDialog()
{
    openNew<about>(this);
}

void MainWindow::Exit()
{
    QCoreApplication::exit(0);
}

void MainWindow::showStepResponse()
{
    bringToFrontIfOpen(stepResponse);
    stepResponse->showTool();
}

void MainWindow::showDispSettings()
{
    bringToFrontIfOpen(displaySettings);
    displaySettings->showAndRefresh();
}

void MainWindow::showManualOutputControl()
{
    bringToFrontIfOpen(manOutCtrl);
    manOutCtrl->showWindow();
}

void MainWindow::showLogWindow()
{
    bringToFrontIfOpen(&window);
    window.show();
}

void MainWindow::showFrequencyAnalysisWindow()
{
    bringToFrontIfOpen(frequencyAnalysis);
    frequencyAnalysis->showTool();
}
