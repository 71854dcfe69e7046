#include "simulation/console/SocketDirectory.h"

#include "simulation/console/CommandLine.h"
#include "simulation/console/UnixSocket.h"

#include <dirent.h>
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
/// Room that a folder must leave for the names of sockets in an address.
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

pid_t pidOf(const std::string& name)
{
    const std::size_t length = name.size() - std::min(name.size(), sizeof suffix - 1);
    pid_t pid = 0;
    const auto [end, error] = std::from_chars(name.data(), name.data() + length, pid);
    return error == std::errc() && name.compare(length, std::string::npos, suffix) == 0 && end == name.data() + length
               ? pid
               : 0;
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
            found.push_back({pid, socketPath(folder, pid)});
    }
    std::sort(found.begin(), found.end(), [](const auto& a, const auto& b) { return a.pid < b.pid; });
    return found;
}

} // namespace kora::simulation
