#pragma once

#include <sys/resource.h>

#include <csignal>

/// While it lives no file of this process can grow: every write that would is refused, as on a full disk.
class FullDisk
{
public:
    FullDisk()
    {
        handlerBefore = std::signal(SIGXFSZ, SIG_IGN);
        ::getrlimit(RLIMIT_FSIZE, &limitBefore);
        const rlimit nothing = {0, limitBefore.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &nothing);
    }
    ~FullDisk()
    {
        ::setrlimit(RLIMIT_FSIZE, &limitBefore);
        std::signal(SIGXFSZ, handlerBefore);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

private:
    rlimit limitBefore = {};
    void (*handlerBefore)(int) = nullptr;
};
