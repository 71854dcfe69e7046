#pragma once

#include "simulation/service/StreamMemory.h"

#include <memory>

namespace kora::simulation {

/// A program's look at the stream of a served installation. Copies out of shared memory and waits for nobody. May be
/// used by several threads.
class StreamReader
{
public:
    /// @param fd the memory as the service sent it; stays the caller's. @return null unless it is whole and sealed, so
    /// that no other process can take it away under the reader
    static std::unique_ptr<StreamReader> open(int fd);

    /// When the service was last at work, by kernelNanoseconds(); 0 when it has ended.
    std::int64_t heartbeat() const { return mapping.memory().heartbeat.load(std::memory_order_relaxed); }
    StreamConditions conditions() const { return snapshot().conditions; }
    /// Copies the newest records, the oldest first, with the faults of the stream.
    /// @param destination room for count * 256 bytes at any address; @return records delivered
    int newestRecords(void* destination, int count) const;

private:
    explicit StreamReader(int fd) : mapping(fd, false) {}
    StreamMemory::Snapshot snapshot() const;
    bool copyNewest(const StreamMemory::Snapshot& now, void* destination, int count) const;

    StreamMapping mapping;
};

} // namespace kora::simulation
