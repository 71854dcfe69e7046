#include "tools/ProgramEnd.h"

#include <QCoreApplication>
#include <QEvent>
#include <QEventLoop>
#include <QThread>

bool programEndRequested()
{
    if (QThread::currentThread()->loopLevel() == 0)
        return false;
    // A new loop would drop a request that is still in the queue.
    QCoreApplication::sendPostedEvents(QCoreApplication::instance(), QEvent::Quit);
    QEventLoop probe;
    QMetaObject::invokeMethod(&probe, "quit", Qt::QueuedConnection);
    // A thread whose loops were told to end starts no new one.
    return probe.exec(QEventLoop::ExcludeUserInputEvents) == -1;
}
