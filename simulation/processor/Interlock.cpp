#include "simulation/processor/Interlock.h"

#include <cmath>

namespace kora::simulation {

bool Interlock::setLimits(int check, double low, double high)
{
    if (check < 0 || check > 5 || std::isnan(low) || std::isnan(high))
        return false;
    checks[check].low = low;
    checks[check].high = high;
    return true;
}

Interlock::Verdict Interlock::judge(const PositionReading readings[2], const bool hasIntensity[2]) const
{
    for (int bpm = 0; bpm < 2; ++bpm) {
        const Check& beam = checks[3 * bpm + 2];
        if (beam.enabled && hasIntensity[bpm] && readings[bpm].intensity < beam.high)
            return Verdict::BeamOff;
    }
    const auto outside = [](const Check& check, double position) {
        const double distance = std::fabs(position);
        return check.enabled && (distance > check.high || distance < check.low);
    };
    for (int bpm = 0; bpm < 2; ++bpm)
        if (outside(checks[3 * bpm], readings[bpm].x) || outside(checks[3 * bpm + 1], readings[bpm].y))
            return Verdict::OutOfRegion;
    return Verdict::Good;
}

} // namespace kora::simulation
