#pragma once

#include <cstddef>

/// A device file that is open for as long as the object lives. A file that cannot be opened answers every call with
/// -1, as the operating system does.
class DeviceFile
{
public:
    /// @param flags as of open(2)
    DeviceFile(const char* path, int flags);
    ~DeviceFile();
    DeviceFile(const DeviceFile&) = delete;
    DeviceFile& operator=(const DeviceFile&) = delete;

    bool isOpen() const { return descriptor >= 0; }
    /// @return bytes read, or -1
    long read(void* buffer, std::size_t bytes);
    /// @return -1 on failure
    int control(unsigned long request, void* record);

private:
    int descriptor;
};
