// The device files of the acquisition board, answered for within the process: open, read, ioctl and close stand here
// before those of libc in the look-up order, since the executable names this library directly. Whatever is not one
// of the four paths, or one of their descriptors, goes on to the next library. That way takes no lock and no memory,
// so that signal handlers and forked children may use it.

// Their fortified inline forms would be defined twice.
#undef _FORTIFY_SOURCE

#include "simulation/Installation.h"
#include "simulation/boundary/Access.h"
#include "simulation/boundary/DeviceOperations.h"
#include "simulation/console/Listener.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstring>

#define KORALINK_EXPORT __attribute__((visibility("default")))

using namespace kora::simulation;

namespace {

/// A function of the next library, looked up once.
template <typename Function>
class Next
{
public:
    explicit constexpr Next(const char* functionName) : name(functionName) {}

    Function* get() noexcept
    {
        Function* known = function.load(std::memory_order_relaxed);
        if (!known) {
            known = reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
            function.store(known, std::memory_order_relaxed);
        }
        return known;
    }

private:
    const char* name;
    std::atomic<Function*> function{nullptr};
};

Next<int(const char*, int, ...)> nextOpen("open");
Next<int(const char*, int, ...)> nextOpen64("open64");
Next<int(int, const char*, int, ...)> nextOpenat("openat");
Next<int(int, const char*, int, ...)> nextOpenat64("openat64");
Next<int(const char*, int)> nextOpen2("__open_2");
Next<int(const char*, int)> nextOpen642("__open64_2");
Next<int(int, const char*, int)> nextOpenat2("__openat_2");
Next<int(int, const char*, int)> nextOpenat642("__openat64_2");
Next<ssize_t(int, void*, size_t)> nextRead("read");
Next<ssize_t(int, void*, size_t, size_t)> nextReadChk("__read_chk");
Next<int(int, unsigned long, ...)> nextIoctl("ioctl");
Next<int(int)> nextClose("close");

constexpr int notOurs = -1;

/// Descriptors of ours: the device plus one, 0 for everything else.
constexpr int largestDescriptor = 4096;
std::atomic<unsigned char> marks[largestDescriptor];
/// The file behind each descriptor of ours. A descriptor that was closed or replaced without our knowledge has
/// another one.
std::atomic<ino_t> inodes[largestDescriptor];

/// Set while the look-up order is tried out.
std::atomic<bool> probing{false};
std::atomic<bool> reached{false};

int deviceOfPath(const char* path) noexcept
{
    if (!path || std::strncmp(path, "/dev/kora_", 10) != 0)
        return notOurs;
    for (int device = 0; device < deviceCount; ++device)
        if (std::strcmp(path, devicePaths[device]) == 0)
            return device;
    return notOurs;
}

int deviceOfDescriptor(int fd) noexcept
{
    if (fd < 0 || fd >= largestDescriptor)
        return notOurs;
    const unsigned char mark = marks[fd].load(std::memory_order_acquire);
    if (mark == 0)
        return notOurs;
    const int savedErrno = errno;
    struct stat file;
    const bool same = fstat(fd, &file) == 0 && file.st_ino == inodes[fd].load(std::memory_order_relaxed);
    errno = savedErrno;
    if (same)
        return mark - 1;
    marks[fd].store(0, std::memory_order_relaxed);
    return notOurs;
}

template <typename Result>
Result withErrno(Result result)
{
    if (result >= 0)
        return result;
    errno = int(-result);
    return -1;
}

int openDevice(int device, int flags)
{
    if (probing.load(std::memory_order_relaxed)) {
        reached.store(true, std::memory_order_relaxed);
        return -1;
    }
    const int result = deviceOpen(device);
    if (result < 0)
        return withErrno(result);
    const int fd = memfd_create(devicePaths[device], (flags & O_CLOEXEC) != 0 ? MFD_CLOEXEC : 0);
    if (fd < 0)
        return fd;
    struct stat file;
    if (fd >= largestDescriptor || fstat(fd, &file) != 0) {
        nextClose.get()(fd);
        return withErrno(-EMFILE);
    }
    inodes[fd].store(file.st_ino, std::memory_order_relaxed);
    marks[fd].store(static_cast<unsigned char>(device + 1), std::memory_order_release);
    return fd;
}

bool takesMode(int flags) noexcept
{
    return (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE;
}

/// Tries the look-up order out once, before main: the name must lead here, or through a sanitizer to here. The console
/// is served from then on, unless a served installation is to be joined.
__attribute__((constructor)) void checkLookUpOrder()
{
    using Open = int(const char*, int, ...);
    for (const auto& prepare :
         {nextRead.get() != nullptr, nextReadChk.get() != nullptr, nextIoctl.get() != nullptr,
          nextClose.get() != nullptr, nextOpen.get() != nullptr, nextOpen64.get() != nullptr,
          nextOpenat.get() != nullptr, nextOpenat64.get() != nullptr, nextOpen2.get() != nullptr,
          nextOpen642.get() != nullptr, nextOpenat2.get() != nullptr, nextOpenat642.get() != nullptr})
        if (!prepare)
            _exit(127);
    probing = true;
    const auto found = reinterpret_cast<Open*>(dlsym(RTLD_DEFAULT, "open"));
    if (found)
        found(streamDevicePath, O_RDONLY);
    probing = false;
    if (reached) {
        if (isOwnExpected())
            startListening(accessControl);
        return;
    }
    static const char message[] = "libkoralink.so.1 (simulated installation): the device files of this process are "
                                  "out of reach, because open() is found in another library first. Start the "
                                  "program with LD_LIBRARY_PATH and link it against the library by name.\n";
    if (write(STDERR_FILENO, message, sizeof message - 1) < 0)
        _exit(126);
    _exit(127);
}

} // namespace

/// Reads the mode, which follows only where the flags ask for it.
#define KORALINK_MODE(flags)                                                                                           \
    mode_t mode = 0;                                                                                                   \
    if (takesMode(flags)) {                                                                                            \
        va_list arguments;                                                                                             \
        va_start(arguments, flags);                                                                                    \
        mode = va_arg(arguments, mode_t);                                                                              \
        va_end(arguments);                                                                                             \
    }

extern "C" {

KORALINK_EXPORT int open(const char* path, int flags, ...)
{
    KORALINK_MODE(flags)
    const int device = deviceOfPath(path);
    return device == notOurs ? nextOpen.get()(path, flags, mode) : openDevice(device, flags);
}

KORALINK_EXPORT int open64(const char* path, int flags, ...)
{
    KORALINK_MODE(flags)
    const int device = deviceOfPath(path);
    return device == notOurs ? nextOpen64.get()(path, flags, mode) : openDevice(device, flags);
}

KORALINK_EXPORT int openat(int folder, const char* path, int flags, ...)
{
    KORALINK_MODE(flags)
    const int device = deviceOfPath(path);
    return device == notOurs ? nextOpenat.get()(folder, path, flags, mode) : openDevice(device, flags);
}

KORALINK_EXPORT int openat64(int folder, const char* path, int flags, ...)
{
    KORALINK_MODE(flags)
    const int device = deviceOfPath(path);
    return device == notOurs ? nextOpenat64.get()(folder, path, flags, mode) : openDevice(device, flags);
}

KORALINK_EXPORT int __open_2(const char* path, int flags)
{
    const int device = deviceOfPath(path);
    return device == notOurs ? nextOpen2.get()(path, flags) : openDevice(device, flags);
}

KORALINK_EXPORT int __open64_2(const char* path, int flags)
{
    const int device = deviceOfPath(path);
    return device == notOurs ? nextOpen642.get()(path, flags) : openDevice(device, flags);
}

KORALINK_EXPORT int __openat_2(int folder, const char* path, int flags)
{
    const int device = deviceOfPath(path);
    return device == notOurs ? nextOpenat2.get()(folder, path, flags) : openDevice(device, flags);
}

KORALINK_EXPORT int __openat64_2(int folder, const char* path, int flags)
{
    const int device = deviceOfPath(path);
    return device == notOurs ? nextOpenat642.get()(folder, path, flags) : openDevice(device, flags);
}

KORALINK_EXPORT ssize_t read(int fd, void* buffer, size_t bytes)
{
    const int device = deviceOfDescriptor(fd);
    return device == notOurs ? nextRead.get()(fd, buffer, bytes) : withErrno(deviceRead(device, buffer, bytes));
}

KORALINK_EXPORT ssize_t __read_chk(int fd, void* buffer, size_t bytes, size_t room)
{
    const int device = deviceOfDescriptor(fd);
    return device == notOurs || bytes > room ? nextReadChk.get()(fd, buffer, bytes, room)
                                             : withErrno(deviceRead(device, buffer, bytes));
}

KORALINK_EXPORT int ioctl(int fd, unsigned long request, ...) noexcept
{
    va_list arguments;
    va_start(arguments, request);
    void* const argument = va_arg(arguments, void*);
    va_end(arguments);
    const int device = deviceOfDescriptor(fd);
    return device == notOurs ? nextIoctl.get()(fd, request, argument)
                             : withErrno(deviceRequest(device, request, argument));
}

KORALINK_EXPORT int close(int fd)
{
    if (deviceOfDescriptor(fd) != notOurs)
        marks[fd].store(0, std::memory_order_relaxed);
    return nextClose.get()(fd);
}
}
