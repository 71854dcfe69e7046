#pragma once

#include "hardware/koralink.h"
#include "stream/DeviceRecords.h"

#include <sys/time.h>

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace kora {

/// A value and whether it could be read. What is not valid means nothing.
template <typename T>
struct Reading
{
    T value{};
    bool valid = false;
};

/// The three versions of the installation, as getSystemVersion() gives them.
struct SystemVersions
{
    std::uint32_t timestamp;
    std::uint32_t software;
    std::uint32_t pid;
};

/// What of the settings file the server needs. Lengths in micrometres; a factor turns a raw position into micrometres.
struct BeamlineSettings
{
    enum State
    {
        Present,
        Missing,
        Unreadable
    };
    State state = Missing;
    double scaleX[2] = {};
    double scaleY[2] = {};
    double roiX[2] = {}; ///< half-widths of the regions of interest
    double roiY[2] = {};
};

/// Everything that one poll of the installation found. A plain value.
struct Snapshot
{
    timeval time = {}; ///< when the poll began
    Reading<PID_Status_Type> status;
    Reading<int> configuration;
    Reading<double> setpointX;           ///< of Xlf, as the library holds it, um
    Reading<double> setpointY;           ///< of Ylf
    Reading<std::array<int, 4>> sources; ///< BPM of each loop, 0 or 1
    Reading<std::array<int, 4>> outputs; ///< output of each loop, 0 to 3
    Reading<int> displayRate;            ///< Hz
    Reading<BPMStats> stats;
    Reading<AmplifierStatus> amplifiers[2];
    Reading<SFPinfo> ports[4];
    Reading<SystemVersions> versions;
    BeamlineSettings settings;
    /// One text for each function of the library that failed or hangs, such as "getBPMStats() failed".
    std::vector<std::string> failures;
};

} // namespace kora
