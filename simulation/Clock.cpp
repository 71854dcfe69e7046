#include "simulation/Clock.h"

#include <chrono>

namespace kora::simulation {

double MonotonicClock::seconds() const
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

} // namespace kora::simulation
