#include "stream/DeviceFile.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

DeviceFile::DeviceFile(const char* path, int flags) : descriptor(::open(path, flags)) {}

DeviceFile::~DeviceFile()
{
    if (descriptor >= 0)
        ::close(descriptor);
}

long DeviceFile::read(void* buffer, std::size_t bytes)
{
    return ::read(descriptor, buffer, bytes);
}

int DeviceFile::control(unsigned long request, void* record)
{
    return ::ioctl(descriptor, request, record);
}
