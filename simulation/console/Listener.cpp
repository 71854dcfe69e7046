#include "simulation/console/Listener.h"

#include "simulation/Installation.h"
#include "simulation/console/Commands.h"
#include "simulation/console/InputError.h"
#include "simulation/console/Protocol.h"
#include "simulation/console/SocketDirectory.h"
#include "simulation/console/UnixSocket.h"

#include <pthread.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <string>

namespace kora::simulation {

namespace {

/// A console that keeps the listener waiting for longer is dropped, s.
constexpr int patience = 2;
constexpr int waitingConsoles = 16;
constexpr useconds_t napMicroseconds = 100000;

/// Written before the thread starts; a forked child forgets them.
int listener = -1;
/// Plain memory, since it is read when static objects are gone.
char servedPath[PATH_MAX] = "";

bool isSameUser(int fd)
{
    ucred peer = {};
    socklen_t size = sizeof peer;
    return getsockopt(fd, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 && peer.uid == geteuid();
}

std::string answer(const std::string& request)
{
    try {
        return protocol::accepted + parseCommand(wordsOf(request))(installation());
    } catch (const InputError& error) {
        return std::string(protocol::refused) + error.what() + '\n';
    }
}

/// The request up to its line end, empty when it does not come or grows too long.
std::string receiveRequest(int fd)
{
    std::string request;
    char part[512];
    while (request.size() <= protocol::longestRequest) {
        const ssize_t received = recv(fd, part, sizeof part, 0);
        if (received <= 0)
            return {};
        request.append(part, std::size_t(received));
        if (request.back() == '\n')
            return request;
    }
    return {};
}

void serve(int fd)
{
    if (!isSameUser(fd))
        return;
    limitWaiting(fd, patience);
    const std::string request = receiveRequest(fd);
    if (!request.empty())
        sendAll(fd, answer(request));
}

void* listen(void*)
{
    for (;;) {
        const int fd = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (fd < 0) {
            // The program closed descriptors that it does not know.
            if (errno == EBADF || errno == ENOTSOCK || errno == EINVAL)
                return nullptr;
            // Out of descriptors, for one: that may pass.
            usleep(napMicroseconds);
            continue;
        }
        try {
            serve(fd);
        } catch (const std::exception& error) {
            std::fprintf(stderr, "libkoralink.so.1 (simulated installation): training console: %s\n", error.what());
        }
        close(fd);
    }
}

/// The socket belongs to the parent, and the thread was not forked.
void forgetInChild()
{
    if (listener >= 0)
        close(listener);
    listener = -1;
    servedPath[0] = '\0';
}

__attribute__((destructor)) void removeSocket()
{
    if (servedPath[0] != '\0')
        unlink(servedPath);
}

/// Under its name the socket appears when it listens already: whoever finds it refused takes it for an orphan.
bool openSocket(const std::string& folder)
{
    const std::string hidden = folder + "/." + std::to_string(getpid());
    const std::string path = socketPath(folder, getpid());
    unlink(hidden.c_str());
    if (bindTo(listener, hidden) != 0)
        return false;
    if (chmod(hidden.c_str(), 0600) != 0 || ::listen(listener, waitingConsoles) != 0 ||
        rename(hidden.c_str(), path.c_str()) != 0) {
        unlink(hidden.c_str());
        return false;
    }
    path.copy(servedPath, sizeof servedPath - 1);
    return true;
}

bool startThread()
{
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    // A thread starts with the mask of its maker.
    pthread_sigmask(SIG_SETMASK, &all, &before);
    pthread_t thread;
    const bool started = pthread_create(&thread, nullptr, listen, nullptr) == 0;
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    if (started) {
        pthread_setname_np(thread, "kora-console");
        pthread_detach(thread);
    }
    return started;
}

} // namespace

void startListening() noexcept
{
    try {
        const std::string folder = socketFolder();
        listener = folder.empty() ? -1 : newSocket();
        if (listener >= 0 && openSocket(folder) && pthread_atfork(nullptr, nullptr, forgetInChild) == 0 &&
            startThread())
            return;
    } catch (const std::bad_alloc&) {
        // As little as without a socket.
    }
    removeSocket();
    forgetInChild();
}

} // namespace kora::simulation
