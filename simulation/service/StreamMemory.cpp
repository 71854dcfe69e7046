#include "simulation/service/StreamMemory.h"

#include <sys/mman.h>

namespace kora::simulation {

namespace {

constexpr std::size_t fileBytes = StreamMemory::headerBytes + StreamMemory::ringBytes;
constexpr std::size_t mappedBytes = fileBytes + StreamMemory::ringBytes;

} // namespace

StreamMapping::StreamMapping(int fd, bool writable)
{
    const int access = writable ? PROT_READ | PROT_WRITE : PROT_READ;
    void* const room = mmap(nullptr, mappedBytes, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (room == MAP_FAILED)
        return;
    base = static_cast<unsigned char*>(room);
    const bool mapped = mmap(base, fileBytes, access, MAP_SHARED | MAP_FIXED, fd, 0) != MAP_FAILED &&
                        mmap(base + fileBytes, StreamMemory::ringBytes, access, MAP_SHARED | MAP_FIXED, fd,
                             off_t(StreamMemory::headerBytes)) != MAP_FAILED;
    if (!mapped) {
        munmap(base, mappedBytes);
        base = nullptr;
        return;
    }
    // A forked child has nothing of its parent's.
    madvise(base, mappedBytes, MADV_DONTFORK);
}

StreamMapping::~StreamMapping()
{
    if (base)
        munmap(base, mappedBytes);
}

} // namespace kora::simulation
