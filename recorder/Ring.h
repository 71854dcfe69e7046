#pragma once

#include "archive/SegmentFolder.h"

#include <string>
#include <vector>

namespace kora::recorder {

/// How much of the recording is kept.
struct RingLimits
{
    double keepSeconds = 24 * 3600.0;
    std::int64_t limitBytes = 200ll * 1024 * 1024 * 1024;
    double segmentSeconds = 60; ///< how long a segment may be
};

/// The oldest segments go: those older than the limit of age, and as many as the limit of size and the wanted free
/// space ask for. Kept times stay.
class Ring
{
public:
    Ring(const std::string& folder, const RingLimits& limits) : folder(folder), limits(limits) {}

    /// @param current path of the segment that is being written, which stays; empty for none
    /// @param now wall clock
    /// @return how many segments went
    int makeRoom(const std::string& current, archive::UtcNanoseconds now) const;
    /// Free space of the file system, bytes; negative when it cannot be told.
    std::int64_t freeBytes() const;
    /// Free space below which the disk counts as full: what some seconds of recording need.
    std::int64_t reservedBytes() const;

private:
    std::string folder;
    RingLimits limits;
};

/// Segments that share a moment with a kept time.
/// @param seconds how long a segment may be
std::vector<bool> keptSegments(const std::vector<archive::SegmentFile>& segments, const std::string& folder,
                               double seconds);

} // namespace kora::recorder
