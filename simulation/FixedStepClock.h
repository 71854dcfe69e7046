#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace kora::simulation {

/// Counts the steps that a clock says should have been made by now. Jitter of the calls never changes the rate, and
/// a paused process owes a bounded number.
class FixedStepClock
{
public:
    FixedStepClock(double stepsPerSecond, double longestSeconds)
        : rate(stepsPerSecond), longest(std::int64_t(stepsPerSecond * longestSeconds))
    {
    }

    /// Nothing is owed at this moment.
    void start(double now)
    {
        startedAt = now;
        collected = 0;
    }

    /// Steps owed since the last call; the caller makes them.
    std::int64_t collect(double now)
    {
        const std::int64_t due = std::int64_t(std::floor((now - startedAt) * rate)) - collected;
        if (due > longest) {
            startedAt += double(due - longest) / rate;
            collected += longest;
            return longest;
        }
        const std::int64_t owed = std::max<std::int64_t>(due, 0);
        collected += owed;
        return owed;
    }

private:
    double rate;
    std::int64_t longest;
    double startedAt = 0;
    std::int64_t collected = 0;
};

} // namespace kora::simulation
