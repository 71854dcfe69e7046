#pragma once

#include "simulation/processor/PositionMonitor.h"

namespace kora::simulation {

/// The region of confidence: six checks, X, Y and beam-off for each BPM.
class Interlock
{
public:
    enum class Verdict
    {
        Good,
        OutOfRegion,
        BeamOff
    };

    void enable(int check, bool on) { checks[check].enabled = on; }
    bool isEnabled(int check) const { return checks[check].enabled; }
    /// @param check 3 times the BPM, plus 0 for X, 1 for Y (raw position), 2 for the beam-off intensity (A)
    /// @return false for another check or NaN; infinite limits are taken
    bool setLimits(int check, double low, double high);

    /// A beam counts as off below the high limit of its intensity; a position is out of the region when its
    /// magnitude lies outside its limits. Beam off comes first, since without a beam a position means nothing.
    /// @param hasIntensity whether that BPM's device measures one
    Verdict judge(const PositionReading readings[2], const bool hasIntensity[2]) const;

private:
    struct Check
    {
        bool enabled = false;
        double low = 0;
        double high = 0;
    };
    Check checks[6];
};

} // namespace kora::simulation
