#pragma once

#include <cstddef>

namespace kora::simulation {

/// What the driver does behind the device files, with its results: 0 or a byte count, or a negative errno value.
/// Devices are numbered as in devicePaths.
int deviceOpen(int device);
long deviceRead(int device, void* buffer, std::size_t bytes);
/// @param request only its lower 32 bits count
int deviceRequest(int device, unsigned long request, void* record);

} // namespace kora::simulation
