#pragma once

#include "hardware/koralink.h"

#include <cstdint>

/// Product code of the device in a port as the control library tells it, 0 for an empty port, 0xfffe for a refusal.
inline std::uint16_t deviceIn(int port)
{
    std::uint16_t id = 0xffff;
    return getSFPinfo(port, &id, nullptr, nullptr, nullptr) == 0 ? id : 0xfffe;
}
