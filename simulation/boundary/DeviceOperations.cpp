#include "simulation/boundary/DeviceOperations.h"

#include "simulation/Installation.h"

#include <cerrno>
#include <cstring>

namespace kora::simulation {

namespace {

constexpr int streamDevice = 0;
constexpr int firstAmplifierDevice = 1;
constexpr int outputDevice = 3;

int amplifierRequest(int amplifier, unsigned long request, void* record)
{
    return installation().operate([&](Plant& plant) {
        if (!plant.ports().holds(amplifier, SfpPorts::AmplifierClass))
            return -ENODEV;
        if (request == requestAmplifierStatus) {
            const AmplifierStatus status = plant.amplifierStatus(amplifier);
            std::memcpy(record, &status, sizeof status);
        } else {
            const CurrentRecord currents = plant.currentRecord(amplifier);
            std::memcpy(record, &currents, sizeof currents);
        }
        return 0;
    });
}

int setOutputs(const void* record)
{
    return installation().operate([&](Plant& plant) {
        if (!plant.ports().holdsAnywhere(SfpPorts::OutputClass))
            return -ENODEV;
        double volts[4];
        std::memcpy(volts, record, sizeof volts);
        plant.outputs().write(volts);
        return 0;
    });
}

} // namespace

int deviceOpen(int device)
{
    return installation().isDevicePresent(device) ? 0 : -ENOENT;
}

long deviceRead(int device, void* buffer, std::size_t bytes)
{
    if (!installation().isDevicePresent(device))
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
    return long(installation().awaitedRecords(buffer, int(records))) * long(sizeof(DisplayRecord));
}

int deviceRequest(int device, unsigned long request, void* record)
{
    request &= 0xffffffff;
    if (!installation().isDevicePresent(device))
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
