#include "app/SimulatedSession.h"

#include "app/Globals.h"
#include "app/StartedWindows.h"
#include "hardware/MailboxComm.h"
#include "hardware/SettingsPath.h"
#include "stream/Updater.h"
#include "support/DialogLogin.h"
#include "support/Operator.h"

#include <QAction>
#include <QApplication>
#include <QDockWidget>
#include <QFile>
#include <QLineEdit>
#include <QPushButton>

#include <qcustomplot.h>

using operate::find;

SimulatedSession::SimulatedSession() : world(std::make_unique<World>()), control(kora::simulation::findControl())
{
    if (!control)
        qFatal("this process does not run on the simulated installation");
    control->useDrivenClock();
    control->reset();
    if (!QFile::copy(QStringLiteral(KORA_TRAINING_SETTINGS), settingsPath()))
        qFatal("the training settings are missing");

    mainWindow = startWindows();
    QCoreApplication::processEvents();
}

SimulatedSession::~SimulatedSession()
{
    mainWindow.reset();
    loginDialog = nullptr;
}

void SimulatedSession::tick(double seconds)
{
    control->advance(seconds);
    mailbox->refreshData();
    updater->updateGraphs();
    operate::fireTimers(mainWindow.get());
    QCoreApplication::processEvents();
    // What an event loop releases when it comes round; here there is none.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void SimulatedSession::logIn(const QString& user, const QString& password)
{
    trigger("action_Login");
    find<QLineEdit>(loginDialog, "usernameLineEdit")->setText(user);
    find<QLineEdit>(loginDialog, "passwordLineEdit")->setText(password);
    operate::press(find<QPushButton>(loginDialog, "logIn"));
}

void SimulatedSession::trigger(const char* action)
{
    find<QAction>(mainWindow.get(), action)->trigger();
}

QWidget* SimulatedSession::widgetOf(const char* className, int index)
{
    for (QWidget* widget : mainWindow->findChildren<QWidget*>()) {
        if (QLatin1String(widget->metaObject()->className()) == QLatin1String(className) && index-- == 0)
            return widget;
    }
    qFatal("no %s", className);
}

QDockWidget* SimulatedSession::dock(const QString& title)
{
    for (QDockWidget* candidate : mainWindow->findChildren<QDockWidget*>()) {
        if (candidate->windowTitle() == title)
            return candidate;
    }
    qFatal("no dock \"%s\"", qPrintable(title));
}

QCustomPlot* SimulatedSession::plotOf(const QString& dockTitle)
{
    return find<QCustomPlot>(dock(dockTitle)->widget(), "graph");
}
