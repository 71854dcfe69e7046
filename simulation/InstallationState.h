#pragma once

#include "simulation/Operations.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace kora::simulation {

/// Position of the beam's centre, micrometres.
struct BeamPosition
{
    double x;
    double y;
};

/// Periodic motion of the beam: x follows the cosine, y the sine. Peak values.
struct VibrationLine
{
    double frequencyHz;
    double xMicrometres;
    double yMicrometres;
};

/// Amplifier channel behind each electrode, in the order top, right, bottom, left: 0 to 3, or -1 for a cable that
/// hangs loose.
using ElectrodeChannels = std::array<int, 4>;

/// The installation at one moment, as a trainer sees it.
struct InstallationState
{
    double time;      ///< simulated seconds since power-on
    bool drivenClock; ///< the time advances on demand alone

    bool beamOn;
    double flux;           ///< relative to the nominal flux
    BeamPosition position; ///< true position at BPM1
    double driftMicrometres;
    double driftPeriodS;
    double walkMicrometres;  ///< RMS
    double noiseMicrometres; ///< RMS
    double currentNoiseAmps; ///< RMS of each amplifier channel in range 0
    std::array<VibrationLine, 8> lines;

    int feedbackStatus; ///< as getPIDstatus() gives it
    int configuration;  ///< code of the loops in use
    int streamRate;     ///< Hz
    std::array<double, 4> outputVolts;

    std::array<std::uint16_t, 4> ports; ///< product codes, 0 for an empty port
    std::array<ElectrodeChannels, 2> cables;
    std::array<bool, 4> devicePresent; ///< in the order of devicePaths
    /// How many times more each operation of the library fails, in the order of operationNames; -1 until told
    /// otherwise.
    std::array<int, operationCount> failing;
    int missingRecords; ///< of each block of the stream
    bool garbageBlocks;

    bool isAnythingFailing() const
    {
        return std::any_of(failing.begin(), failing.end(), [](int times) { return times != 0; });
    }
};

} // namespace kora::simulation
