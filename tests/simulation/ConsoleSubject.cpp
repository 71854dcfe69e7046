#include <unistd.h>

#include <cstdio>
#include <cstring>

/// A process on the simulated installation that does nothing until its input ends. With "fork" it ends at once, without
/// any cleaning up, and leaves a child, whose number it shows and which a signal ends.
int main(int argc, char** argv)
{
    if (argc > 1 && std::strcmp(argv[1], "fork") == 0) {
        const pid_t child = fork();
        if (child == 0) {
            // Nobody may be left to send it.
            alarm(120);
            pause();
            _exit(0);
        }
        std::printf("%d\n", int(child));
        std::fflush(stdout);
        _exit(0);
    }
    std::puts("running");
    std::fflush(stdout);
    while (std::getchar() != EOF) {
    }
    return 0;
}
