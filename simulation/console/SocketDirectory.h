#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace kora::simulation {

/// The folder where the sockets of this user's simulations lie, one a process: kora-simulation in $XDG_RUNTIME_DIR,
/// else /tmp/kora-simulation-UID. Nobody else can enter it. Makes it where it is missing.
/// @return empty when neither can be made or trusted
std::string socketFolder();
/// The folders of these names that are not trusted, since others own or can enter them, in words for the trainer.
/// @return one line, empty when there is none
std::string untrustedFolders();
std::string socketPath(const std::string& folder, pid_t pid);

/// The socket of a served installation, on which programs join it and consoles command it.
std::string servedPath(const std::string& folder, const std::string& name);
/// Whether an installation can be served by this name: 1 to 32 letters, digits, "_" and "-", and not "own", which says
/// that none is to be joined.
bool isServedName(const std::string& name);

struct RunningSimulation
{
    pid_t pid;
    std::string socket;
    std::string name; ///< of a served installation, else empty
};

/// All simulations of this user, the lowest pid first. Takes away the sockets of processes that ended without doing
/// it.
std::vector<RunningSimulation> runningSimulations();

/// A connection to the socket of a served installation, whose calls wait for a second at most. Takes the socket away
/// if nobody serves it.
/// @return its descriptor, -1 if nobody does
int connectToServed(const std::string& path);

/// Keeps others from claiming a name, or taking sockets away, while it lives. No file is left behind.
class FolderLock
{
public:
    explicit FolderLock(const std::string& folder);
    ~FolderLock();
    FolderLock(const FolderLock&) = delete;
    FolderLock& operator=(const FolderLock&) = delete;

private:
    const int fd;
};

} // namespace kora::simulation
