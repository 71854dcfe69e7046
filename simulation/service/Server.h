#pragma once

#include "simulation/service/Dispatcher.h"
#include "simulation/service/StreamPublisher.h"

#include <sys/types.h>

#include <cstdint>
#include <list>
#include <string>

namespace kora::simulation {

/// Serves an installation to the programs that join it, and to the console. One thread does it all: it keeps the
/// installation up to the clock, and carries out requests in the order of their coming. It waits for no program: what a
/// program does not take at once ends its connection.
class Server
{
public:
    /// @param installation used by nobody else, outlives the server. @throw std::system_error
    explicit Server(Installation& installation);
    ~Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    /// Serves until the console's "stop", or until `stopper` can be read.
    /// @param listener a listening socket of packets that does not block
    void run(int listener, int stopper);

private:
    struct Connection
    {
        int fd;
        pid_t pid;
        std::int64_t since;        ///< kernelNanoseconds()
        std::int64_t joinedAt = 0; ///< s since 1970, 0 for one that has not joined
        bool spoke = false;
    };
    using Place = std::list<Connection>::iterator;

    void watch(int fd, void* tag);
    void accept();
    void serve(Connection& connection);
    bool answer(Connection& connection, const unsigned char* packet, std::size_t bytes);
    bool answerRequest(Connection& connection, const Request& request);
    bool answerConsole(const Connection& connection, const std::string& line);
    bool welcome(Connection& connection, const Reply& reply);
    std::string joinedPrograms() const;
    void close(Connection& connection);
    void removeClosed();
    int programs() const;

    Installation& installation;
    Dispatcher dispatcher;
    StreamPublisher publisher;
    const int poller;
    int listener = -1;
    bool acceptsMore = true;
    bool stopping = false;
    /// A list: the poller knows the connections by their addresses.
    std::list<Connection> connections;
};

} // namespace kora::simulation
