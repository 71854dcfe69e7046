#include "app/ProcessStart.h"

#include <csignal>
#include <fcntl.h>
#include <initializer_list>
#include <unistd.h>

void prepareProcess()
{
    for (int number : {SIGPIPE, SIGXFSZ})
        std::signal(number, SIG_IGN);
    // The lowest descriptor that is free is the one that is given.
    int descriptor = ::open("/dev/null", O_RDWR);
    while (descriptor >= 0 && descriptor <= STDERR_FILENO)
        descriptor = ::dup(descriptor);
    if (descriptor >= 0)
        ::close(descriptor);
}
