#pragma once

#include "simulation/SimulationControl.h"

#include <cstddef>
#include <string>

namespace kora::simulation {

/// Finds what commands are for. Called from the thread of the listener.
using ControlGetter = SimulationControl& (*)();

/// Real time, also where a test drives the other clocks of the process, s.
double patienceClock();

/// One connection of a console as the listener serves it: collects the command, answers it and sends the answer,
/// without ever waiting. Belongs to the thread of the listener.
class Conversation
{
public:
    /// @param connection a descriptor that does not block; this object closes it
    /// @param control gives the installation, when there is a command for it
    Conversation(int connection, ControlGetter control);
    ~Conversation();
    Conversation(const Conversation&) = delete;
    Conversation& operator=(const Conversation&) = delete;

    int descriptor() const { return fd; }
    /// The events it waits for, as poll(2) names them.
    short awaitedEvents() const;
    /// Moment of patienceClock() after which the console has kept the listener waiting for too long.
    double deadline() const { return end; }

    /// Takes what has come and sends what can be sent. @return whether the conversation goes on
    /// @throw std::bad_alloc
    bool advance();
    /// Gives the descriptor up without closing it: the program has closed it already, and may use its number again.
    void forgetDescriptor() { fd = -1; }

private:
    enum class Phase
    {
        Command,
        Answer,
        /// The rest of a line that was refused. A connection that is closed with unread bytes loses its answer.
        Rest
    };

    /// @return bytes received, 0 at the end of the connection, -1 if there is nothing now
    long receive(char* part, std::size_t size);
    bool takeCommand();
    bool sendAnswer();
    bool skipRest();

    int fd;
    const ControlGetter control;
    const double end;
    Phase phase = Phase::Command;
    bool isTooLong = false;
    std::string request;
    std::string answer;
    std::size_t sent = 0;
};

} // namespace kora::simulation
