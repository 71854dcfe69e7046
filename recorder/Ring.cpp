#include "recorder/Ring.h"

#include "archive/KeptTimes.h"

#include <algorithm>
#include <filesystem>

#include <sys/statvfs.h>
#include <unistd.h>

namespace kora::recorder {

namespace {

constexpr std::int64_t mebibyte = 1024 * 1024;
constexpr std::int64_t largestReserve = 256 * mebibyte;

} // namespace

std::vector<bool> keptSegments(const std::vector<archive::SegmentFile>& segments, const std::string& folder,
                               double seconds)
{
    const std::vector<archive::KeptTime> times = archive::KeptTimes(folder).all();
    std::vector<bool> kept;
    for (std::size_t i = 0; i < segments.size(); ++i) {
        const archive::SegmentFile& segment = segments[i];
        // The names give whole seconds only.
        const archive::UtcNanoseconds longest = segment.start + archive::nanosecondsOf(seconds);
        const archive::UtcNanoseconds next = i + 1 < segments.size() ? segments[i + 1].start : longest;
        const archive::UtcNanoseconds end = std::min(longest, next) + archive::nanosecondsPerSecond;
        kept.push_back(std::any_of(times.begin(), times.end(), [&](const archive::KeptTime& time) {
            return time.from() <= end && time.to() >= segment.start;
        }));
    }
    return kept;
}

int Ring::makeRoom(const std::string& current, archive::UtcNanoseconds now) const
{
    const std::vector<archive::SegmentFile> segments = archive::segmentsIn(folder);
    const std::vector<bool> kept = keptSegments(segments, folder, limits.segmentSeconds);
    std::int64_t total = 0;
    for (const archive::SegmentFile& segment : segments)
        total += segment.bytes;
    std::int64_t free = freeBytes();
    int removed = 0;
    for (std::size_t i = 0; i < segments.size(); ++i) {
        const archive::SegmentFile& segment = segments[i];
        const bool isOld = segment.start + archive::nanosecondsOf(limits.segmentSeconds + limits.keepSeconds) < now;
        const bool isTooMuch = total > limits.limitBytes || (free >= 0 && free < reservedBytes());
        if (kept[i] || segment.path == current || !(isOld || isTooMuch))
            continue;
        if (::unlink(segment.path.c_str()) != 0)
            continue;
        total -= segment.bytes;
        free = freeBytes();
        ++removed;
    }
    return removed;
}

std::int64_t Ring::freeBytes() const
{
    struct statvfs space = {};
    if (::statvfs(folder.c_str(), &space) != 0)
        return -1;
    return std::int64_t(space.f_bavail) * std::int64_t(space.f_frsize);
}

std::int64_t Ring::reservedBytes() const
{
    struct statvfs space = {};
    if (::statvfs(folder.c_str(), &space) != 0)
        return 0;
    return std::min(largestReserve, std::int64_t(space.f_blocks) * std::int64_t(space.f_frsize) / 4);
}

} // namespace kora::recorder
