#pragma once

#include <poll.h>

#include <atomic>
#include <csignal>
#include <cstdint>
#include <ctime>
#include <mutex>
#include <vector>

namespace driven_clock {

/// A function of the next library in the look-up order, which is the real one.
void* nextFunction(const char* name);
template <typename Function>
Function* next(const char* name)
{
    return reinterpret_cast<Function*>(nextFunction(name));
}

constexpr std::int64_t nanosecondsPerSecond = 1000000000;
constexpr std::int64_t never = INT64_MAX;

/// A whole number out of the environment, times its unit.
std::int64_t environmentValue(const char* name, std::int64_t unit, std::int64_t otherwise);

std::int64_t nanoseconds(const timespec& time);
timespec timeOf(std::int64_t nanoseconds);

/// A thread that takes part: one that waited for a timer in an event loop once. Made and released on that thread.
class Participant;

/// The time of this process. It stands still while a thread that takes part computes; when all of them wait, it jumps
/// to the earliest of their deadlines. Safe from any thread.
class DrivenTime
{
public:
    /// Never released: threads ask for the time until the process ends.
    static DrivenTime& instance();

    /// @param clock a clock of the monotonic kind, or a clock of the day; both move in step. @return ns
    std::int64_t now(clockid_t clock);
    /// What the real clock showed when the driven one stood at `time`, for waits that are not driven. @return ns
    std::int64_t realTime(std::int64_t time);
    /// Driven time since the start of the process, ns.
    std::int64_t elapsed() const { return jumped; }
    /// Lets time pass although somebody computes, as work does that takes its time.
    void spend(std::int64_t nanoseconds);

    /// ppoll(2) until a deadline of the monotonic clock, in ns. The calling thread takes part from now on.
    int wait(const pollfd* files, nfds_t count, std::int64_t deadline, const sigset_t* mask, pollfd* results);
    /// Whether the calling thread takes part.
    bool takesPart() const;

private:
    friend class Participant;

    DrivenTime();
    void jumpIfAllWait();
    bool isAnyFileReady();

    std::mutex mutex; ///< guards what follows
    std::vector<Participant*> participants;
    int joined = 0;      ///< threads that ever took part
    std::int64_t end;    ///< driven time since the start at which the process is told to end, ns
    std::int64_t settle; ///< real time for which everything must be quiet before a jump, ns

    std::atomic<std::int64_t> jumped{0}; ///< driven time since the start, ns; written under the mutex
    const std::int64_t startMonotonic;
    const std::int64_t startOfDay;
};

} // namespace driven_clock
