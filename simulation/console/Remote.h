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

/// Which simulation is meant, where several run: that of a process, or that which is served by a name.
struct Wanted
{
    std::optional<pid_t> pid;
    std::string name;
};

/// A running simulation, seen from the console.
class Remote
{
public:
    /// Every simulation of this user. @throw NoSimulation if there is none
    static std::vector<RunningSimulation> all();
    /// @param wanted with neither pid nor name there must be a single simulation
    /// @throw NoSimulation, or InputError when several run and none is named
    static Remote find(const Wanted& wanted);
    explicit Remote(RunningSimulation found) : simulation(std::move(found)) {}

    bool isServed() const { return !simulation.name.empty(); }

    /// Gives a command and returns its answer.
    /// @throw InputError when it is refused, NoSimulation when the process ended or does not answer
    std::string ask(const std::string& command) const;

private:
    std::string described() const;
    std::string converse(int fd, const std::string& command) const;

    RunningSimulation simulation;
};

} // namespace kora::simulation
