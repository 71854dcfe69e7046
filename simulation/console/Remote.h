#pragma once

#include "simulation/console/SocketDirectory.h"

#include <optional>
#include <stdexcept>

namespace kora::simulation {

/// There is no simulation to talk to; the text is one line.
class NoSimulation : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// A running simulation, seen from the console.
class Remote
{
public:
    /// Every simulation of this user. @throw NoSimulation if there is none
    static std::vector<RunningSimulation> all();
    /// @param pid of the simulation; without one there must be a single simulation
    /// @throw NoSimulation, or InputError when several run and none is named
    static Remote find(std::optional<pid_t> pid);

    /// Gives a command and returns its answer.
    /// @throw InputError when it is refused, NoSimulation when the process ended or does not answer
    std::string ask(const std::string& command) const;

private:
    explicit Remote(RunningSimulation found) : simulation(std::move(found)) {}
    std::string converse(int fd, const std::string& command) const;

    RunningSimulation simulation;
};

} // namespace kora::simulation
