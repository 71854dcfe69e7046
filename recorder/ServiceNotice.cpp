#include "recorder/ServiceNotice.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace kora::recorder {

void notifyServiceManager(const std::string& state)
{
    const char* path = std::getenv("NOTIFY_SOCKET");
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (!path || (path[0] != '/' && path[0] != '@') || std::strlen(path) >= sizeof address.sun_path)
        return;
    std::memcpy(address.sun_path, path, std::strlen(path));
    // An abstract name starts with a zero.
    if (path[0] == '@')
        address.sun_path[0] = '\0';
    const int socket = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (socket < 0)
        return;
    const auto length = socklen_t(offsetof(sockaddr_un, sun_path) + std::strlen(path));
    static_cast<void>(::sendto(socket, state.data(), state.size(), MSG_NOSIGNAL,
                               reinterpret_cast<const sockaddr*>(&address), length));
    ::close(socket);
}

double watchdogSeconds()
{
    const char* text = std::getenv("WATCHDOG_USEC");
    return text ? std::max(0.0, std::strtod(text, nullptr) * 1e-6) : 0;
}

} // namespace kora::recorder
