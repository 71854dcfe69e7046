#include "recorder/Clock.h"

#include <ctime>

namespace kora::recorder {

Moment SystemClock::now() const
{
    timespec monotonic = {};
    timespec wall = {};
    clock_gettime(CLOCK_MONOTONIC, &monotonic);
    clock_gettime(CLOCK_REALTIME, &wall);
    return {double(monotonic.tv_sec) + 1e-9 * double(monotonic.tv_nsec),
            wall.tv_sec * archive::nanosecondsPerSecond + wall.tv_nsec};
}

} // namespace kora::recorder
