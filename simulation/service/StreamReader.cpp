#include "simulation/service/StreamReader.h"

#include "simulation/Faults.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstring>

namespace kora::simulation {

std::unique_ptr<StreamReader> StreamReader::open(int fd)
{
    struct stat file;
    const int seals = fcntl(fd, F_GET_SEALS);
    if (seals < 0 || (seals & F_SEAL_SHRINK) == 0 || fstat(fd, &file) != 0 ||
        file.st_size != off_t(StreamMemory::headerBytes + StreamMemory::ringBytes))
        return nullptr;
    std::unique_ptr<StreamReader> reader(new StreamReader(fd));
    return reader->mapping.isMapped() ? std::move(reader) : nullptr;
}

StreamMemory::Snapshot StreamReader::snapshot() const
{
    const StreamMemory& memory = mapping.memory();
    for (;;) {
        const std::uint64_t number = memory.newest.load(std::memory_order_acquire);
        const StreamMemory::Snapshot copy = memory.snapshots[number % StreamMemory::snapshotPlaces];
        std::atomic_thread_fence(std::memory_order_acquire);
        // The one after the newest may be in the making.
        if (memory.newest.load(std::memory_order_relaxed) - number < StreamMemory::snapshotPlaces - 1)
            return copy;
    }
}

bool StreamReader::copyNewest(const StreamMemory::Snapshot& now, void* destination, int count) const
{
    const std::uint64_t copied = std::min<std::uint64_t>(std::uint64_t(count), std::uint64_t(now.conditions.kept));
    const std::uint64_t first = now.position - copied;
    auto place = static_cast<unsigned char*>(destination);
    const std::size_t missing = (std::size_t(count) - copied) * sizeof(DisplayRecord);
    // The oldest record stands for those before it, and zeros while there is none.
    if (copied == 0)
        std::memset(place, 0, missing);
    for (std::size_t filled = 0; copied > 0 && filled < missing; filled += sizeof(DisplayRecord))
        std::memcpy(place + filled, mapping.records(first), sizeof(DisplayRecord));
    std::memcpy(place + missing, mapping.records(first), copied * sizeof(DisplayRecord));
    std::atomic_thread_fence(std::memory_order_acquire);
    return mapping.memory().writtenTo.load(std::memory_order_relaxed) - first <= StreamMemory::ringRecords;
}

int StreamReader::newestRecords(void* destination, int count) const
{
    for (;;) {
        const StreamMemory::Snapshot now = snapshot();
        Faults faults;
        faults.truncateBlocks(now.conditions.missingRecords);
        faults.setGarbage(now.conditions.garbageBlocks);
        const int delivered = faults.delivered(std::min(count, DisplayStream::largestBlock));
        // Overtaken by the writer: the records are newer now.
        if (!copyNewest(now, destination, delivered))
            continue;
        faults.spoil(destination, delivered);
        return delivered;
    }
}

} // namespace kora::simulation
