#include "simulation/service/ServedName.h"

#include "simulation/console/InputError.h"
#include "simulation/console/SocketDirectory.h"
#include "simulation/console/UnixSocket.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <system_error>

namespace kora::simulation {

namespace {

constexpr int waitingPrograms = 64;

[[noreturn]] void fail(int error)
{
    throw std::system_error(error, std::generic_category(), "the socket of the service cannot be made");
}

} // namespace

ServedName::ServedName(const std::string& name)
{
    const std::string folder = socketFolder();
    if (folder.empty())
        fail(EACCES);
    path = servedPath(folder, name);
    const int served = connectToServed(path);
    if (served >= 0) {
        close(served);
        throw InputError("an installation is served as " + name + " already");
    }
    bindAndListen(folder);
}

void ServedName::bindAndListen(const std::string& folder)
{
    const std::string hidden = folder + "/." + std::to_string(getpid());
    fd = newSocket(SOCK_SEQPACKET | SOCK_NONBLOCK);
    unlink(hidden.c_str());
    // Under its name the socket appears when it listens already: whoever finds it refused takes it for an orphan.
    if (fd >= 0 && bindTo(fd, hidden) == 0 && chmod(hidden.c_str(), 0600) == 0 && listen(fd, waitingPrograms) == 0) {
        const FolderLock lock(folder);
        // link() leaves a socket alone that another service has put there meanwhile.
        if (link(hidden.c_str(), path.c_str()) == 0) {
            unlink(hidden.c_str());
            return;
        }
    }
    const int error = errno;
    unlink(hidden.c_str());
    close(fd);
    if (error == EEXIST)
        throw InputError("an installation is served by this name already");
    fail(error);
}

ServedName::~ServedName()
{
    unlink(path.c_str());
    close(fd);
}

} // namespace kora::simulation
