#pragma once

#include "logging/SanitizerNotes.h"

#include <QMutex>
#include <QWaitCondition>

namespace QsLogging {

/// Holds a mutex for a scope, as QMutexLocker does, in sight of the thread sanitizer.
class MutexLock
{
public:
    explicit MutexLock(QMutex& guarded) : mutex(guarded)
    {
        mutex.lock();
        noteAcquired(&mutex);
    }
    ~MutexLock()
    {
        if (holds)
            unlock();
    }
    MutexLock(const MutexLock&) = delete;
    MutexLock& operator=(const MutexLock&) = delete;

    void unlock()
    {
        holds = false;
        noteReleased(&mutex);
        mutex.unlock();
    }
    /// Gives the mutex away until the condition is signalled.
    void wait(QWaitCondition& condition)
    {
        noteReleased(&mutex);
        condition.wait(&mutex);
        noteAcquired(&mutex);
    }

private:
    QMutex& mutex;
    bool holds = true;
};

} // namespace QsLogging
