#pragma once

#include "simulation/detectors/QuadrantDetector.h"

namespace kora::simulation {

/// Which amplifier channel the processor takes for which electrode.
class Crossbar
{
public:
    /// Channel numbers 0 to 3, a number may stand more than once.
    /// @return false for any other number, which changes nothing
    bool connect(int top, int right, int bottom, int left)
    {
        for (const int channel : {top, right, bottom, left})
            if (channel < 0 || channel > 3)
                return false;
        channels[Top] = std::size_t(top);
        channels[Right] = std::size_t(right);
        channels[Bottom] = std::size_t(bottom);
        channels[Left] = std::size_t(left);
        return true;
    }

    /// Electrode currents out of channel currents.
    FourValues route(const FourValues& amps) const
    {
        return {amps[channels[Top]], amps[channels[Right]], amps[channels[Bottom]], amps[channels[Left]]};
    }

private:
    std::array<std::size_t, 4> channels = {0, 1, 2, 3};
};

} // namespace kora::simulation
