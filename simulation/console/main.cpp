// kora-sim, the training console of the simulated installation.

#include "simulation/console/Commands.h"
#include "simulation/console/InputError.h"
#include "simulation/console/Protocol.h"
#include "simulation/console/Remote.h"
#include "simulation/console/Scenario.h"
#include "simulation/service/ServeCommand.h"

#include <unistd.h>

#include <charconv>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <sstream>
#include <system_error>

using namespace kora::simulation;

namespace {

constexpr int noSimulationStatus = 1;
constexpr int wrongInputStatus = 2;
constexpr int unwrittenStatus = 3;

constexpr char usage[] = "usage: kora-sim [--pid N | --name NAME] COMMAND [ARGUMENTS]";

void showHelp()
{
    std::printf("%s\n\n"
                "Talks to a running simulated installation of the same user, or serves one to many programs.\n\n"
                "options:\n"
                "  --pid N                     the simulation in process N, where several run\n"
                "  --name NAME                 the installation that is served by this name; KORA_SIMULATION in the\n"
                "                              environment names it too\n"
                "  --help                      this text\n"
                "  --version                   the version\n\n"
                "commands:\n%s"
                "  play [--speed F] [--silent] [--check] FILE\n"
                "                              play a scenario: F times as fast, without showing its steps,\n"
                "                              or only check it\n"
                "  list                        show the running simulations, and the programs that have joined\n"
                "  serve [--name NAME] [--rate HZ] [--driven]\n"
                "                              serve an installation to programs until it is stopped: by this name,\n"
                "                              default without one, at this rate of the stream, with a clock that\n"
                "                              programs drive\n"
                "  stop [--name NAME]          end the service\n\n"
                "Exit status: 0 done, 1 no simulation is running or it does not answer, 2 wrong input,\n"
                "3 done, but the answer cannot be written.\n",
                usage, commandHelp().c_str());
}

std::string programName(pid_t pid)
{
    std::string name;
    std::ifstream file("/proc/" + std::to_string(pid) + "/comm");
    std::getline(file, name);
    return name;
}

/// The programs that have joined a service, each on a line.
void showPrograms(const Remote& service)
{
    std::istringstream lines(service.ask(protocol::programs));
    for (std::string line; std::getline(lines, line);)
        std::printf("  %s\n", line.c_str());
}

void listSimulations()
{
    for (const RunningSimulation& simulation : Remote::all()) {
        const Remote remote(simulation);
        std::printf("%d %s", int(simulation.pid), programName(simulation.pid).c_str());
        if (remote.isServed())
            std::printf(" serves \"%s\"", simulation.name.c_str());
        std::putchar('\n');
        if (remote.isServed())
            showPrograms(remote);
    }
}

/// A scenario by its path, or one of those installed beside this program by its name.
std::string scenarioPath(const std::string& given)
{
    if (given.find('/') != std::string::npos || access(given.c_str(), F_OK) == 0)
        return given;
    char self[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", self, sizeof self);
    const std::string program(self, length > 0 ? std::size_t(length) : 0);
    const std::string installed =
        program.substr(0, program.rfind('/')) + "/../share/kora-simulation/scenarios/" + given;
    return access(installed.c_str(), F_OK) == 0 ? installed : given;
}

void sleepFor(double seconds)
{
    const timespec duration = {time_t(seconds), long((seconds - double(time_t(seconds))) * 1e9)};
    nanosleep(&duration, nullptr);
}

struct PlayOptions
{
    double speed = 1;
    bool silent = false;
    bool checkOnly = false;
    std::string file;
};

PlayOptions parsePlay(const Words& words)
{
    PlayOptions options;
    for (std::size_t i = 1; i < words.size(); ++i) {
        if (words[i] == "--silent")
            options.silent = true;
        else if (words[i] == "--check")
            options.checkOnly = true;
        else if (words[i] == "--speed" && i + 1 < words.size())
            options.speed = numberOf(words[++i], "play: the speed", 0.01, 10000);
        else if (words[i].rfind("--", 0) == 0 || !options.file.empty())
            throw InputError("play: unexpected " + quoted(words[i]));
        else
            options.file = words[i];
    }
    if (options.file.empty())
        throw InputError("play wants [--speed F] [--silent] [--check] FILE");
    return options;
}

void stop(const Words& words, Wanted wanted)
{
    if (words.size() == 3 && words[1] == "--name")
        wanted.name = servedName(words[2]);
    else if (words.size() > 1)
        throw InputError("stop wants [--name NAME]");
    if (!wanted.pid && wanted.name.empty())
        wanted.name = defaultServedName;
    const Remote remote = Remote::find(wanted);
    if (!remote.isServed())
        throw InputError("the simulation in process " + std::to_string(*wanted.pid) +
                         " is no service: it ends with its program");
    remote.ask(protocol::stop);
}

void play(const Words& words, const Wanted& wanted)
{
    const PlayOptions options = parsePlay(words);
    const Scenario scenario = Scenario::load(scenarioPath(options.file));
    if (options.checkOnly) {
        std::printf("%zu steps in %s s\n", scenario.steps.size(), textOf(scenario.steps.back().time).c_str());
        return;
    }
    const Remote remote = Remote::find(wanted);
    const auto time = [&] { return numberOf(wordsOf(remote.ask("time")).at(0), "the simulated time", 0, 1e12); };
    const auto perform = [&](const Scenario::Step& step) {
        const std::string answer = remote.ask(step.command);
        if (!options.silent)
            std::printf("%10.1f s  %s\n%s", step.time, step.command.c_str(), answer.c_str());
        std::fflush(stdout);
    };
    scenario.play(options.speed, {time, sleepFor, perform});
}

/// Takes the options before the command out of the words. @return whether all is said by them
bool takeOptions(Words& words, Wanted& wanted)
{
    while (!words.empty() && words.front().rfind("-", 0) == 0) {
        const std::string option = words.front();
        words.erase(words.begin());
        if (option == "--help" || option == "-h") {
            showHelp();
            return true;
        }
        if (option == "--version") {
            std::puts("kora-sim " KORA_VERSION);
            return true;
        }
        if (option != "--pid" && option != "--name")
            throw InputError("unknown option " + quoted(option));
        if (words.empty())
            throw InputError(option == "--pid" ? "--pid wants the number of a process"
                                               : "--name wants the name of a served installation");
        if (option == "--pid")
            wanted.pid = wholeNumberOf(words.front(), "--pid", 1, INT_MAX);
        else
            wanted.name = servedName(words.front());
        words.erase(words.begin());
    }
    return false;
}

void perform(Words words)
{
    Wanted wanted;
    if (takeOptions(words, wanted))
        return;
    const char* const surroundings = std::getenv("KORA_SIMULATION");
    if (!wanted.pid && wanted.name.empty() && surroundings && isServedName(surroundings))
        wanted.name = surroundings;
    if (words.empty())
        throw InputError("a command is missing; kora-sim --help shows them");
    if (words.front() == "play") {
        play(words, wanted);
    } else if (words.front() == "serve") {
        serve(words, wanted.name);
    } else if (words.front() == "stop") {
        stop(words, wanted);
    } else if (words.front() == "list") {
        if (words.size() > 1)
            throw InputError("list takes no arguments");
        listSimulations();
    } else {
        // Read here for the sake of its mistakes, which need no simulation to be told.
        parseCommand(words);
        std::fputs(Remote::find(wanted).ask(lineOf(words)).c_str(), stdout);
    }
}

} // namespace

int main(int argc, char** argv)
{
    try {
        perform(Words(argv + 1, argv + argc));
        if (std::fflush(stdout) == 0 && !std::ferror(stdout))
            return 0;
        std::fputs("kora-sim: the answer cannot be written\n", stderr);
        return unwrittenStatus;
    } catch (const NoSimulation& error) {
        std::fprintf(stderr, "kora-sim: %s\n", error.what());
        return noSimulationStatus;
    } catch (const InputError& error) {
        std::fprintf(stderr, "kora-sim: %s\n", error.what());
        return wrongInputStatus;
    } catch (const std::system_error& error) {
        std::fprintf(stderr, "kora-sim: %s\n", error.what());
        return noSimulationStatus;
    }
}
