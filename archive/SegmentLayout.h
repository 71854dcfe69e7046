#pragma once

#include "archive/UtcTime.h"

#include <cstddef>
#include <string>

/// Names and sizes within a segment file, shared by those who write, read, repair and check it.
namespace kora::archive {

constexpr char streamGroup[] = "entry/stream";
constexpr char statusGroup[] = "entry/status";
constexpr char gapsGroup[] = "entry/gaps";
constexpr char eventsGroup[] = "entry/events";
constexpr char settingsField[] = "entry/settings";
constexpr char settingsTimeField[] = "entry/settings_time";
constexpr const char* overviewGroups[] = {"entry/overview_128", "entry/overview_16384"};
constexpr const char* stretchFields[] = {"min", "max", "mean", "std"};

/// Behind the name of a segment until others can read it.
constexpr char unfinishedEnding[] = ".new";

constexpr std::size_t momentBytes = 32;
constexpr std::size_t kindBytes = 32;
constexpr std::size_t eventBytes = 256;
/// Room for the text of the settings file in a segment at least.
constexpr std::size_t leastSettingsBytes = 8192;

/// What happened, at a time of the segment.
struct Event
{
    double time; ///< s from the start of the segment
    std::string kind;
    std::string text;
};

/// Samples that are missing before the one of this index.
struct Gap
{
    std::int64_t index;
    double seconds;
};

} // namespace kora::archive
