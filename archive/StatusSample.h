#pragma once

#include "hardware/koralink.h"
#include "stream/DeviceRecords.h"

#include <cstdint>

namespace kora::archive {

/// What could not be read, as bits.
enum UnreadableItem : std::uint32_t
{
    UnreadableConfiguration = 1u << 0,
    UnreadableSetpoints = 1u << 1,
    UnreadableOutputs = 1u << 2,
    UnreadableSelectors = 1u << 3,
    UnreadableOutputSource = 1u << 4,
    UnreadableRegions = 1u << 5,
    UnreadableStatistics = 1u << 6,
    UnreadablePorts = 1u << 7,
    UnreadableAmplifier1 = 1u << 8,
    UnreadableAmplifier2 = 1u << 9,
    UnreadableRate = 1u << 10
};

/// Everything but the stream that the installation tells of one moment. What could not be read is marked, and keeps
/// the value of before.
struct StatusSample
{
    std::uint32_t unreadable = 0; ///< joined UnreadableItem bits
    std::int32_t feedback = PidStatusOff;
    std::int32_t configuration = 0;
    double setpoints[4] = {};       ///< um, by controller
    std::int32_t outputs[4] = {};   ///< output of each controller
    std::int32_t selectors[4] = {}; ///< BPM of each controller
    std::int32_t outputSource = 0;
    std::int32_t regionsEnabled[6] = {};
    BPMStats statistics = {};
    SFPinfo ports[4] = {};
    AmplifierStatus amplifiers[2] = {};
    std::int32_t rate = 0; ///< Hz
    std::int32_t filter = 0;
};

} // namespace kora::archive
