#pragma once

#include "stream/DisplayRecord.h"

#include <cstdint>
#include <vector>

namespace kora::simulation {

/// The display stream: one record every 1/rate seconds out of the physics, in a ring of the newest 16384.
/// Records fall on a fixed grid of steps, the one of the loops for every rate that divides theirs, so that a record
/// shows the present sample of a loop. With the filter on a record is the mean of all steps since the one before;
/// without it the present step.
class DisplayStream
{
public:
    static constexpr int capacity = 16384;
    static constexpr int largestBlock = capacity - 1;

    explicit DisplayStream(int hertz);

    /// Starts a new stretch of records, also at an unchanged rate; older records stay in the ring.
    /// @return false for a rate outside 0 to 50000 Hz, which changes nothing
    bool setRate(int hertz, bool filterEnable);
    int rate() const { return hertz; }
    bool isFiltered() const { return filter; }

    /// One step of the physics. `fill(DisplayRecord&)` is called when the step is wanted.
    template <typename Fill>
    void step(Fill fill)
    {
        ++steps;
        const bool due = advancePhase();
        if (!due && !takesEveryStep())
            return;
        DisplayRecord& record = ring[std::size_t(next)];
        fill(record);
        if (filter)
            accumulate(record);
        if (due)
            finish(record);
    }

    /// Whether each step goes into a record, and not only the one in which the record falls.
    bool takesEveryStep() const { return filter && hertz > 0; }
    /// Steps until the one in which the next record falls, that one included.
    int stepsToRecord() const;
    /// Passes steps in which no record falls. Not for a stream that takes every step.
    void pass(int count)
    {
        steps += count;
        phase += count * hertz;
    }

    /// Records since the last setRate().
    std::int64_t sinceRateSet() const { return stretch; }
    /// Records since power-on.
    std::int64_t total() const { return made; }
    /// Whether the rate was ever set since power-on.
    bool wasRateSet() const { return rateSet; }

    /// Copies the newest records, the oldest first. Where fewer exist the oldest stands for those before it, and
    /// zeros while there is none.
    /// @param destination at any address; @param count 0 to largestBlock
    void copyNewest(void* destination, int count) const;

private:
    static constexpr int doubleSlots = int(sizeof(DisplayRecord) / sizeof(double));

    bool advancePhase();
    int phaseBefore(std::int64_t step) const;
    void accumulate(const DisplayRecord& record);
    void finish(DisplayRecord& record);

    std::vector<DisplayRecord> ring;
    int next = 0;
    int hertz;
    bool filter = false;
    bool rateSet = false;
    std::int64_t steps = 0;
    int phase;
    std::int64_t made = 0;
    std::int64_t stretch = 0;
    double sums[doubleSlots] = {};
    double referenceSums[2] = {};
    int summed = 0;
};

} // namespace kora::simulation
