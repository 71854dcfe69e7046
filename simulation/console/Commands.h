#pragma once

#include "simulation/SimulationControl.h"
#include "simulation/console/CommandLine.h"

#include <functional>

namespace kora::simulation {

/// What a command does to the installation; returns what it answers, empty or whole lines.
using Action = std::function<std::string(SimulationControl&)>;

/// Reads one command of the training console. Takes no installation: the console checks input before it looks for one.
/// @throw InputError
Action parseCommand(const Words& words);

/// Carries out a line of a console. @return what to answer, as Protocol.h has it
std::string answerTo(const std::string& line, SimulationControl& control);

/// One line a command, with its arguments and its effect.
std::string commandHelp();

} // namespace kora::simulation
