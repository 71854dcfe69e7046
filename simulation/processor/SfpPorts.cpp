#include "simulation/processor/SfpPorts.h"

namespace kora::simulation {

namespace {

constexpr std::uint32_t hardwareVersion = 3;
constexpr std::uint32_t firstSerialNumber = 2301;
/// Firmware 1.0.2.4, shown last to first.
constexpr char firmware[4] = {'4', '2', '0', '1'};

} // namespace

bool SfpPorts::plug(int port, std::uint16_t deviceId)
{
    if (port < 0 || port >= count)
        return false;
    ports[port] = {};
    if (deviceId == 0)
        return true;
    ports[port].deviceId = deviceId;
    ports[port].hwVersion = hardwareVersion;
    ports[port].serialNumber = firstSerialNumber + std::uint32_t(port);
    for (int i = 0; i < 4; ++i)
        ports[port].version[i] = firmware[i];
    return true;
}

bool SfpPorts::holdsAnywhere(Class deviceClass) const
{
    for (int port = 0; port < count; ++port)
        if (holds(port, deviceClass))
            return true;
    return false;
}

double SfpPorts::biasLimit(int port) const
{
    if (!holds(port, AmplifierClass))
        return 0;
    const int model = ports[port].deviceId & 0xff;
    return model == 3 || model == 4 ? 4000 : 500;
}

double SfpPorts::biasSign(int port) const
{
    const int model = ports[port].deviceId & 0xff;
    return model == 2 || model == 4 ? -1 : 1;
}

} // namespace kora::simulation
