#include "simulation/boundary/DeviceOperations.h"

#include "simulation/boundary/Access.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace kora::simulation {

namespace {

constexpr int streamDevice = 0;
constexpr int firstAmplifierDevice = 1;
constexpr int outputDevice = 3;

/// Reads a record of an amplifier into memory at any address.
template <typename Record>
int readAmplifier(Operation operation, int (AcquisitionBoard::*read)(int, Record*), int amplifier, void* destination)
{
    Record record;
    const int result = access().perform(operation, read, -ENODEV, amplifier, &record);
    if (result == 0)
        std::memcpy(destination, &record, sizeof record);
    return result;
}

int amplifierRequest(int amplifier, unsigned long request, void* record)
{
    return request == requestAmplifierStatus
               ? readAmplifier(Operation::amplifierStatus, &AcquisitionBoard::amplifierStatus, amplifier, record)
               : readAmplifier(Operation::amplifierCurrents, &AcquisitionBoard::amplifierCurrents, amplifier, record);
}

int setOutputs(const void* record)
{
    OutputVolts volts;
    std::memcpy(volts.data(), record, sizeof volts);
    return access().perform(Operation::writeOutputs, &AcquisitionBoard::writeOutputs, -ENODEV, volts);
}

} // namespace

int deviceOpen(int device)
{
    return access().isDevicePresent(device) ? 0 : -ENOENT;
}

long deviceRead(int device, void* buffer, std::size_t bytes)
{
    if (!access().isDevicePresent(device))
        return -ENODEV;
    if (device != streamDevice)
        return -EINVAL;
    if (bytes == 0)
        return 0;
    const std::size_t records = std::min(bytes / sizeof(DisplayRecord), std::size_t(DisplayStream::largestBlock));
    if (records == 0)
        return -EINVAL;
    if (!buffer)
        return -EFAULT;
    const int delivered = access().awaitedRecords(buffer, int(records));
    return delivered < 0 ? -ENODEV : long(delivered) * long(sizeof(DisplayRecord));
}

int deviceRequest(int device, unsigned long request, void* record)
{
    request &= 0xffffffff;
    if (!access().isDevicePresent(device))
        return -ENODEV;
    const bool isAmplifier = device != streamDevice && device != outputDevice;
    const bool known = isAmplifier ? request == requestAmplifierStatus || request == requestCurrents
                                   : device == outputDevice && request == requestSetOutputs;
    if (!known)
        return -ENOTTY;
    if (!record)
        return -EFAULT;
    return isAmplifier ? amplifierRequest(device - firstAmplifierDevice, request, record) : setOutputs(record);
}

} // namespace kora::simulation
