#include "simulation/detectors/CurrentAmplifier.h"

#include <algorithm>
#include <cmath>

namespace kora::simulation {

const FourValues& CurrentAmplifier::measure(const FourValues& electrodes)
{
    const double full = fullScale[activeRange];
    const double rms = activeRange == 0 ? noiseAmps : noiseAmps * quietRangeNoise;
    for (std::size_t i = 0; i < currents.size(); ++i)
        currents[i] = std::clamp(electrodes[i] * collected + rms * noise.next(), -full, full);
    if (isAutomatic())
        chooseRange();
    return currents;
}

bool CurrentAmplifier::setRange(int range)
{
    if (range < 0 || range > automaticRange)
        return false;
    selectedRange = range;
    if (range != automaticRange)
        activeRange = range;
    return true;
}

void CurrentAmplifier::chooseRange()
{
    double largest = 0;
    for (const double current : currents)
        largest = std::max(largest, std::fabs(current));
    // The gap between the two levels keeps a steady current from switching to and fro.
    if (largest > 0.9 * fullScale[1])
        activeRange = 0;
    else if (largest < 0.5 * fullScale[1])
        activeRange = 1;
}

void CurrentAmplifier::advanceBias(double seconds)
{
    if (!bias.advance(seconds))
        return;
    collected = 1 - 0.2 * std::exp(-bias.volts() / 120);
}

} // namespace kora::simulation
