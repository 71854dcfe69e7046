#pragma once

#include "app/MainWindow.h"
#include "simulation/SimulationControl.h"
#include "support/World.h"

#include <QPointer>

#include <memory>

class QCustomPlot;
class QDockWidget;

/// The program's objects and windows as main makes them, on the simulated installation with a driven clock and the
/// training settings. Nothing happens but in tick().
class SimulatedSession
{
public:
    SimulatedSession();
    ~SimulatedSession();

    kora::simulation::SimulationControl& plant() { return *control; }
    MainWindow& window() { return *mainWindow; }

    /// Lets the simulated time run, then the poll, the display timer and the refresh timers of all windows.
    void tick(double seconds = 1.0);

    /// Opens the login dialog from its menu entry and logs in.
    void logIn(const QString& user, const QString& password);
    /// Triggers a menu entry by its object name.
    void trigger(const char* action);
    /// A window or panel of the main window by its class name.
    QWidget* widgetOf(const char* className, int index = 0);
    QDockWidget* dock(const QString& title);
    /// The plot in the dock of this title.
    QCustomPlot* plotOf(const QString& dockTitle);

private:
    std::unique_ptr<World> world;
    kora::simulation::SimulationControl* control;
    std::unique_ptr<MainWindow> mainWindow;
};
