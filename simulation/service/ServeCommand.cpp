#include "simulation/service/ServeCommand.h"

#include "simulation/Installation.h"
#include "simulation/console/InputError.h"
#include "simulation/console/SocketDirectory.h"
#include "simulation/service/ServedName.h"
#include "simulation/service/Server.h"

#include <sys/signalfd.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <system_error>

namespace kora::simulation {

namespace {

constexpr int defaultRate = 1000; ///< Hz

struct Options
{
    std::string name;
    int rate = defaultRate;
    bool driven = false;
};

Options parse(const Words& words, const std::string& name)
{
    Options options;
    options.name = name.empty() ? defaultServedName : name;
    for (std::size_t i = 1; i < words.size(); ++i) {
        if (words[i] == "--driven")
            options.driven = true;
        else if (words[i] == "--rate" && i + 1 < words.size())
            options.rate = wholeNumberOf(words[++i], "serve: the rate", 0, physicsRate);
        else if (words[i] == "--name" && i + 1 < words.size())
            options.name = servedName(words[++i]);
        else
            throw InputError("serve wants [--name NAME] [--rate HZ] [--driven], not " + quoted(words[i]));
    }
    return options;
}

/// The folder of the stand-in library that belongs to this program, as it is built or installed; empty without one.
std::string libraryFolder()
{
    char self[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", self, sizeof self);
    const std::string program(self, length > 0 ? std::size_t(length) : 0);
    const std::string folder = program.substr(0, program.rfind('/'));
    for (const char* place : {"/simulation", "/../lib/kora-simulation"})
        if (access((folder + place + "/libkoralink.so.1").c_str(), R_OK) == 0)
            return folder + place;
    return {};
}

void announce(const Options& options, const ServedName& name)
{
    const std::string folder = libraryFolder();
    std::printf("serving \"%s\" at %s; to join: %s%sLD_LIBRARY_PATH=%s PROGRAM\n", options.name.c_str(),
                name.socket().c_str(), options.name == defaultServedName ? "" : "KORA_SIMULATION=",
                options.name == defaultServedName ? "" : (options.name + ' ').c_str(),
                folder.empty() ? "FOLDER-OF-THE-STAND-IN" : folder.c_str());
    std::fflush(stdout);
}

/// Can be read when a signal asks the service to end.
int newStopper()
{
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGTERM, SIGINT, SIGHUP})
        sigaddset(&signals, signal);
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    const int fd = signalfd(-1, &signals, SFD_CLOEXEC);
    if (fd < 0)
        throw std::system_error(errno, std::generic_category(), "signals cannot be awaited");
    return fd;
}

} // namespace

std::string servedName(const std::string& text)
{
    if (!isServedName(text))
        throw InputError("the name must be 1 to 32 letters, digits, _ and -, and not \"own\", not " + quoted(text));
    return text;
}

void serve(const Words& words, const std::string& givenName)
{
    const Options options = parse(words, givenName);
    const int stopper = newStopper();
    static const MonotonicClock clock;
    Installation installation(clock, options.rate);
    if (options.driven)
        installation.useDrivenClock();
    // The name goes first at the end, so that nobody joins what is ending.
    Server server(installation);
    const ServedName name(options.name);
    announce(options, name);
    server.run(name.listener(), stopper);
}

} // namespace kora::simulation
