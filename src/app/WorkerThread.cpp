#include "app/WorkerThread.h"

#include <cstdio>
#include <cstdlib>

namespace {

constexpr unsigned long patienceMs = 5000;

} // namespace

WorkerThread::~WorkerThread()
{
    quit();
    if (wait(patienceMs))
        return;
    std::fputs("kora-local-ui: a call of the control library does not return; the program ends without it\n", stderr);
    // Without releasing anything: the thread still uses it.
    std::_Exit(EXIT_FAILURE);
}
