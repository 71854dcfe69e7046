#pragma once

#include "archive/UtcTime.h"

#include <cstdint>
#include <string>
#include <vector>

namespace kora::archive {

/// A segment file as its name and the file system tell it.
struct SegmentFile
{
    std::string path;
    UtcNanoseconds start; ///< by its name, whole seconds
    std::int64_t bytes;
};

/// "kora_2026-11-21T210500Z.h5"; a second file that begins in the same second gets "_2" before the ending.
std::string segmentName(UtcNanoseconds start, int copy = 1);
/// The first name of a segment of this start that is still free in a folder.
std::string freeSegmentPath(const std::string& folder, UtcNanoseconds start);

/// All segments of a folder, the oldest first. A folder that cannot be read has none.
std::vector<SegmentFile> segmentsIn(const std::string& folder);

/// Takes away what a writer that was killed has begun to make.
void removeUnfinishedSegments(const std::string& folder);

} // namespace kora::archive
