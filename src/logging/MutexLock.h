#pragma once

#include <QMutex>
#include <QWaitCondition>

#if defined(__SANITIZE_THREAD__)
#include <sanitizer/tsan_interface.h>
#endif

namespace QsLogging {

// Qt's library is not instrumented, so the thread sanitizer does not see that its mutexes and threads order
// anything. These say it, in builds for the sanitizer; elsewhere they are nothing.

/// What was written before noteReleased(object) on another thread is visible from here on.
inline void noteAcquired([[maybe_unused]] void* object)
{
#if defined(__SANITIZE_THREAD__)
    __tsan_acquire(object);
#endif
}

inline void noteReleased([[maybe_unused]] void* object)
{
#if defined(__SANITIZE_THREAD__)
    __tsan_release(object);
#endif
}

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
