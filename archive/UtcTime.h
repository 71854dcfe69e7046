#pragma once

#include <cmath>
#include <cstdint>
#include <optional>
#include <string>

namespace kora::archive {

/// Moments as whole nanoseconds since 1970-01-01T00:00:00Z.
using UtcNanoseconds = std::int64_t;

constexpr UtcNanoseconds nanosecondsPerSecond = 1000000000;

inline UtcNanoseconds nanosecondsOf(double seconds)
{
    return std::llround(seconds * double(nanosecondsPerSecond));
}
constexpr double secondsOf(UtcNanoseconds duration)
{
    return double(duration) / double(nanosecondsPerSecond);
}

/// ISO 8601 in UTC with microseconds: "2026-11-21T21:05:00.000000Z".
std::string isoText(UtcNanoseconds moment);
/// Local time with milliseconds for who reads it on a terminal: "2026-11-21 22:05:00.000".
std::string localText(UtcNanoseconds moment);
/// @return nothing for a text that isoText() does not write
std::optional<UtcNanoseconds> momentOfIsoText(const std::string& text);

/// A moment as a user gives it: local time "2026-11-21T22:05[:00[.5]]" (a blank may stand for the T), the same in UTC
/// with a Z behind it, "22:05[:00[.5]]" of the day of `now`, or seconds back from `now` as in "-90s".
/// @return nothing for any other text
std::optional<UtcNanoseconds> momentOfUserText(const std::string& text, UtcNanoseconds now);

} // namespace kora::archive
