#pragma once

#include "simulation/StreamConditions.h"
#include "simulation/processor/DisplayStream.h"

#include <atomic>
#include <cstdint>
#include <type_traits>

namespace kora::simulation {

/// The stream in memory that the service writes and programs only read: a page of this, then the ring of records.
/// Nobody locks. The writer puts a snapshot into the next of several places and then says which is the newest; before
/// it writes records it says how far it will. A reader copies and then looks whether what it copied still stood.
struct StreamMemory
{
    /// Records. More than a block, so that a reader has the time of the rest for its copy: 0.3 s at the largest rate.
    static constexpr std::uint64_t ringRecords = 32768;
    static constexpr std::size_t headerBytes = 4096;
    static constexpr std::size_t ringBytes = ringRecords * sizeof(DisplayRecord);
    static constexpr std::uint64_t snapshotPlaces = 8;

    struct Snapshot
    {
        std::uint64_t position; ///< of the record after the newest one, counted since the start of the service
        StreamConditions conditions;
    };

    /// When the service was last at work, by kernelNanoseconds(); 0 when it has ended.
    std::atomic<std::int64_t> heartbeat;
    /// Number of the newest snapshot, which lies at this number modulo snapshotPlaces.
    std::atomic<std::uint64_t> newest;
    /// Position up to which records are written, or are being written.
    std::atomic<std::uint64_t> writtenTo;
    Snapshot snapshots[snapshotPlaces];
};
static_assert(sizeof(StreamMemory) <= StreamMemory::headerBytes);
static_assert(std::is_trivially_copyable_v<StreamMemory::Snapshot>);
static_assert(std::atomic<std::uint64_t>::is_always_lock_free && std::atomic<std::int64_t>::is_always_lock_free);

/// The memory behind a file, mapped with its ring twice in a row, so that a block never wraps around.
class StreamMapping
{
public:
    /// @param fd stays the caller's; @param writable whether this process is the writer
    StreamMapping(int fd, bool writable);
    ~StreamMapping();
    StreamMapping(const StreamMapping&) = delete;
    StreamMapping& operator=(const StreamMapping&) = delete;

    bool isMapped() const { return base != nullptr; }
    StreamMemory& memory() const { return *reinterpret_cast<StreamMemory*>(base); }
    /// The record at a position, with room for a whole ring behind it.
    unsigned char* records(std::uint64_t position) const
    {
        return base + StreamMemory::headerBytes + position % StreamMemory::ringRecords * sizeof(DisplayRecord);
    }

private:
    unsigned char* base = nullptr;
};

} // namespace kora::simulation
