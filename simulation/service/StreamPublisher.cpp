#include "simulation/service/StreamPublisher.h"

#include "simulation/Installation.h"
#include "simulation/service/KernelTime.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

namespace kora::simulation {

StreamPublisher::StreamPublisher() : fd(memfd_create("kora-stream", MFD_CLOEXEC | MFD_ALLOW_SEALING))
{
    if (fd >= 0 && ftruncate(fd, off_t(StreamMemory::headerBytes + StreamMemory::ringBytes)) == 0) {
        mapping.emplace(fd, true);
        if (mapping->isMapped() &&
            fcntl(fd, F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_FUTURE_WRITE | F_SEAL_SEAL) == 0)
            return;
    }
    const int error = errno;
    close(fd);
    throw std::system_error(error, std::generic_category(), "the shared memory of the stream cannot be had");
}

StreamPublisher::~StreamPublisher()
{
    mapping->memory().heartbeat.store(0);
    close(fd);
}

void StreamPublisher::writeRecords(const DisplayStream& stream, int resets)
{
    const std::int64_t before = resets == publishedResets ? published : 0;
    const auto fresh = std::min<std::int64_t>(stream.total() - before, DisplayStream::largestBlock);
    published = stream.total();
    publishedResets = resets;
    mapping->memory().writtenTo.store(position + std::uint64_t(fresh), std::memory_order_relaxed);
    // Before the first byte: a reader that meets one of them must see that it was overtaken.
    std::atomic_thread_fence(std::memory_order_release);
    stream.copyNewest(mapping->records(position), int(fresh));
    position += std::uint64_t(fresh);
}

void StreamPublisher::publish(Installation& installation)
{
    StreamMemory& memory = mapping->memory();
    installation.inspectStream([&](const DisplayStream& stream, const StreamConditions& conditions, int resets) {
        writeRecords(stream, resets);
        const std::uint64_t next = memory.newest.load(std::memory_order_relaxed) + 1;
        std::atomic_thread_fence(std::memory_order_release);
        memory.snapshots[next % StreamMemory::snapshotPlaces] = {position, conditions};
        memory.newest.store(next, std::memory_order_release);
    });
    memory.heartbeat.store(kernelNanoseconds(), std::memory_order_relaxed);
}

} // namespace kora::simulation
