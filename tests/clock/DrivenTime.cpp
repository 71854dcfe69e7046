#include "clock/DrivenTime.h"

#include <dlfcn.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>

namespace driven_clock {

namespace {

using Poll = int(pollfd*, nfds_t, const timespec*, const sigset_t*);
using GetTime = int(clockid_t, timespec*);

/// The program has two event loops; before both were seen, one of them may yet be computing on its way to the first
/// wait.
constexpr int eventLoops = 2;

/// Largest monotonic time that is told from a time of day, ns.
constexpr std::int64_t oldestDay = 1000000000 * nanosecondsPerSecond;

int realPoll(pollfd* files, nfds_t count, const timespec* timeout, const sigset_t* mask)
{
    static Poll* const real = next<Poll>("ppoll");
    return real(files, count, timeout, mask);
}

std::int64_t realNow(clockid_t clock)
{
    static GetTime* const real = next<GetTime>("clock_gettime");
    timespec time = {};
    real(clock, &time);
    return nanoseconds(time);
}

} // namespace

void* nextFunction(const char* name)
{
    void* const function = dlsym(RTLD_NEXT, name);
    if (!function)
        std::abort();
    return function;
}

std::int64_t nanoseconds(const timespec& time)
{
    return time.tv_sec * nanosecondsPerSecond + time.tv_nsec;
}

timespec timeOf(std::int64_t nanoseconds)
{
    return {nanoseconds / nanosecondsPerSecond, nanoseconds % nanosecondsPerSecond};
}

std::int64_t environmentValue(const char* name, std::int64_t unit, std::int64_t otherwise)
{
    const char* text = std::getenv(name);
    return text ? std::atoll(text) * unit : otherwise;
}

class Participant
{
public:
    Participant() : time(DrivenTime::instance()), wakeFile(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
    {
        const std::lock_guard<std::mutex> lock(time.mutex);
        time.participants.push_back(this);
        ++time.joined;
    }
    ~Participant()
    {
        const std::lock_guard<std::mutex> lock(time.mutex);
        auto& all = time.participants;
        all.erase(std::remove(all.begin(), all.end(), this), all.end());
        close(wakeFile);
        time.jumpIfAllWait();
    }
    Participant(const Participant&) = delete;
    Participant& operator=(const Participant&) = delete;

    DrivenTime& time;
    const int wakeFile; ///< readable once a jump has reached the deadline
    bool waiting = false;
    std::int64_t deadline = never;
    std::vector<pollfd> files; ///< what it waits for besides, its wake file last; may be read by others while it waits
};

namespace {

thread_local bool calledWait = false;

} // namespace

DrivenTime& DrivenTime::instance()
{
    static auto* const one = new DrivenTime;
    return *one;
}

DrivenTime::DrivenTime()
    : end(environmentValue("KORA_CLOCK_UNTIL", nanosecondsPerSecond, never)),
      settle(environmentValue("KORA_CLOCK_SETTLE", 1000, 0)), startMonotonic(realNow(CLOCK_MONOTONIC)),
      startOfDay(realNow(CLOCK_REALTIME))
{
}

void DrivenTime::spend(std::int64_t nanoseconds)
{
    const std::lock_guard<std::mutex> lock(mutex);
    jumped += nanoseconds;
}

std::int64_t DrivenTime::now(clockid_t clock)
{
    const bool isDay = clock == CLOCK_REALTIME || clock == CLOCK_REALTIME_COARSE;
    return (isDay ? startOfDay : startMonotonic) + elapsed();
}

std::int64_t DrivenTime::realTime(std::int64_t time)
{
    const clockid_t clock = time < oldestDay ? CLOCK_MONOTONIC : CLOCK_REALTIME;
    return time - now(clock) + realNow(clock);
}

bool DrivenTime::takesPart() const
{
    return calledWait;
}

int DrivenTime::wait(const pollfd* files, nfds_t count, std::int64_t deadline, const sigset_t* mask, pollfd* results)
{
    thread_local Participant self;
    calledWait = true;
    {
        const std::lock_guard<std::mutex> lock(mutex);
        self.files.assign(files, files + count);
        self.files.push_back({self.wakeFile, POLLIN, 0});
        self.deadline = deadline;
        self.waiting = true;
        jumpIfAllWait();
    }
    // Others look at self.files meanwhile.
    std::vector<pollfd> watched = self.files;
    int ready = realPoll(watched.data(), watched.size(), nullptr, mask);
    const int error = errno;

    const std::lock_guard<std::mutex> lock(mutex);
    self.waiting = false;
    if (watched.back().revents != 0)
        --ready;
    eventfd_t woken;
    eventfd_read(self.wakeFile, &woken);
    std::copy_n(watched.begin(), count, results);
    errno = error;
    return ready;
}

/// An answer to what a thread sent, or a message of another thread that was not taken yet: no time passes before.
bool DrivenTime::isAnyFileReady()
{
    std::vector<pollfd> all;
    for (const Participant* participant : participants)
        all.insert(all.end(), participant->files.begin(), participant->files.end());
    const timespec patience = timeOf(settle);
    return realPoll(all.data(), all.size(), &patience, nullptr) != 0;
}

/// Caller holds the mutex.
void DrivenTime::jumpIfAllWait()
{
    const auto waits = [](const Participant* participant) { return participant->waiting; };
    if (joined < eventLoops || !std::all_of(participants.begin(), participants.end(), waits) || isAnyFileReady())
        return;
    std::int64_t earliest = participants.empty() || end == never ? never : startMonotonic + end;
    for (const Participant* participant : participants)
        earliest = std::min(earliest, participant->deadline);
    // With nothing to wait for but files, the wait is a real one.
    if (earliest == never)
        return;
    jumped = std::max(jumped.load(), earliest - startMonotonic);
    if (jumped >= end) {
        end = never;
        kill(getpid(), SIGTERM);
    }
    for (Participant* participant : participants) {
        if (participant->deadline <= earliest) {
            participant->waiting = false;
            eventfd_write(participant->wakeFile, 1);
        }
    }
}

} // namespace driven_clock
