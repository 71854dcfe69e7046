#pragma once

#include "logging/Destination.h"
#include "logging/LogMessage.h"

#include <QMutex>
#include <QThread>
#include <QWaitCondition>

#include <deque>
#include <vector>

namespace QsLogging {

/// The worker that carries lines from the queue to the destinations, with all that it shares with the
/// callers. Only Logger uses it. The two mutexes are never held together.
class LoggerThread : public QThread
{
    Q_OBJECT

public:
    /// Any thread: puts a line at the end of the queue and wakes the worker; no I/O.
    void push(const LogMessage& message);
    /// Hands a line to every destination in order. For the worker.
    void write(const LogMessage& message);
    /// Ends the worker and waits for it; lines still in the queue are dropped.
    void shutDown();

    QMutex destinationMutex;                  ///< guards destinations
    std::vector<DestinationPtr> destinations; ///< in order of addition
    /// Current logging level. Read and written by any thread without a lock: a statement in a tight path pays
    /// one comparison, and a change shows at other threads at some later moment.
    int level = InfoLevel;

protected:
    void run() override;

private:
    QMutex queueMutex;             ///< guards queue
    QWaitCondition queueCondition; ///< wakes the worker
    std::deque<LogMessage> queue;  ///< lines waiting to be written; unbounded
};

} // namespace QsLogging
