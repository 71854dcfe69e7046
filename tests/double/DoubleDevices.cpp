// open, read, ioctl and close of the executable itself: answers for the device files, hands everything else on.

#include "double/DoubleInternals.h"

#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

using koralink_double::Double;

namespace {

using Lock = std::lock_guard<std::recursive_mutex>;

template <typename Function>
Function real(const char* name)
{
    return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

int realOpen(const char* path, int flags, mode_t mode)
{
    static const auto next = real<int (*)(const char*, int, ...)>("open");
    return next(path, flags, mode);
}

bool isDevice(const char* path)
{
    for (const char* device : {streamDevicePath, amplifierDevicePath[0], amplifierDevicePath[1], outputDevicePath}) {
        if (std::strcmp(path, device) == 0)
            return true;
    }
    return false;
}

/// Path behind a descriptor of a device, empty for any other descriptor. Caller holds the lock.
std::string deviceOf(Double& self, int fd)
{
    const auto found = self.descriptors.find(fd);
    return found == self.descriptors.end() ? std::string() : found->second;
}

int openDevice(const char* path, int flags)
{
    Double& self = Double::instance();
    const Lock lock(self.mutex);
    self.record("open", {double(flags)}, {path});
    if (self.absentDevices.count(path)) {
        errno = ENOENT;
        return -1;
    }
    const int fd = realOpen("/dev/null", O_RDWR, 0);
    self.descriptors[fd] = path;
    return fd;
}

ssize_t readStream(Double& self, void* buffer, std::size_t bytes)
{
    const std::size_t offered =
        self.answers.deliveredBytes < 0 ? bytes : std::min(bytes, std::size_t(self.answers.deliveredBytes));
    const std::size_t count = offered / recordBytes;
    std::vector<DisplayRecord> block(count);
    if (self.answers.fillBlock)
        self.answers.fillBlock(block.data(), int(count));
    if (count > 0)
        std::memcpy(buffer, block.data(), count * recordBytes);
    return ssize_t(offered);
}

int controlAmplifier(Double& self, int amplifier, unsigned long request, void* record)
{
    if (request == requestAmplifierStatus) {
        std::memcpy(record, &self.answers.amplifierStatus[amplifier], sizeof(AmplifierStatus));
        return 0;
    }
    if (request == requestCurrents) {
        CurrentRecord currents = {};
        if (self.answers.currents)
            currents = self.answers.currents(amplifier, self.answers.lastOutputs);
        std::memcpy(record, &currents, sizeof currents);
        return 0;
    }
    return -1;
}

int controlDevice(Double& self, const std::string& path, unsigned long request, void* record)
{
    if (path == outputDevicePath && request == requestSetOutputs) {
        OutputRecord& outputs = self.answers.lastOutputs;
        std::memcpy(outputs.volts, record, sizeof outputs.volts);
        std::memcpy(&outputs.flag, static_cast<const char*>(record) + sizeof outputs.volts, sizeof outputs.flag);
        self.record("ioctl",
                    {outputs.volts[0], outputs.volts[1], outputs.volts[2], outputs.volts[3], double(outputs.flag)},
                    {path});
        return 0;
    }
    self.record("ioctl", {double(request)}, {path});
    for (int amplifier = 0; amplifier < 2; ++amplifier) {
        if (path == amplifierDevicePath[amplifier])
            return controlAmplifier(self, amplifier, request, record);
    }
    return -1;
}

} // namespace

extern "C" {

int open(const char* path, int flags, ...)
{
    if (isDevice(path))
        return openDevice(path, flags);
    mode_t mode = 0;
    if (flags & (O_CREAT | O_TMPFILE)) {
        va_list arguments;
        va_start(arguments, flags);
        mode = va_arg(arguments, mode_t);
        va_end(arguments);
    }
    return realOpen(path, flags, mode);
}

ssize_t read(int fd, void* buffer, size_t bytes)
{
    Double& self = Double::instance();
    {
        const Lock lock(self.mutex);
        const std::string path = deviceOf(self, fd);
        if (!path.empty()) {
            self.record("read", {double(bytes)}, {path});
            return path == streamDevicePath ? readStream(self, buffer, bytes) : -1;
        }
    }
    static const auto next = real<ssize_t (*)(int, void*, size_t)>("read");
    return next(fd, buffer, bytes);
}

int ioctl(int fd, unsigned long request, ...) noexcept
{
    va_list arguments;
    va_start(arguments, request);
    void* record = va_arg(arguments, void*);
    va_end(arguments);
    Double& self = Double::instance();
    {
        const Lock lock(self.mutex);
        const std::string path = deviceOf(self, fd);
        if (!path.empty())
            return controlDevice(self, path, request & 0xffffffff, record);
    }
    static const auto next = real<int (*)(int, unsigned long, ...)>("ioctl");
    return next(fd, request, record);
}

int close(int fd)
{
    Double& self = Double::instance();
    {
        const Lock lock(self.mutex);
        const auto found = self.descriptors.find(fd);
        if (found != self.descriptors.end()) {
            self.record("close", {}, {found->second});
            self.descriptors.erase(found);
        }
    }
    static const auto next = real<int (*)(int)>("close");
    return next(fd);
}
}
