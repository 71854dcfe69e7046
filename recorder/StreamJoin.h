#pragma once

#include "stream/DisplayRecord.h"

#include <vector>

namespace kora::recorder {

/// Finds in overlapping windows of the stream what is new, byte by byte.
class StreamJoin
{
public:
    /// Records of the known end that are compared with a window.
    static constexpr int comparedRecords = 1024;

    /// @param expected new records by the clock; decides where the bytes fit in several places, as in a stream that
    /// repeats itself. A window that ends in the known record again and again holds nothing new.
    /// @return number of new records at the end of the window, or -1 when it does not reach back to the known end
    int fresh(const DisplayRecord* window, int count, double expected) const;
    /// Takes these as the newest known records.
    void follow(const DisplayRecord* records, int count);
    bool knowsARecord() const { return !known.empty(); }

private:
    bool endsAt(const DisplayRecord* window, int place) const;

    /// The newest known records, the oldest first.
    std::vector<DisplayRecord> known;
};

} // namespace kora::recorder
