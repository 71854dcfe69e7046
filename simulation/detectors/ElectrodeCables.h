#pragma once

#include "simulation/InstallationState.h"
#include "simulation/detectors/QuadrantDetector.h"

#include <algorithm>

namespace kora::simulation {

/// The four cables from the electrodes of a detector to the channels of its amplifier.
class ElectrodeCables
{
public:
    /// @return false, and nothing changes, for a channel outside -1 to 3 or one that two cables would share
    bool connect(const ElectrodeChannels& wanted)
    {
        for (const int channel : wanted)
            if (channel < -1 || channel > 3 || (channel >= 0 && std::count(wanted.begin(), wanted.end(), channel) > 1))
                return false;
        channels = wanted;
        return true;
    }
    const ElectrodeChannels& connected() const { return channels; }

    /// Channel currents out of electrode currents; a channel without a cable carries nothing.
    FourValues carry(const FourValues& electrodes) const
    {
        FourValues amps = {};
        for (std::size_t electrode = 0; electrode < channels.size(); ++electrode)
            if (channels[electrode] >= 0)
                amps[std::size_t(channels[electrode])] = electrodes[electrode];
        return amps;
    }

private:
    ElectrodeChannels channels = {0, 1, 2, 3};
};

} // namespace kora::simulation
