#include "simulation/console/Listener.h"

#include "simulation/console/Conversation.h"
#include "simulation/console/SocketDirectory.h"
#include "simulation/console/UnixSocket.h"

#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <exception>
#include <list>
#include <new>
#include <string>
#include <vector>

namespace kora::simulation {

namespace {

constexpr int waitingConsoles = 16;
/// Served at a time; for one more the one that began first is dropped.
constexpr std::size_t mostConversations = 64;
constexpr useconds_t napMicroseconds = 100000;

/// In the order of their starts.
using Conversations = std::list<Conversation>;

/// Written before the thread starts; a forked child forgets them.
int listener = -1;
ControlGetter installationControl = nullptr;
/// Plain memory, since it is read when static objects are gone.
char socketFile[PATH_MAX] = "";

/// Milliseconds until the first of the conversations has lasted too long, -1 without one.
int longestWait(const Conversations& conversations)
{
    if (conversations.empty())
        return -1;
    return int(std::ceil(1000 * std::max(conversations.front().deadline() - patienceClock(), 0.0)));
}

/// @return whether the descriptor of the listener is still its own
bool acceptConsole(Conversations& conversations)
{
    const int fd = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
    if (fd < 0) {
        // The program closed descriptors that it does not know.
        if (errno == EBADF || errno == ENOTSOCK || errno == EINVAL)
            return false;
        // Out of descriptors, for one: that may pass.
        if (errno != EAGAIN)
            usleep(napMicroseconds);
        return true;
    }
    if (!isPeerSameUser(fd)) {
        close(fd);
        return true;
    }
    conversations.emplace_back(fd, installationControl);
    if (conversations.size() > mostConversations)
        conversations.pop_front();
    return true;
}

/// Lets one conversation go on. @return whether it is not over
bool advance(Conversation& conversation, short events)
{
    if (events & POLLNVAL) {
        conversation.forgetDescriptor();
        return false;
    }
    try {
        return (events == 0 || conversation.advance()) && conversation.deadline() > patienceClock();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "libkoralink.so.1 (simulated installation): training console: %s\n", error.what());
        return false;
    }
}

/// Serves whoever has something to say, and waits for nobody. @return whether the listener lives on
bool serveOnce(Conversations& conversations)
{
    std::vector<pollfd> awaited;
    for (const Conversation& conversation : conversations)
        awaited.push_back({conversation.descriptor(), conversation.awaitedEvents(), 0});
    awaited.push_back({listener, POLLIN, 0});
    if (poll(awaited.data(), awaited.size(), longestWait(conversations)) < 0)
        return errno == EINTR;
    auto served = awaited.cbegin();
    for (auto conversation = conversations.begin(); conversation != conversations.end(); ++served)
        conversation =
            advance(*conversation, served->revents) ? std::next(conversation) : conversations.erase(conversation);
    const short events = awaited.back().revents;
    return !(events & POLLNVAL) && (events == 0 || acceptConsole(conversations));
}

void* listen(void*)
{
    Conversations conversations;
    for (;;) {
        try {
            if (!serveOnce(conversations))
                return nullptr;
        } catch (const std::bad_alloc&) {
            usleep(napMicroseconds);
        }
    }
}

/// The socket belongs to the parent, and the thread was not forked.
void forgetInChild()
{
    if (listener >= 0)
        close(listener);
    listener = -1;
    socketFile[0] = '\0';
}

__attribute__((destructor)) void removeSocket()
{
    if (socketFile[0] != '\0')
        unlink(socketFile);
}

/// Under its name the socket appears when it listens already: whoever finds it refused takes it for an orphan.
bool openSocket(const std::string& folder)
{
    const std::string hidden = folder + "/." + std::to_string(getpid());
    const std::string path = socketPath(folder, getpid());
    unlink(hidden.c_str());
    if (bindTo(listener, hidden) != 0)
        return false;
    // Who hangs up again between poll and accept must not hold up the others.
    fcntl(listener, F_SETFL, O_NONBLOCK);
    if (chmod(hidden.c_str(), 0600) != 0 || ::listen(listener, waitingConsoles) != 0 ||
        rename(hidden.c_str(), path.c_str()) != 0) {
        unlink(hidden.c_str());
        return false;
    }
    path.copy(socketFile, sizeof socketFile - 1);
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

void startListening(ControlGetter control) noexcept
{
    if (listener >= 0)
        return;
    try {
        installationControl = control;
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

void stopListening() noexcept
{
    removeSocket();
    socketFile[0] = '\0';
    // The thread meets a socket that takes no more connections, and ends.
    if (listener >= 0)
        shutdown(listener, SHUT_RDWR);
}

} // namespace kora::simulation
