#pragma once

#include "double/KoralinkDouble.h"
#include "recorder/Clock.h"

#include <cmath>

/// A stream on the double whose records carry their number, at a rate and by a clock that a test sets. The wall clock
/// may be set apart from the monotonic one.
class CountingStream final : public kora::recorder::Clock
{
public:
    /// 2026-11-21T21:05:00Z
    static constexpr kora::archive::UtcNanoseconds epoch = 1795295100;

    CountingStream()
    {
        koralink_double::reset();
        koralink_double::answers().fillBlock = [this](DisplayRecord* block, int count) {
            for (int i = 0; i < count; ++i)
                block[i] = record(newest() - count + 1 + i);
        };
        setRate(1000);
    }
    ~CountingStream() override { koralink_double::reset(); }

    kora::recorder::Moment now() const override
    {
        return {seconds,
                epoch * kora::archive::nanosecondsPerSecond + kora::archive::nanosecondsOf(seconds + wallOffset)};
    }
    void setRate(int hertz)
    {
        countBefore = newest();
        rateSince = seconds;
        rate = hertz;
        koralink_double::answers().displayFreq = hertz;
    }
    void pass(double duration) { seconds += duration; }
    void setWallClockBy(double step) { wallOffset += step; }
    /// Number of the newest record.
    long newest() const { return countBefore + long(std::floor((seconds - rateSince) * rate + 1e-6)); }

    static DisplayRecord record(long number)
    {
        DisplayRecord record = {};
        record.pos1X = double(number);
        record.int1 = 1e-6;
        return record;
    }

private:
    double seconds = 1000;
    double wallOffset = 0;
    int rate = 0;
    double rateSince = 1000;
    long countBefore = 0;
};
