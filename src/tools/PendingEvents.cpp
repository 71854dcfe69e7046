#include "tools/PendingEvents.h"

#include <QApplication>
#include <QEventLoop>
#include <QPointer>
#include <QThread>
#include <QWidget>

namespace {

/// An event loop refuses to start, with -1, from the moment that the application has been told to exit; Qt
/// has no other way to ask. Without a running event loop there is nothing that waits for the caller.
bool applicationIsQuitting()
{
    if (QThread::currentThread()->loopLevel() == 0)
        return false;
    // A quit that still waits in the queue is delivered first, since a starting loop discards it.
    QCoreApplication::sendPostedEvents(qApp, QEvent::Quit);
    QEventLoop probe;
    QMetaObject::invokeMethod(&probe, "quit", Qt::QueuedConnection);
    return probe.exec(QEventLoop::ExcludeUserInputEvents | QEventLoop::ExcludeSocketNotifiers) == -1;
}

} // namespace

bool processPendingEvents(const QWidget* window)
{
    const QPointer<const QWidget> guard(window);
    QCoreApplication::processEvents();
    const bool quitting = applicationIsQuitting();
    return guard && !quitting;
}
