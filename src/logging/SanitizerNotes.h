#pragma once

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

} // namespace QsLogging
