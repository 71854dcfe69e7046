#pragma once

/// The four control loops and the configurations that the control library numbers. Everything that depends on a
/// configuration code stands in this one table.

enum LoopIndex
{
    LoopXlf = 0,
    LoopXhf = 1,
    LoopYlf = 2,
    LoopYhf = 3,
    loopCount = 4
};

/// Suffixes of the loops in keys, fields and object names, by loop index.
constexpr const char* loopNames[loopCount] = {"Xlf", "Xhf", "Ylf", "Yhf"};

/// Bit of a loop in a configuration mask.
constexpr int loopBit(int loop)
{
    return 1 << loop;
}

/// How the XY graph shows the set-point of a configuration, provided that its monitor feeds the loops.
enum class SetpointMarker
{
    None,
    VerticalLine,   ///< the X set-point; only the monitor of Xlf counts
    Cross,          ///< both set-points; a line where the monitors of Xlf and Ylf differ
    HorizontalLine, ///< the Y set-point; only the monitor of Ylf counts
};

struct LoopConfiguration
{
    int mask;              ///< loops that regulate, joined loopBit()s
    bool setpointX;        ///< X set-point field enabled; also in codes 13 and 14, where no X loop runs
    bool setpointY;        ///< Y set-point field enabled
    bool clickChecksX;     ///< a set-point placed by a click is held against the X limit
    bool clickChecksY;     ///< likewise the Y limit
    SetpointMarker marker; ///< code 5 has none, by decision

    constexpr bool runs(int loop) const { return (mask & loopBit(loop)) != 0; }
};

constexpr int loopConfigurationCount = 15;

/// Sent to the control library when no loop is ticked: "none regulates". It names no configuration.
constexpr int noLoopConfiguration = loopConfigurationCount;

/// By code, as setPIDconf() and getPIDconf() number the combinations.
constexpr LoopConfiguration loopConfigurations[loopConfigurationCount] = {
    // mask, set-point fields X and Y, click checks X and Y, marker
    {1, true, false, true, false, SetpointMarker::VerticalLine},
    {3, true, false, true, false, SetpointMarker::VerticalLine},
    {5, true, true, true, true, SetpointMarker::Cross},
    {9, true, false, true, false, SetpointMarker::Cross},
    {7, true, true, true, true, SetpointMarker::Cross},
    {11, true, false, true, false, SetpointMarker::None},
    {13, true, true, true, true, SetpointMarker::Cross},
    {15, true, true, true, true, SetpointMarker::Cross},
    {2, true, false, false, false, SetpointMarker::VerticalLine},
    {6, true, true, false, true, SetpointMarker::Cross},
    {10, true, false, false, false, SetpointMarker::Cross},
    {14, true, true, false, true, SetpointMarker::Cross},
    {4, false, true, false, true, SetpointMarker::HorizontalLine},
    {12, true, true, false, true, SetpointMarker::HorizontalLine},
    {8, true, false, false, false, SetpointMarker::HorizontalLine},
};

/// @return the row of a code, or null for a code that names none: 15 and more, and negative ones (the library's code
/// is signed)
constexpr const LoopConfiguration* loopConfiguration(int code)
{
    return code >= 0 && code < loopConfigurationCount ? &loopConfigurations[code] : nullptr;
}

/// @param mask joined loopBit()s
/// @return the code of the loops, or noLoopConfiguration without any
constexpr int loopConfigurationCode(int mask)
{
    for (int code = 0; code < loopConfigurationCount; ++code) {
        if (loopConfigurations[code].mask == mask)
            return code;
    }
    return noLoopConfiguration;
}

static_assert(loopConfigurationCode(0) == noLoopConfiguration);
