#pragma once

#include "hardware/koralink.h"

namespace kora::simulation {

/// What sits in the four SFP ports. The high byte of a device's code is its class.
class SfpPorts
{
public:
    static constexpr int count = 4;
    enum Class
    {
        AmplifierClass = 0x21,
        OutputClass = 0x22,
        EncoderClass = 0x23
    };

    /// @return false for a port outside 0 to 3
    bool plug(int port, std::uint16_t deviceId);
    const SFPinfo& info(int port) const { return ports[port]; }

    bool holds(int port, Class deviceClass) const { return ports[port].deviceId >> 8 == deviceClass; }
    bool holdsAnywhere(Class deviceClass) const;
    /// Largest bias of the amplifier in a port, V; 0 where there is none.
    double biasLimit(int port) const;
    /// Sign of that bias.
    double biasSign(int port) const;

private:
    SFPinfo ports[count] = {};
};

} // namespace kora::simulation
