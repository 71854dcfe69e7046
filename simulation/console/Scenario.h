#pragma once

#include <functional>
#include <string>
#include <vector>

namespace kora::simulation {

/// Commands with times. A file of them has one a line, as "TIME COMMAND": TIME in seconds, or as m:ss or h:mm:ss, not
/// earlier than the line before; empty lines and what follows a "#" count for nothing.
struct Scenario
{
    struct Step
    {
        double time; ///< s after the start
        std::string command;
    };
    std::vector<Step> steps;

    /// Reads and checks a file. @throw InputError that names the file and the line
    static Scenario load(const std::string& path);

    struct Surroundings
    {
        std::function<double()> time;      ///< simulated time, s
        std::function<void(double)> sleep; ///< s of real time
        std::function<void(const Step&)> perform;
    };
    /// Performs the steps in simulated time, however it passes; a reset in between does not disturb the count.
    /// @param speed above 1 is faster than written
    void play(double speed, const Surroundings& surroundings) const;
};

/// Time of a scenario as a text says it, s. @throw InputError
double scenarioTime(const std::string& text);

} // namespace kora::simulation
