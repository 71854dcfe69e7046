#include "simulation/console/Conversation.h"

#include "simulation/console/Commands.h"
#include "simulation/console/Protocol.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>

namespace kora::simulation {

namespace {

/// A console that keeps the listener waiting for longer is dropped, s.
constexpr double patience = 2;

bool mayComeLater(int error)
{
    return error == EAGAIN || error == EWOULDBLOCK || error == EINTR;
}

} // namespace

double patienceClock()
{
    timespec now = {};
    clock_gettime(CLOCK_BOOTTIME, &now);
    return double(now.tv_sec) + 1e-9 * double(now.tv_nsec);
}

Conversation::Conversation(int connection, ControlGetter getter)
    : fd(connection), control(getter), end(patienceClock() + patience)
{
}

Conversation::~Conversation()
{
    if (fd < 0)
        return;
    // A child that was forked meanwhile still holds the descriptor.
    shutdown(fd, SHUT_RDWR);
    close(fd);
}

short Conversation::awaitedEvents() const
{
    return phase == Phase::Answer ? short(POLLOUT) : short(POLLIN);
}

bool Conversation::advance()
{
    switch (phase) {
    case Phase::Command:
        return takeCommand();
    case Phase::Answer:
        return sendAnswer();
    case Phase::Rest:
        return skipRest();
    }
    return false;
}

long Conversation::receive(char* part, std::size_t size)
{
    const ssize_t received = recv(fd, part, size, MSG_DONTWAIT);
    return received < 0 && !mayComeLater(errno) ? 0 : received;
}

bool Conversation::takeCommand()
{
    char part[512];
    for (;;) {
        const long received = receive(part, sizeof part);
        if (received <= 0)
            return received < 0;
        request.append(part, std::size_t(received));
        isTooLong = request.size() > protocol::longestRequest;
        if (!isTooLong && request.back() != '\n')
            continue;
        answer =
            isTooLong ? protocol::refused + std::string("the command is too long\n") : answerTo(request, control());
        phase = Phase::Answer;
        return sendAnswer();
    }
}

bool Conversation::sendAnswer()
{
    while (sent < answer.size()) {
        // Whoever hangs up in between must not end this process by a signal.
        const ssize_t taken = send(fd, answer.data() + sent, answer.size() - sent, MSG_NOSIGNAL | MSG_DONTWAIT);
        if (taken < 0)
            return mayComeLater(errno);
        sent += std::size_t(taken);
    }
    if (!isTooLong)
        return false;
    shutdown(fd, SHUT_WR);
    phase = Phase::Rest;
    return skipRest();
}

bool Conversation::skipRest()
{
    char part[4096];
    for (;;) {
        const long received = receive(part, sizeof part);
        if (received <= 0)
            return received < 0;
    }
}

} // namespace kora::simulation
