#include "simulation/service/Server.h"

#include "simulation/Installation.h"
#include "simulation/console/Commands.h"
#include "simulation/console/Protocol.h"
#include "simulation/console/UnixSocket.h"
#include "simulation/service/KernelTime.h"

#include <sys/epoll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <fstream>
#include <optional>
#include <system_error>

namespace kora::simulation {

namespace {

constexpr std::int64_t nanosecondsPerMillisecond = 1000000;
/// The stream is at most so old, ms; without a program nobody sees its age.
constexpr int periodWithPrograms = 10;
constexpr int periodAlone = 100;
constexpr std::size_t mostConnections = 128;
/// Somebody who neither joins nor commands is dropped after this time, ns.
constexpr std::int64_t patience = 2000 * nanosecondsPerMillisecond;
/// Longest part of a text in one packet, as the console takes it.
constexpr std::size_t longestPart = 4096;

std::string programName(pid_t pid)
{
    std::string name;
    std::ifstream file("/proc/" + std::to_string(pid) + "/comm");
    std::getline(file, name);
    return printable(name);
}

std::string localTime(std::int64_t seconds)
{
    const time_t time = time_t(seconds);
    tm local = {};
    char text[32] = "";
    if (localtime_r(&time, &local))
        std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &local);
    return text;
}

} // namespace

Server::Server(Installation& served) : installation(served), dispatcher(served), poller(epoll_create1(EPOLL_CLOEXEC))
{
    if (poller < 0)
        throw std::system_error(errno, std::generic_category(), "epoll");
    // What takes its time is done before the first program comes.
    installation.reset();
    publisher.publish(installation);
}

Server::~Server()
{
    for (Connection& connection : connections)
        close(connection);
    ::close(poller);
}

void Server::watch(int fd, void* tag)
{
    epoll_event event = {};
    event.events = EPOLLIN;
    event.data.ptr = tag;
    epoll_ctl(poller, EPOLL_CTL_ADD, fd, &event);
}

int Server::programs() const
{
    return int(std::count_if(connections.begin(), connections.end(),
                             [](const Connection& connection) { return connection.joinedAt != 0; }));
}

void Server::run(int listeningSocket, int stopper)
{
    listener = listeningSocket;
    watch(listener, nullptr);
    watch(stopper, this);
    std::int64_t published = kernelNanoseconds();
    while (!stopping) {
        const std::int64_t period = (programs() > 0 ? periodWithPrograms : periodAlone) * nanosecondsPerMillisecond;
        const std::int64_t left = published + period - kernelNanoseconds();
        std::array<epoll_event, 16> events;
        const int count =
            epoll_wait(poller, events.data(), int(events.size()),
                       left <= 0 ? 0 : int((left + nanosecondsPerMillisecond - 1) / nanosecondsPerMillisecond));
        for (int i = 0; i < count; ++i) {
            void* const tag = events[std::size_t(i)].data.ptr;
            if (!tag)
                accept();
            else if (tag == this)
                stopping = true;
            else
                serve(*static_cast<Connection*>(tag));
        }
        if (kernelNanoseconds() - published >= period) {
            publisher.publish(installation);
            published = kernelNanoseconds();
            removeClosed();
        }
    }
}

void Server::accept()
{
    const int fd = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
    if (fd < 0) {
        // Out of descriptors, for one. The listener would report it for ever: until the next look at the clock it is
        // not asked.
        if (errno != EAGAIN && errno != EINTR && errno != ECONNABORTED) {
            epoll_ctl(poller, EPOLL_CTL_DEL, listener, nullptr);
            acceptsMore = false;
        }
        return;
    }
    const std::optional<ucred> peer = peerOf(fd);
    if (!peer || peer->uid != geteuid() || connections.size() >= mostConnections) {
        ::close(fd);
        return;
    }
    connections.push_back({fd, peer->pid, kernelNanoseconds()});
    watch(fd, &connections.back());
}

void Server::close(Connection& connection)
{
    if (connection.fd >= 0)
        ::close(connection.fd);
    connection.fd = -1;
    connection.joinedAt = 0;
}

/// Not before all events of a round are looked at, since they point to connections.
void Server::removeClosed()
{
    const std::int64_t now = kernelNanoseconds();
    for (Connection& connection : connections)
        if (!connection.spoke && now - connection.since > patience)
            close(connection);
    connections.remove_if([](const Connection& connection) { return connection.fd < 0; });
    if (!acceptsMore) {
        watch(listener, nullptr);
        acceptsMore = true;
    }
}

void Server::serve(Connection& connection)
{
    if (connection.fd < 0)
        return;
    alignas(Request) unsigned char packet[protocol::longestRequest + 1];
    const ssize_t received = recv(connection.fd, packet, sizeof packet, MSG_DONTWAIT);
    if (received < 0 && (errno == EAGAIN || errno == EINTR))
        return;
    if (received <= 0 || !answer(connection, packet, std::size_t(received)))
        close(connection);
}

bool Server::answer(Connection& connection, const unsigned char* packet, std::size_t bytes)
{
    Request request;
    if (bytes == sizeof request) {
        std::memcpy(&request, packet, sizeof request);
        if (request.magic == Request::rightMagic)
            return answerRequest(connection, request);
    }
    const std::string line(reinterpret_cast<const char*>(packet), bytes);
    return !connection.spoke && line.size() <= protocol::longestRequest && line.back() == '\n' &&
           answerConsole(connection, line);
}

bool Server::answerRequest(Connection& connection, const Request& request)
{
    if (request.version != Request::rightVersion)
        return false;
    Reply reply = {};
    reply.sequence = request.sequence;
    if (request.operation == Operation::join)
        return !connection.spoke && welcome(connection, reply);
    if (connection.joinedAt == 0)
        return false;
    // Given up by the program: what it was told has failed must have no effect.
    if (kernelNanoseconds() > request.deadline)
        return true;
    if (!dispatcher.carryOut(request, reply))
        return false;
    publisher.publish(installation);
    return send(connection.fd, &reply, sizeof reply, MSG_NOSIGNAL | MSG_DONTWAIT) == ssize_t(sizeof reply);
}

bool Server::welcome(Connection& connection, const Reply& reply)
{
    publisher.publish(installation);
    Reply sent = reply;
    iovec part = {&sent, sizeof sent};
    msghdr message = {};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))] = {};
    message.msg_control = control;
    message.msg_controllen = sizeof control;
    cmsghdr* const header = CMSG_FIRSTHDR(&message);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(sizeof(int));
    const int file = publisher.file();
    std::memcpy(CMSG_DATA(header), &file, sizeof file);
    connection.spoke = true;
    connection.joinedAt = std::time(nullptr);
    return sendmsg(connection.fd, &message, MSG_NOSIGNAL | MSG_DONTWAIT) == ssize_t(sizeof sent);
}

std::string Server::joinedPrograms() const
{
    std::string lines;
    for (const Connection& connection : connections)
        if (connection.joinedAt != 0)
            lines += std::to_string(connection.pid) + ' ' + programName(connection.pid) + " since " +
                     localTime(connection.joinedAt) + '\n';
    return lines;
}

/// @return whether the connection stays: the one that stops the service does, so that its end tells of that of the
/// service
bool Server::answerConsole(const Connection& connection, const std::string& line)
{
    const Words words = wordsOf(line);
    std::string text;
    if (words == Words{protocol::stop}) {
        text = protocol::accepted;
        stopping = true;
    } else if (words == Words{protocol::programs}) {
        text = protocol::accepted + joinedPrograms();
    } else {
        text = answerTo(line, installation);
        publisher.publish(installation);
    }
    for (std::size_t sent = 0; sent < text.size(); sent += longestPart)
        if (send(connection.fd, text.data() + sent, std::min(longestPart, text.size() - sent),
                 MSG_NOSIGNAL | MSG_DONTWAIT) < 0)
            break;
    return stopping;
}

} // namespace kora::simulation
