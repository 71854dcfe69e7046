#include "simulation/console/UnixSocket.h"

#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace kora::simulation {

namespace {

template <typename Call>
int withAddress(int fd, const std::string& path, Call call)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) {
        errno = ENAMETOOLONG;
        return -1;
    }
    std::memcpy(address.sun_path, path.data(), path.size());
    return call(fd, reinterpret_cast<const sockaddr*>(&address), socklen_t(sizeof address));
}

} // namespace

int bindTo(int fd, const std::string& path)
{
    return withAddress(fd, path, bind);
}

int connectTo(int fd, const std::string& path)
{
    return withAddress(fd, path, connect);
}

int newSocket(int type)
{
    return socket(AF_UNIX, type | SOCK_CLOEXEC, 0);
}

std::optional<ucred> peerOf(int fd)
{
    ucred peer = {};
    socklen_t size = sizeof peer;
    if (getsockopt(fd, SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0)
        return std::nullopt;
    return peer;
}

bool isPeerSameUser(int fd)
{
    const std::optional<ucred> peer = peerOf(fd);
    return peer && peer->uid == geteuid();
}

void limitWaiting(int fd, double seconds)
{
    const time_t whole = time_t(seconds);
    const timeval limit = {whole, suseconds_t((seconds - double(whole)) * 1e6)};
    setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    setsockopt(fd, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
}

bool sendAll(int fd, const std::string& text)
{
    for (std::size_t sent = 0; sent < text.size();) {
        // Whoever hangs up in between must not end this process by a signal.
        const ssize_t taken = send(fd, text.data() + sent, text.size() - sent, MSG_NOSIGNAL);
        if (taken <= 0)
            return false;
        sent += std::size_t(taken);
    }
    return true;
}

} // namespace kora::simulation
