// Driven time for the unchanged program on the unchanged simulated installation: a library to be loaded before all
// others,
//
//   LD_PRELOAD=libkora_driven_clock.so LD_LIBRARY_PATH=simulation kora-local-ui
//
// Time stands still while the GUI thread or the poll thread computes, and jumps to the next timer or to the end of the
// next pause when both wait; a day of live display takes as long as its computing. The clocks of the process show
// driven time, the time of day included. Threads that wait for nothing but each other (the logger, the X connection,
// OpenGL, the training console) neither hold the time nor see it pass. The display and window manager live in real
// time: their answers may come when much driven time has passed, unless KORA_CLOCK_SETTLE gives them room.
//
// A loop that looks at the clock without ever waiting waits forever. Qt must use its own event dispatcher, not GLib's:
// the library sets QT_NO_GLIB.
//
// KORA_CLOCK_UNTIL    driven seconds after which the process gets SIGTERM, upon which the program ends as by its menu
// KORA_CLOCK_SETTLE   real microseconds for which all must be quiet before time jumps; none if not given
// KORA_CLOCK_WORK     driven microseconds that one service of the display or of the poll takes; none if not given
// KORA_CLOCK_REPORT   file that at the end tells when the display and the poll were served, and the memory by the hour

#include "clock/DrivenTime.h"
#include "clock/ServiceReport.h"

#include <sys/time.h>

#include <cerrno>
#include <cstdlib>

#define KORA_EXPORT __attribute__((visibility("default")))

using namespace driven_clock;

namespace {

bool isDriven(clockid_t clock)
{
    switch (clock) {
    case CLOCK_MONOTONIC:
    case CLOCK_MONOTONIC_COARSE:
    case CLOCK_MONOTONIC_RAW:
    case CLOCK_REALTIME:
    case CLOCK_REALTIME_COARSE:
        return true;
    default:
        return false;
    }
}

__attribute__((constructor)) void prepareProcess()
{
    setenv("QT_NO_GLIB", "1", 1);
    DrivenTime::instance();
}

} // namespace

extern "C" {

KORA_EXPORT int clock_gettime(clockid_t clock, timespec* time) noexcept
{
    static auto* const real = next<int(clockid_t, timespec*)>("clock_gettime");
    if (!isDriven(clock))
        return real(clock, time);
    *time = timeOf(DrivenTime::instance().now(clock));
    return 0;
}

KORA_EXPORT int gettimeofday(timeval* time, void*) noexcept
{
    const timespec now = timeOf(DrivenTime::instance().now(CLOCK_REALTIME));
    *time = {now.tv_sec, now.tv_nsec / 1000};
    return 0;
}

KORA_EXPORT int ppoll(pollfd* files, nfds_t count, const timespec* timeout, const sigset_t* mask)
{
    static auto* const real = next<int(pollfd*, nfds_t, const timespec*, const sigset_t*)>("ppoll");
    DrivenTime& time = DrivenTime::instance();
    if (!timeout && !time.takesPart())
        return real(files, count, timeout, mask);
    const timespec none = {};
    const int ready = real(files, count, &none, mask);
    if (ready != 0 || (timeout && nanoseconds(*timeout) <= 0))
        return ready;
    const std::int64_t deadline = timeout ? time.now(CLOCK_MONOTONIC) + nanoseconds(*timeout) : never;
    return time.wait(files, count, deadline, mask, files);
}

KORA_EXPORT int nanosleep(const timespec* duration, timespec* left)
{
    static auto* const real = next<int(const timespec*, timespec*)>("nanosleep");
    DrivenTime& time = DrivenTime::instance();
    if (!time.takesPart())
        return real(duration, left);
    const std::int64_t deadline = time.now(CLOCK_MONOTONIC) + nanoseconds(*duration);
    const int result = time.wait(nullptr, 0, deadline, nullptr, nullptr);
    if (result < 0 && left)
        *left = timeOf(deadline - time.now(CLOCK_MONOTONIC));
    return result < 0 ? -1 : 0;
}

/// A deadline that was reckoned by the driven clock; the wait itself is for another thread and takes real time.
KORA_EXPORT int pthread_cond_timedwait(pthread_cond_t* condition, pthread_mutex_t* mutex, const timespec* deadline)
{
    static auto* const real = next<int(pthread_cond_t*, pthread_mutex_t*, const timespec*)>("pthread_cond_timedwait");
    const timespec realDeadline = timeOf(DrivenTime::instance().realTime(nanoseconds(*deadline)));
    return real(condition, mutex, &realDeadline);
}

KORA_EXPORT int getBuffer(void* destination, int samples)
{
    static auto* const real = next<int(void*, int)>("getBuffer");
    ServiceReport::instance().count(ServiceReport::Display);
    return real(destination, samples);
}

KORA_EXPORT PID_Status_Type getPIDstatus()
{
    static auto* const real = next<PID_Status_Type()>("getPIDstatus");
    ServiceReport::instance().count(ServiceReport::Poll);
    return real();
}
}
