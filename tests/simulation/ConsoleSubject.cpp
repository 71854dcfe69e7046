#include <unistd.h>

#include <cstdio>
#include <cstring>

/// A process on the simulated installation that does nothing until its input ends. With "fork" a child does so, and
/// the process itself ends without any cleaning up.
int main(int argc, char** argv)
{
    const bool forks = argc > 1 && std::strcmp(argv[1], "fork") == 0;
    if (forks && fork() != 0)
        _exit(0);
    std::puts("running");
    std::fflush(stdout);
    while (std::getchar() != EOF) {
    }
    return 0;
}
