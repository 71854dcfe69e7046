// System calls that fail as a test says: a library to be loaded before all others,
//
//   LD_PRELOAD=libkora_failing_calls.so SUITE
//
// Until a test arms it by FailingCalls.h it hands every call on. Armed, it counts the calls of the process on the files
// of two folders, whichever library makes them, and lets the one of a given number fail. A descriptor that is to be
// closed is closed all the same, as the kernel does.

// Their fortified inline forms would be defined twice.
#undef _FORTIFY_SOURCE

#include "faults/FailingCalls.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <initializer_list>
#include <string>

#define KORA_EXPORT __attribute__((visibility("default")))

using namespace failing_calls;

namespace {

struct Plan
{
    std::string prefixes[2];
    int number = 0;
    Kind kind = NoRoom;
    std::string failedFunction;
    std::string failedPath;
    bool isRestoringInterrupted = false;
};

/// Written only while nothing is counted.
Plan& plan()
{
    static Plan thePlan;
    return thePlan;
}

std::atomic<bool> isArmed{false};
std::atomic<int> counted{0};

template <typename Function>
Function* next(const char* name)
{
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

bool isWatched(const std::string& path)
{
    return std::any_of(std::begin(plan().prefixes), std::end(plan().prefixes), [&path](const std::string& prefix) {
        return !prefix.empty() && path.compare(0, prefix.size(), prefix) == 0;
    });
}

std::string pathOf(int descriptor)
{
    char link[40];
    std::snprintf(link, sizeof link, "/proc/self/fd/%d", descriptor);
    char path[PATH_MAX];
    const ssize_t length = ::readlink(link, path, sizeof path);
    return length > 0 ? std::string(path, std::size_t(length)) : std::string();
}

bool isOneOf(const char* function, std::initializer_list<const char*> functions)
{
    return std::any_of(functions.begin(), functions.end(),
                       [function](const char* each) { return std::strcmp(each, function) == 0; });
}

/// Kinds that mean something for a function: no signal interrupts what changes names and attributes.
bool canFailSo(Kind kind, const char* function)
{
    switch (kind) {
    case Short:
        return isOneOf(function, {"write", "read"});
    case Interrupted:
        return isOneOf(function, {"open", "write", "read", "fsync", "ftruncate", "close"});
    default:
        return true;
    }
}

/// Counts a call on a watched file. @return whether it is the one that fails; errno is set then
bool fails(const char* function, const std::string& path)
{
    constexpr int errors[KindCount] = {ENOSPC, EIO, EACCES, 0, EINTR};
    if (!isWatched(path) || ++counted != plan().number || !canFailSo(plan().kind, function))
        return false;
    plan().failedFunction = function;
    plan().failedPath = path;
    errno = errors[plan().kind];
    return true;
}

bool fails(const char* function, const char* path)
{
    return isArmed && path && fails(function, std::string(path));
}

bool fails(const char* function, int descriptor)
{
    return isArmed && fails(function, pathOf(descriptor));
}

/// Half of a transfer, but something of it.
std::size_t shortOf(std::size_t bytes)
{
    return std::max<std::size_t>(bytes / 2, 1);
}

mode_t modeOf(int flags, va_list& arguments)
{
    const bool takesMode = (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE;
    return takesMode ? va_arg(arguments, mode_t) : 0;
}

} // namespace

#define KORA_MODE(flags)                                                                                               \
    va_list arguments;                                                                                                 \
    va_start(arguments, flags);                                                                                        \
    const mode_t mode = modeOf(flags, arguments);                                                                      \
    va_end(arguments)

extern "C" {

KORA_EXPORT void kora_failing_begin(const char* firstPath, const char* secondPath, int number, int kind)
{
    isArmed = false;
    plan() = {{firstPath, secondPath}, number, Kind(kind), {}, {}, false};
    counted = 0;
    isArmed = true;
}

KORA_EXPORT int kora_failing_end()
{
    isArmed = false;
    return counted;
}

KORA_EXPORT const char* kora_failed_function()
{
    return plan().failedFunction.c_str();
}

KORA_EXPORT const char* kora_failed_path()
{
    return plan().failedPath.c_str();
}

KORA_EXPORT int open(const char* path, int flags, ...)
{
    static auto* const real = next<int(const char*, int, ...)>("open");
    KORA_MODE(flags);
    return fails("open", path) ? -1 : real(path, flags, mode);
}

KORA_EXPORT int open64(const char* path, int flags, ...)
{
    static auto* const real = next<int(const char*, int, ...)>("open64");
    KORA_MODE(flags);
    return fails("open", path) ? -1 : real(path, flags, mode);
}

/// The checked form of open without a mode, which hardened programs call.
KORA_EXPORT int __open_2(const char* path, int flags)
{
    static auto* const real = next<int(const char*, int)>("__open_2");
    return fails("open", path) ? -1 : real(path, flags);
}

KORA_EXPORT int __open64_2(const char* path, int flags)
{
    static auto* const real = next<int(const char*, int)>("__open64_2");
    return fails("open", path) ? -1 : real(path, flags);
}

KORA_EXPORT ssize_t write(int descriptor, const void* bytes, size_t count)
{
    static auto* const real = next<ssize_t(int, const void*, size_t)>("write");
    if (!fails("write", descriptor))
        return real(descriptor, bytes, count);
    return plan().kind == Short ? real(descriptor, bytes, shortOf(count)) : -1;
}

KORA_EXPORT ssize_t read(int descriptor, void* bytes, size_t count)
{
    static auto* const real = next<ssize_t(int, void*, size_t)>("read");
    // Files in memory, which the second path is for, do not fail to be read.
    const bool isRead = isArmed && pathOf(descriptor).compare(0, plan().prefixes[0].size(), plan().prefixes[0]) == 0;
    if (!isRead || !fails("read", descriptor))
        return real(descriptor, bytes, count);
    return plan().kind == Short ? real(descriptor, bytes, shortOf(count)) : -1;
}

KORA_EXPORT int close(int descriptor)
{
    static auto* const real = next<int(int)>("close");
    const bool isToFail = fails("close", descriptor);
    const int error = errno;
    const int result = real(descriptor);
    if (!isToFail)
        return result;
    errno = error;
    return -1;
}

KORA_EXPORT int fsync(int descriptor)
{
    static auto* const real = next<int(int)>("fsync");
    return fails("fsync", descriptor) ? -1 : real(descriptor);
}

KORA_EXPORT int fdatasync(int descriptor)
{
    static auto* const real = next<int(int)>("fdatasync");
    return fails("fsync", descriptor) ? -1 : real(descriptor);
}

KORA_EXPORT int ftruncate(int descriptor, off_t length) noexcept
{
    static auto* const real = next<int(int, off_t)>("ftruncate");
    const bool isRestoring = isArmed && !plan().failedFunction.empty() && !plan().isRestoringInterrupted;
    if (isRestoring && isWatched(pathOf(descriptor))) {
        plan().isRestoringInterrupted = true;
        errno = EINTR;
        return -1;
    }
    return fails("ftruncate", descriptor) ? -1 : real(descriptor, length);
}

KORA_EXPORT int rename(const char* from, const char* to) noexcept
{
    static auto* const real = next<int(const char*, const char*)>("rename");
    return fails("rename", from) ? -1 : real(from, to);
}

KORA_EXPORT int unlink(const char* path) noexcept
{
    static auto* const real = next<int(const char*)>("unlink");
    return fails("unlink", path) ? -1 : real(path);
}

KORA_EXPORT int mkdir(const char* path, mode_t mode) noexcept
{
    static auto* const real = next<int(const char*, mode_t)>("mkdir");
    return fails("mkdir", path) ? -1 : real(path, mode);
}

KORA_EXPORT int fchmod(int descriptor, mode_t mode) noexcept
{
    static auto* const real = next<int(int, mode_t)>("fchmod");
    return fails("fchmod", descriptor) ? -1 : real(descriptor, mode);
}

KORA_EXPORT int fchown(int descriptor, uid_t owner, gid_t group) noexcept
{
    static auto* const real = next<int(int, uid_t, gid_t)>("fchown");
    return fails("fchown", descriptor) ? -1 : real(descriptor, owner, group);
}
}
