#include "simulation/service/Client.h"

#include "simulation/console/SocketDirectory.h"
#include "simulation/console/UnixSocket.h"
#include "simulation/service/KernelTime.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <thread>

namespace kora::simulation {

namespace {

/// For an answer, ns. With what comes before and after, a call ends within a second.
constexpr std::int64_t patience = 800000000;
/// A service that was at work within this time is not asked whether it lives, ns.
constexpr std::int64_t shortSilence = 150000000;
/// A waiting read looks again after this time at the latest, s.
constexpr double longestNapS = 0.02;

enum class Packet
{
    Taken,
    Late,
    Gone
};

/// Waits for the next packet, which must be a whole reply. The socket's own limit of waiting is the patience.
Packet receiveReply(int fd, Reply& reply, std::int64_t deadline, msghdr& message)
{
    for (int flags = MSG_CMSG_CLOEXEC;; flags |= MSG_DONTWAIT) {
        const ssize_t received = recvmsg(fd, &message, flags);
        if (received == ssize_t(sizeof reply))
            return Packet::Taken;
        if (received >= 0 || (errno != EAGAIN && errno != EINTR))
            return Packet::Gone;
        // A signal came in between: wait for what is left of the time.
        const std::int64_t left = deadline - kernelNanoseconds();
        if (left <= 0)
            return Packet::Late;
        pollfd waited = {fd, POLLIN, 0};
        // A nanosecond short of a millisecond is still to be waited for.
        poll(&waited, 1, int((left + 999999) / 1000000));
    }
}

msghdr messageFor(iovec& part)
{
    msghdr message = {};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    return message;
}

} // namespace

Client::Client(int socket) : fd(socket)
{
    limitWaiting(fd, 1e-9 * double(patience));
    struct stat file;
    if (fstat(fd, &file) == 0)
        inode = file.st_ino;
}

Client::Outcome Client::join(const std::string& name, std::unique_ptr<Client>& client)
{
    const std::string folder = socketFolder();
    const int socket = folder.empty() ? -1 : connectToServed(servedPath(folder, name));
    if (socket < 0)
        return Outcome::NotServed;
    std::unique_ptr<Client> joining(new Client(socket));
    if (!isPeerSameUser(socket) || !joining->receiveStream()) {
        joining->abandon();
        return Outcome::NoAnswer;
    }
    client = std::move(joining);
    return Outcome::Joined;
}

bool Client::receiveStream()
{
    const std::int64_t deadline = kernelNanoseconds() + patience;
    const Request request = {Request::rightMagic, Request::rightVersion, Operation::join, ++sequence, deadline, {}};
    if (send(fd, &request, sizeof request, MSG_NOSIGNAL | MSG_DONTWAIT) != ssize_t(sizeof request))
        return false;
    Reply reply;
    iovec part = {&reply, sizeof reply};
    msghdr message = messageFor(part);
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))];
    message.msg_control = control;
    message.msg_controllen = sizeof control;
    if (receiveReply(fd, reply, deadline, message) != Packet::Taken)
        return false;
    const cmsghdr* const header = CMSG_FIRSTHDR(&message);
    if (!header || header->cmsg_level != SOL_SOCKET || header->cmsg_type != SCM_RIGHTS ||
        header->cmsg_len != CMSG_LEN(sizeof(int)))
        return false;
    int file = -1;
    std::memcpy(&file, CMSG_DATA(header), sizeof file);
    stream = StreamReader::open(file);
    close(file);
    return stream != nullptr;
}

bool Client::ownsDescriptor() const
{
    struct stat file;
    return fstat(fd, &file) == 0 && S_ISSOCK(file.st_mode) && file.st_ino == inode;
}

void Client::abandon()
{
    if (ownsDescriptor())
        close(fd);
}

bool Client::exchange(Request& request, Reply& reply)
{
    const auto entered = std::chrono::steady_clock::now();
    const std::int64_t deadline = kernelNanoseconds() + patience;
    std::unique_lock<std::mutex> lock(mutex);
    if (!turn.wait_until(lock, entered + std::chrono::nanoseconds(patience), [this] { return !inUse; }))
        return false;
    // A service that is stopped is not waited for by every call anew.
    if (ended || stream->heartbeat() == givenUpAt)
        return false;
    inUse = true;
    request.magic = Request::rightMagic;
    request.version = Request::rightVersion;
    request.sequence = ++sequence;
    request.deadline = deadline;
    lock.unlock();
    const int savedErrno = errno;
    const bool answered = converse(request, reply, deadline);
    errno = savedErrno;
    lock.lock();
    if (!answered)
        givenUpAt = stream->heartbeat();
    inUse = false;
    turn.notify_one();
    return answered;
}

bool Client::converse(const Request& request, Reply& reply, std::int64_t deadline)
{
    if (!ownsDescriptor() || (send(fd, &request, sizeof request, MSG_NOSIGNAL | MSG_DONTWAIT) < 0 && errno != EAGAIN)) {
        ended = true;
        return false;
    }
    for (;;) {
        iovec part = {&reply, sizeof reply};
        msghdr message = messageFor(part);
        switch (receiveReply(fd, reply, deadline, message)) {
        case Packet::Gone:
            ended = true;
            return false;
        case Packet::Late:
            return false;
        case Packet::Taken:
            // The answer to a call that was given up may still come.
            if (reply.sequence == request.sequence)
                return true;
        }
    }
}

bool Client::isServiceAtWork()
{
    if (ended)
        return false;
    // On a busy machine it may only be late: an answer tells.
    return kernelNanoseconds() - stream->heartbeat() < shortSilence ||
           call(Operation::computeSteps, &AcquisitionBoard::computeSteps, -1, 0) == 0;
}

int Client::newestRecords(void* destination, int count)
{
    if (!isServiceAtWork())
        return -1;
    if (stream->conditions().bufferFails &&
        call(Operation::countBufferCall, &AcquisitionBoard::countBufferCall, -1) != 0)
        return -1;
    return !destination || count < 0 ? -1 : stream->newestRecords(destination, count);
}

int Client::awaitedRecords(void* destination, int count)
{
    count = std::min(count, DisplayStream::largestBlock);
    while (isServiceAtWork()) {
        const StreamConditions conditions = stream->conditions();
        const std::int64_t missing = conditions.missingSteps(count);
        if (missing == 0)
            return stream->newestRecords(destination, count);
        if (!conditions.drivenClock)
            std::this_thread::sleep_for(
                std::chrono::duration<double>(std::min(double(missing) / physicsRate, longestNapS)));
        else if (call(Operation::computeRecords, &AcquisitionBoard::computeRecords, -1, count) != 0)
            return -1;
    }
    return -1;
}

bool Client::isDevicePresent(int device)
{
    return isServiceAtWork() && stream->conditions().devicePresent[std::size_t(device)];
}

} // namespace kora::simulation
