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

struct RunningSimulation
{
    pid_t pid;
    std::string socket;
};

/// All simulations of this user, the lowest pid first. Takes away the sockets of processes that ended without doing
/// it.
std::vector<RunningSimulation> runningSimulations();

} // namespace kora::simulation
