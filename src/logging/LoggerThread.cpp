#include "logging/LoggerThread.h"

#include "logging/Logger.h"

#include <QMutexLocker>

#include <utility>

namespace QsLogging {

LoggerThread::LoggerThread(Logger& owner) : logger(owner) {}

void LoggerThread::push(const LogMessage& message)
{
    const QMutexLocker locker(&queueMutex);
    queue.push_back(message);
    queueCondition.wakeOne();
}

void LoggerThread::shutDown()
{
    if (!isRunning())
        return;
    {
        const QMutexLocker locker(&queueMutex);
        requestInterruption();
        queueCondition.wakeOne();
    }
    wait();
}

void LoggerThread::run()
{
    for (;;) {
        QMutexLocker locker(&queueMutex);
        if (queue.empty() && !isInterruptionRequested())
            queueCondition.wait(&queueMutex);
        if (isInterruptionRequested())
            return;
        // Nothing was queued if the wait ended for no reason.
        if (queue.empty())
            continue;
        const LogMessage message = std::move(queue.front());
        queue.pop_front();
        locker.unlock();
        logger.write(message);
    }
}

} // namespace QsLogging
