#include "logging/LoggerThread.h"

#include "logging/MutexLock.h"

#include <utility>

namespace QsLogging {

void LoggerThread::push(const LogMessage& message)
{
    const MutexLock lock(queueMutex);
    queue.push_back(message);
    queueCondition.wakeOne();
}

void LoggerThread::write(const LogMessage& message)
{
    const MutexLock lock(destinationMutex);
    for (const DestinationPtr& destination : destinations)
        destination->write(message);
}

void LoggerThread::shutDown()
{
    if (!isRunning())
        return;
    {
        const MutexLock lock(queueMutex);
        requestInterruption();
        queueCondition.wakeOne();
    }
    wait();
    noteAcquired(this);
}

void LoggerThread::run()
{
    for (;;) {
        MutexLock lock(queueMutex);
        if (queue.empty() && !isInterruptionRequested())
            lock.wait(queueCondition);
        if (isInterruptionRequested()) {
            noteReleased(this);
            return;
        }
        // Nothing was queued if the wait ended for no reason.
        if (queue.empty())
            continue;
        const LogMessage message = std::move(queue.front());
        queue.pop_front();
        lock.unlock();
        write(message);
    }
}

} // namespace QsLogging
