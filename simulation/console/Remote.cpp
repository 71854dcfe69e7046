#include "simulation/console/Remote.h"

#include "simulation/console/CommandLine.h"
#include "simulation/console/InputError.h"
#include "simulation/console/Protocol.h"
#include "simulation/console/UnixSocket.h"

#include <sys/socket.h>
#include <unistd.h>

#include <cstring>

namespace kora::simulation {

namespace {

/// A simulation that takes longer for an answer is stopped, s.
constexpr int patience = 10;

/// Closes at the end of its scope.
struct Connection
{
    ~Connection()
    {
        if (fd >= 0)
            close(fd);
    }
    const int fd;
};

bool takePrefix(std::string& text, const char* prefix)
{
    const std::size_t length = std::strlen(prefix);
    if (text.compare(0, length, prefix) != 0)
        return false;
    text.erase(0, length);
    return true;
}

/// A simulation may run whose socket lies in a folder that is not trusted.
NoSimulation noneFound(const std::string& otherwise)
{
    const std::string untrusted = untrustedFolders();
    return NoSimulation(untrusted.empty() ? otherwise : untrusted);
}

} // namespace

std::vector<RunningSimulation> Remote::all()
{
    const std::vector<RunningSimulation> running = runningSimulations();
    if (running.empty())
        throw noneFound("no simulation is running");
    return running;
}

Remote Remote::find(const Wanted& wanted)
{
    if (wanted.pid || !wanted.name.empty()) {
        for (const RunningSimulation& simulation : runningSimulations())
            if (wanted.pid ? simulation.pid == *wanted.pid : simulation.name == wanted.name)
                return Remote(simulation);
        throw noneFound(wanted.pid ? "no simulation is running in process " + std::to_string(*wanted.pid)
                                   : "no installation is served as " + quoted(wanted.name));
    }
    const std::vector<RunningSimulation> running = all();
    if (running.size() > 1) {
        std::string shown;
        for (const RunningSimulation& simulation : running)
            shown += (shown.empty() ? "" : ", ") +
                     (simulation.name.empty() ? std::to_string(simulation.pid) : quoted(simulation.name));
        throw InputError("several simulations are running (" + shown + "): choose one with --pid or --name");
    }
    return Remote(running.front());
}

std::string Remote::described() const
{
    return simulation.name.empty() ? "the simulation in process " + std::to_string(simulation.pid)
                                   : "the installation served as " + quoted(simulation.name);
}

std::string Remote::ask(const std::string& command) const
{
    if (command.size() >= protocol::longestRequest)
        throw InputError("the command is too long");
    const Connection connection{newSocket(isServed() ? SOCK_SEQPACKET : SOCK_STREAM)};
    if (connection.fd < 0)
        throw NoSimulation(std::string("no socket: ") + std::strerror(errno));
    limitWaiting(connection.fd, patience);
    if (connectTo(connection.fd, simulation.socket) != 0)
        throw NoSimulation(described() + " has ended or hangs");
    std::string answer = converse(connection.fd, command + '\n');
    if (takePrefix(answer, protocol::accepted))
        return answer;
    if (!takePrefix(answer, protocol::refused))
        throw NoSimulation(described() + " does not answer");
    answer.erase(answer.find_last_not_of('\n') + 1);
    throw InputError(answer);
}

std::string Remote::converse(int fd, const std::string& command) const
{
    std::string answer;
    if (!sendAll(fd, command))
        return answer;
    char part[4096];
    for (;;) {
        const ssize_t received = recv(fd, part, sizeof part, 0);
        // A part of an answer counts as no answer.
        if (received < 0)
            return {};
        if (received == 0)
            return answer;
        answer.append(part, std::size_t(received));
    }
}

} // namespace kora::simulation
