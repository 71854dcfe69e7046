#pragma once

#include "app/Globals.h"
#include "app/MainWindow.h"
#include "double/KoralinkDouble.h"
#include "support/DialogLogin.h"
#include "support/Operator.h"
#include "support/World.h"

#include <QAction>
#include <QDockWidget>
#include <QtTest>

#include <memory>

/// The main window on the double, built when a test says so.
class BuiltMainWindow : public QObject
{
    Q_OBJECT

protected:
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

    QAction* action(const char* name) { return operate::find<QAction>(window.get(), name); }

    QDockWidget* dock(const char* title)
    {
        for (QDockWidget* candidate : window->findChildren<QDockWidget*>()) {
            if (candidate->windowTitle() == QLatin1String(title))
                return candidate;
        }
        qFatal("no dock \"%s\"", title);
    }

    QWidget* content(const char* title) { return dock(title)->widget(); }

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
};
