#pragma once

#include "simulation/console/CommandLine.h"

#include <string>

namespace kora::simulation {

/// `kora-sim serve`: serves an installation until a signal or the command "stop" ends it.
/// @param words of the command, the verb first; @param name given before the command, empty if none was
/// @throw InputError, or std::system_error when it cannot be served
void serve(const Words& words, const std::string& name);

/// Name of the installation that is served where none is given.
constexpr char defaultServedName[] = "default";

/// A name as given, checked. @throw InputError
std::string servedName(const std::string& text);

} // namespace kora::simulation
