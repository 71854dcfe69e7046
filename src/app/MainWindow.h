#pragma once

#include "logging/LogWindow.h"

#include <QMainWindow>

#include <memory>

class DialogLogin;
class QAction;
class WidgetFeedbackControl;
class WidgetGraphCurrents;
class WidgetGraphFFT;
class WidgetGraphInt;
class WidgetGraphPos;
class WidgetGraphXY;
class WidgetPidCtrl;
class WindowBeamlineConf;
class WindowDisplaySettings;
class WindowFiltparams;
class WindowFrequencyAnalysis;
class WindowManOutCtrl;
class WindowPIDparams;
class WindowPico;
class WindowROC_ROI;
class WindowSFPstatus;
class WindowStepResponse;

namespace Ui {
class MainWindow;
}

/// The one top-level window: a board of docks, the menus that open the tool windows, and the wiring between the
/// stream, the control library's poller, the login and the widgets. It holds nothing of the measurement itself.
/// GUI thread only; nr_ionbars_changed() arrives from the poller's thread as a queued signal.
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    /// @param parent null in this program
    explicit MainWindow(QWidget* parent = nullptr);
    ~MainWindow() override;

    /// Where main points the log destination.
    QsLogging::Window* logWindow() { return &window; }

    /// Connects the login dialog of this window to everything that goes by the user level.
    Q_INVOKABLE void connectLoginDialog();

private slots:
    void nr_ionbars_changed(int mask);
    void showBeamlineConf();
    void showSFPinfo();
    void dockDestroyed();
    void showPIDparams();
    void showFiltparams();
    void showRockCurve();
    void showROCwindow();
    void showRockCurve3D();
    void showPicoWindow();
    void showSaveDataWindow();
    void showLoginDialog();
    void showAboutDialog();
    void Exit();
    void showStepResponse();
    void showDispSettings();
    void handleUserLevelChange(int user_level);
    void showManualOutputControl();
    void showLogWindow();
    void showFrequencyAnalysisWindow();

private:
    void applyFirmwareGate();
    void createWidgets();
    void createWindows();
    void fillFormDocks();
    void connectActions();
    void connectDeviceMask();
    void connectXyGraph(WidgetGraphXY* graph, int kind);
    void connectFftGraph();
    void connectTimeGraphs();
    void arrangeDocks();
    void orderFields();
    void initialiseFeedbackControl();

    /// A child as well, so that it stays above the main window and does not outlive it on the screen.
    QsLogging::Window window{this};
    std::unique_ptr<Ui::MainWindow> ui;
    WidgetGraphXY* graphXY1 = nullptr;
    WidgetGraphXY* graphXY2 = nullptr;
    WidgetGraphFFT* graphFFT = nullptr;
    WidgetFeedbackControl* feedbackControl = nullptr;
    WidgetPidCtrl* pidCtrl = nullptr;
    WidgetGraphCurrents* graphCurrents1 = nullptr;
    WidgetGraphCurrents* graphCurrents2 = nullptr;
    WidgetGraphCurrents* graphDAC = nullptr;
    WidgetGraphPos* graphPosX = nullptr;
    WidgetGraphPos* graphPosY = nullptr;
    WidgetGraphInt* graphInt = nullptr;
    WindowBeamlineConf* beamlineConf = nullptr;
    WindowPIDparams* pidParams = nullptr;
    WindowFiltparams* filtParams = nullptr;
    WindowROC_ROI* rocRoi = nullptr;
    WindowPico* pico = nullptr;
    WindowSFPstatus* sfpStatus = nullptr;
    WindowStepResponse* stepResponse = nullptr;
    WindowDisplaySettings* displaySettings = nullptr;
    WindowManOutCtrl* manOutCtrl = nullptr;
    WindowFrequencyAnalysis* frequencyAnalysis = nullptr;
    QDockWidget* dockCurrents1 = nullptr;
    QDockWidget* dockCurrents2 = nullptr;
};
