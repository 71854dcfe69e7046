#include "simulation/outputs/FunctionGenerator.h"

#include "simulation/Rates.h"

#include <algorithm>

namespace kora::simulation {

bool FunctionGenerator::configure(const float peakToPeak[4], const float offsets[4], float hertz)
{
    const auto finite = [](float value) { return std::isfinite(value); };
    if (!std::all_of(peakToPeak, peakToPeak + 4, finite) || !std::all_of(offsets, offsets + 4, finite) ||
        !finite(hertz) || hertz < 0)
        return false;
    std::copy(peakToPeak, peakToPeak + 4, amplitude);
    std::copy(offsets, offsets + 4, offset);
    oscillator.setFrequency(double(hertz), physicsRate);
    return true;
}

bool FunctionGenerator::enable(int mode)
{
    if (mode == 0) {
        running = -1;
        return true;
    }
    if (mode < 2 || mode > 5)
        return false;
    if (running < 0)
        oscillator.setPhase(0);
    running = mode - 2;
    return true;
}

} // namespace kora::simulation
