// Preloaded into the unchanged program: notes how long each turn of its GUI thread takes. The event loop waits in
// poll() or ppoll(); between two waits it works.

#include "TurnRecord.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <ctime>

namespace {

double seconds(clockid_t clock)
{
    timespec now = {};
    clock_gettime(clock, &now);
    return double(now.tv_sec) + double(now.tv_nsec) * 1e-9;
}

TurnRecord* mapRecord()
{
    const char* path = std::getenv("KORA_TURNS");
    const int file = path ? ::open(path, O_RDWR) : -1;
    if (file < 0)
        return nullptr;
    void* place = ::mmap(nullptr, sizeof(TurnRecord), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    ::close(file);
    return place == MAP_FAILED ? nullptr : static_cast<TurnRecord*>(place);
}

TurnRecord* const record = mapRecord();
TurnRecord::Turn turn = {};

bool isWaitOfGuiThread(bool waits)
{
    return record && waits && ::gettid() == ::getpid();
}

void beginTurn()
{
    turn.begin = seconds(CLOCK_MONOTONIC);
    turn.busy = seconds(CLOCK_THREAD_CPUTIME_ID);
}

void endTurn()
{
    // The first wait ends no turn.
    if (turn.begin == 0)
        return;
    turn.wall = seconds(CLOCK_MONOTONIC) - turn.begin;
    turn.busy = seconds(CLOCK_THREAD_CPUTIME_ID) - turn.busy;
    if (record->count < TurnRecord::capacity)
        record->turns[record->count] = turn;
    __atomic_fetch_add(&record->count, 1, __ATOMIC_RELEASE);
}

template <typename Function>
Function realFunction(const char* name)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

template <typename Wait>
int measured(bool waits, Wait wait)
{
    if (!isWaitOfGuiThread(waits))
        return wait();
    endTurn();
    const int ready = wait();
    beginTurn();
    return ready;
}

} // namespace

extern "C" {

__attribute__((visibility("default"))) int poll(pollfd* descriptors, nfds_t count, int timeoutMs)
{
    static const auto real = realFunction<int (*)(pollfd*, nfds_t, int)>("poll");
    return measured(timeoutMs != 0, [=] { return real(descriptors, count, timeoutMs); });
}

__attribute__((visibility("default"))) int ppoll(pollfd* descriptors, nfds_t count, const timespec* timeout,
                                                 const sigset_t* mask)
{
    static const auto real = realFunction<int (*)(pollfd*, nfds_t, const timespec*, const sigset_t*)>("ppoll");
    const bool waits = !timeout || timeout->tv_sec != 0 || timeout->tv_nsec != 0;
    return measured(waits, [=] { return real(descriptors, count, timeout, mask); });
}
}
