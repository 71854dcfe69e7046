#include "simulation/console/SocketDirectory.h"

#include "simulation/console/CommandLine.h"
#include "simulation/console/UnixSocket.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <memory>

namespace kora::simulation {

namespace {

constexpr char suffix[] = ".socket";
constexpr char servedSuffix[] = ".served";
constexpr std::size_t longestServedName = 32;
/// Room that a folder must leave for the names of sockets in an address. That of a served installation may be longer.
constexpr std::size_t longestName = sizeof "/.4194304.socket";

struct FolderCloser
{
    void operator()(DIR* directory) const { closedir(directory); }
};

std::vector<std::string> candidateFolders()
{
    std::vector<std::string> folders;
    const char* const runtime = secure_getenv("XDG_RUNTIME_DIR");
    if (runtime && runtime[0] == '/')
        folders.push_back(std::string(runtime) + "/kora-simulation");
    folders.push_back("/tmp/kora-simulation-" + std::to_string(geteuid()));
    return folders;
}

/// A folder that somebody else prepared, or can look into, is not trusted.
bool isOurs(const std::string& folder)
{
    struct stat file;
    return lstat(folder.c_str(), &file) == 0 && S_ISDIR(file.st_mode) && file.st_uid == geteuid() &&
           (file.st_mode & 077) == 0;
}

/// The name of a file without its suffix, empty for a file with another one.
std::string stem(const std::string& file, const std::string& ending)
{
    const std::size_t length = file.size() - std::min(file.size(), ending.size());
    return file.compare(length, std::string::npos, ending) == 0 ? file.substr(0, length) : std::string();
}

pid_t pidOf(const std::string& file)
{
    const std::string digits = stem(file, suffix);
    pid_t pid = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), pid);
    return error == std::errc() && end == digits.data() + digits.size() ? pid : 0;
}

/// Whether a process stands behind the socket; its file is removed if none does.
bool isServed(const std::string& path)
{
    const int fd = newSocket();
    if (fd < 0)
        return false;
    limitWaiting(fd, 1);
    const bool refused = connectTo(fd, path) != 0 && (errno == ECONNREFUSED || errno == ENOENT);
    close(fd);
    if (refused)
        unlink(path.c_str());
    return !refused;
}

/// The process behind the socket of a served installation, 0 if there is none.
pid_t servingPid(const std::string& path)
{
    const int fd = connectToServed(path);
    const std::optional<ucred> peer = fd < 0 ? std::nullopt : peerOf(fd);
    if (fd >= 0)
        close(fd);
    return peer ? peer->pid : 0;
}

} // namespace

std::string socketFolder()
{
    for (const std::string& folder : candidateFolders()) {
        mkdir(folder.c_str(), 0700);
        if (isOurs(folder) && folder.size() + longestName <= sizeof(sockaddr_un::sun_path))
            return folder;
    }
    return {};
}

std::string untrustedFolders()
{
    std::string text;
    for (const std::string& folder : candidateFolders()) {
        struct stat file;
        if (lstat(folder.c_str(), &file) == 0 && !isOurs(folder))
            text += (text.empty() ? "" : "; ") + quoted(folder) +
                    " is not private: it must be a folder of this user that nobody else can enter (mode 700)";
    }
    return text;
}

std::string socketPath(const std::string& folder, pid_t pid)
{
    return folder + '/' + std::to_string(pid) + suffix;
}

std::string servedPath(const std::string& folder, const std::string& name)
{
    return folder + '/' + name + servedSuffix;
}

bool isServedName(const std::string& name)
{
    return !name.empty() && name.size() <= longestServedName && name != "own" &&
           name.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_-") ==
               std::string::npos;
}

FolderLock::FolderLock(const std::string& folder) : fd(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC))
{
    if (fd >= 0)
        flock(fd, LOCK_EX);
}

FolderLock::~FolderLock()
{
    if (fd >= 0)
        close(fd);
}

int connectToServed(const std::string& path)
{
    const auto attempt = [&path] {
        const int fd = newSocket(SOCK_SEQPACKET);
        if (fd < 0)
            return fd;
        limitWaiting(fd, 1);
        if (connectTo(fd, path) == 0)
            return fd;
        const int error = errno;
        close(fd);
        errno = error;
        return -1;
    };
    const int fd = attempt();
    if (fd >= 0 || errno != ECONNREFUSED)
        return fd;
    // Looked at again under the lock: another service may just have taken its place.
    const FolderLock lock(path.substr(0, path.rfind('/')));
    const int again = attempt();
    if (again < 0 && errno == ECONNREFUSED)
        unlink(path.c_str());
    return again;
}

std::vector<RunningSimulation> runningSimulations()
{
    std::vector<RunningSimulation> found;
    const std::string folder = socketFolder();
    const std::unique_ptr<DIR, FolderCloser> directory(folder.empty() ? nullptr : opendir(folder.c_str()));
    if (!directory)
        return found;
    while (const dirent* const entry = readdir(directory.get())) {
        const pid_t pid = pidOf(entry->d_name);
        if (pid > 0 && isServed(socketPath(folder, pid)))
            found.push_back({pid, socketPath(folder, pid), {}});
        const std::string name = stem(entry->d_name, servedSuffix);
        if (!isServedName(name))
            continue;
        const pid_t server = servingPid(servedPath(folder, name));
        if (server > 0)
            found.push_back({server, servedPath(folder, name), name});
    }
    std::sort(found.begin(), found.end(), [](const auto& a, const auto& b) { return a.pid < b.pid; });
    return found;
}

} // namespace kora::simulation
