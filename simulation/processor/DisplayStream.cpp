#include "simulation/processor/DisplayStream.h"

#include "simulation/Rates.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace kora::simulation {

namespace {

/// Slot of eight bytes that holds the two single-precision references instead of a double.
constexpr int referenceSlot = int(offsetof(DisplayRecord, funcGenRefA) / sizeof(double));

} // namespace

DisplayStream::DisplayStream(int initialHertz)
    : ring(capacity), hertz(std::clamp(initialHertz, 0, physicsRate)), phase(phaseBefore(0))
{
}

int DisplayStream::phaseBefore(std::int64_t step) const
{
    // Step n carries a record when a multiple of the physics' rate lies between (n - 1) * hertz and n * hertz.
    return int(((step - 1) * hertz % physicsRate + physicsRate) % physicsRate);
}

bool DisplayStream::setRate(int newHertz, bool filterEnable)
{
    if (newHertz < 0 || newHertz > physicsRate)
        return false;
    hertz = newHertz;
    filter = filterEnable;
    rateSet = true;
    phase = phaseBefore(steps);
    stretch = 0;
    summed = 0;
    std::fill(std::begin(sums), std::end(sums), 0.0);
    std::fill(std::begin(referenceSums), std::end(referenceSums), 0.0);
    return true;
}

int DisplayStream::stepsToRecord() const
{
    return hertz > 0 ? (physicsRate - phase + hertz - 1) / hertz : std::numeric_limits<int>::max();
}

bool DisplayStream::advancePhase()
{
    phase += hertz;
    if (phase < physicsRate)
        return false;
    phase -= physicsRate;
    return true;
}

void DisplayStream::accumulate(const DisplayRecord& record)
{
    double values[doubleSlots];
    std::memcpy(values, &record, sizeof record);
    values[referenceSlot] = 0;
    for (int i = 0; i < doubleSlots; ++i)
        sums[i] += values[i];
    referenceSums[0] += double(record.funcGenRefA);
    referenceSums[1] += double(record.funcGenRefB);
    ++summed;
}

void DisplayStream::finish(DisplayRecord& record)
{
    if (filter) {
        double means[doubleSlots];
        for (int i = 0; i < doubleSlots; ++i)
            means[i] = sums[i] / summed;
        std::memcpy(&record, means, sizeof record);
        record.funcGenRefA = float(referenceSums[0] / summed);
        record.funcGenRefB = float(referenceSums[1] / summed);
        std::fill(std::begin(sums), std::end(sums), 0.0);
        std::fill(std::begin(referenceSums), std::end(referenceSums), 0.0);
        summed = 0;
    }
    next = next + 1 == capacity ? 0 : next + 1;
    ++made;
    ++stretch;
}

void DisplayStream::copyNewest(void* destination, int count) const
{
    // The place after the newest record is being filled.
    const int kept = int(std::min<std::int64_t>(made, largestBlock));
    const int copied = std::min(count, kept);
    const int first = (next - copied + capacity) % capacity;
    auto place = static_cast<unsigned char*>(destination);
    const auto copy = [&](const DisplayRecord* records, int number) {
        std::memcpy(place, records, std::size_t(number) * sizeof(DisplayRecord));
        place += std::size_t(number) * sizeof(DisplayRecord);
    };
    const DisplayRecord oldest = copied > 0 ? ring[std::size_t(first)] : DisplayRecord{};
    for (int i = copied; i < count; ++i)
        copy(&oldest, 1);
    const int untilEnd = std::min(copied, capacity - first);
    copy(ring.data() + first, untilEnd);
    copy(ring.data(), copied - untilEnd);
}

} // namespace kora::simulation
