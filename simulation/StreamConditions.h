#pragma once

#include "simulation/Rates.h"

#include <array>
#include <cstdint>

namespace kora::simulation {

/// What a reader of the display stream has to know of the installation besides the records.
struct StreamConditions
{
    std::int64_t kept;    ///< records in the ring
    std::int64_t awaited; ///< records that count for a read that waits: since the rate was last set, if it ever was
    std::int32_t hertz;
    std::int32_t missingRecords; ///< of each block
    bool garbageBlocks;
    bool drivenClock;
    bool bufferFails; ///< getBuffer is told to fail
    std::array<bool, 4> devicePresent;

    /// Steps of the physics until `count` records can be read; 0 on a stream of 0 Hz, which is not waited for.
    std::int64_t missingSteps(int count) const
    {
        const std::int64_t missing = count - awaited;
        return missing <= 0 || hertz == 0 ? 0 : (missing * physicsRate + hertz - 1) / hertz;
    }
};

} // namespace kora::simulation
