#pragma once

#include <cstdint>
#include <ctime>

namespace kora::simulation {

/// Time since the machine was started, ns: the same in all its processes, also in one whose other clocks are driven.
inline std::int64_t kernelNanoseconds()
{
    timespec now = {};
    clock_gettime(CLOCK_BOOTTIME, &now);
    return std::int64_t(now.tv_sec) * 1000000000 + now.tv_nsec;
}

} // namespace kora::simulation
