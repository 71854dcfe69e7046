#pragma once

#include "simulation/InstallationState.h"

#include <string>

namespace kora::simulation {

/// The state as a table for the trainer, one topic a line.
std::string statusText(const InstallationState& state);
/// The state as one JSON object; keys end with the unit where there is one.
std::string statusJson(const InstallationState& state);

} // namespace kora::simulation
