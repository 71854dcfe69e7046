#include "simulation/console/Commands.h"

#include "simulation/Installation.h"
#include "simulation/Operations.h"
#include "simulation/console/InputError.h"
#include "simulation/console/Protocol.h"
#include "simulation/console/StatusText.h"
#include "simulation/processor/DisplayStream.h"

#include <charconv>
#include <cmath>
#include <cstring>

namespace kora::simulation {

namespace {

/// Bounds that keep a slip of the pen from being taken; the physics would bear more.
constexpr double largestMicrometres = 10000;
constexpr double largestCurrentNoise = 1e-3; ///< A
constexpr double shortestPeriod = 0.1;       ///< s
constexpr double longestPeriod = 86400;      ///< s
constexpr double lowestFrequency = 0.001;    ///< Hz
constexpr int largestCount = 1000000;

double micrometres(const std::string& text, const char* what)
{
    return numberOf(text, what, -largestMicrometres, largestMicrometres);
}

double amplitude(const std::string& text, const char* what)
{
    return numberOf(text, what, 0, largestMicrometres);
}

int port(const std::string& text)
{
    if (text.size() == 1) {
        if (text[0] >= 'A' && text[0] <= 'D')
            return text[0] - 'A';
        if (text[0] >= 'a' && text[0] <= 'd')
            return text[0] - 'a';
    }
    throw InputError("the port must be A, B, C or D, not " + quoted(text));
}

std::uint16_t productCode(const std::string& text)
{
    std::uint16_t code = 0;
    const bool prefixed = text.rfind("0x", 0) == 0 || text.rfind("0X", 0) == 0;
    const char* const start = text.data() + (prefixed ? 2 : 0);
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(start, end, code, 16);
    if (error != std::errc() || stop != end || code == 0)
        throw InputError("the product code must be hexadecimal, 1 to ffff as in 2101, not " + quoted(text));
    return code;
}

const char* devicePath(const std::string& text)
{
    std::string names;
    for (const char* path : devicePaths) {
        const char* const name = std::strrchr(path, '/') + 1;
        if (text == path || text == name)
            return path;
        names += (names.empty() ? "" : ", ") + std::string(name);
    }
    throw InputError("the device file must be one of " + names + ", not " + quoted(text));
}

/// Refuses a word that is none of those wanted.
[[noreturn]] void refuse(const char* wanted, const std::string& text)
{
    throw InputError(std::string("expected ") + wanted + ", not " + quoted(text));
}

template <typename Act>
Action silently(Act act)
{
    return [act](SimulationControl& control) {
        act(control);
        return std::string();
    };
}

Action parseBeam(const Words& words)
{
    if (words[1] != "on" && words[1] != "off")
        refuse("on or off", words[1]);
    return silently([on = words[1] == "on"](SimulationControl& control) { control.setBeamOn(on); });
}

Action parseDrift(const Words& words)
{
    const bool off = words[1] == "off";
    if (off && words.size() > 2)
        refuse("nothing after off", words[2]);
    const double peak = off ? 0 : amplitude(words[1], "the drift");
    const double period = words.size() > 2 ? numberOf(words[2], "the period", shortestPeriod, longestPeriod) : 0;
    const double walk = words.size() > 3 ? amplitude(words[3], "the random walk") : off ? 0 : -1;
    return silently([=](SimulationControl& control) {
        // Without a period the present one stays; so does the random walk.
        control.setDrift(peak, period, walk < 0 ? control.state().walkMicrometres : walk);
    });
}

Action parseKick(const Words& words)
{
    const double x = micrometres(words[1], "x");
    const double y = micrometres(words[2], "y");
    return silently([=](SimulationControl& control) { control.kick(x, y); });
}

Action parseVibration(const Words& words)
{
    const int line = wholeNumberOf(words[1], "the line", 0, int(InstallationState().lines.size()) - 1);
    if (words[2] == "off") {
        if (words.size() > 3)
            refuse("nothing after off", words[3]);
        return silently([=](SimulationControl& control) { control.setVibration(line, 0, 0, 0); });
    }
    const double frequency = numberOf(words[2], "the frequency", lowestFrequency, physicsRate / 2.0);
    if (words.size() < 4)
        throw InputError("an amplitude is missing");
    const double x = amplitude(words[3], "the amplitude");
    const double y = words.size() > 4 ? amplitude(words[4], "the amplitude in y") : x;
    return silently([=](SimulationControl& control) { control.setVibration(line, frequency, x, y); });
}

Action parseNoise(const Words& words)
{
    const double position = amplitude(words[1], "the noise");
    const double amps = words.size() > 2 ? numberOf(words[2], "the current noise", 0, largestCurrentNoise) : -1;
    return silently([=](SimulationControl& control) {
        control.setNoise(position, amps < 0 ? control.state().currentNoiseAmps : amps);
    });
}

Action parseQuiet(const Words&)
{
    return silently([](SimulationControl& control) { control.quietBeam(); });
}

Action parsePlug(const Words& words)
{
    return silently([port = port(words[1]), code = productCode(words[2])](SimulationControl& control) {
        control.plug(port, code);
    });
}

Action parseUnplug(const Words& words)
{
    return silently([port = port(words[1])](SimulationControl& control) { control.plug(port, 0); });
}

Action parseCable(const Words& words)
{
    const int bpm = wholeNumberOf(words[1], "the BPM", 1, 2) - 1;
    ElectrodeChannels channels;
    for (std::size_t electrode = 0; electrode < channels.size(); ++electrode)
        channels[electrode] = wholeNumberOf(words[2 + electrode], "a channel", 0, 4) - 1;
    if (!ElectrodeCables().connect(channels))
        throw InputError("two cables cannot share a channel");
    return silently([=](SimulationControl& control) { control.connectCables(bpm, channels); });
}

template <bool present>
Action parseDeviceFile(const Words& words)
{
    return silently(
        [path = devicePath(words[1])](SimulationControl& control) { control.setDevicePresent(path, present); });
}

int failureCount(const std::string& text)
{
    if (text == "once")
        return 1;
    if (text == "always")
        return -1;
    if (text == "off")
        return 0;
    return wholeNumberOf(text, "the number of failures (once, always, off)", 1, largestCount);
}

Action parseFail(const Words& words)
{
    if (!isOperation(words[1].c_str()))
        throw InputError("the control library has no function " + quoted(words[1]));
    const int times = words.size() > 2 ? failureCount(words[2]) : 1;
    return silently(
        [name = words[1], times](SimulationControl& control) { control.failFunction(name.c_str(), times); });
}

Action parseBlocks(const Words& words)
{
    if (words[1] == "short") {
        if (words.size() < 3)
            throw InputError("the number of missing records is missing");
        const int missing = wholeNumberOf(words[2], "the number of missing records", 1, DisplayStream::largestBlock);
        return silently([=](SimulationControl& control) { control.truncateBlocks(missing); });
    }
    if (words.size() > 2)
        refuse("nothing after the kind of blocks", words[2]);
    if (words[1] == "garbage")
        return silently([](SimulationControl& control) { control.setGarbageBlocks(true); });
    if (words[1] != "good")
        refuse("good, short or garbage", words[1]);
    return silently([](SimulationControl& control) {
        control.truncateBlocks(0);
        control.setGarbageBlocks(false);
    });
}

Action parseRepair(const Words&)
{
    return silently([](SimulationControl& control) {
        for (const char* operation : operationNames)
            control.failFunction(operation, 0);
        for (const char* path : devicePaths)
            control.setDevicePresent(path, true);
        control.truncateBlocks(0);
        control.setGarbageBlocks(false);
    });
}

Action parseReset(const Words&)
{
    return silently([](SimulationControl& control) { control.reset(); });
}

Action parseTime(const Words&)
{
    return [](SimulationControl& control) { return textOf(control.time()) + '\n'; };
}

Action parseStatus(const Words& words)
{
    if (words.size() == 1)
        return [](SimulationControl& control) { return statusText(control.state()); };
    if (words[1] != "--json")
        refuse("--json", words[1]);
    return [](SimulationControl& control) { return statusJson(control.state()); };
}

struct Verb
{
    const char* name;
    const char* arguments;
    const char* effect;
    std::size_t fewest; ///< arguments
    std::size_t most;
    Action (*parse)(const Words& words); ///< called with the verb and a right number of arguments
};

constexpr Verb verbs[] = {
    {"beam", "on|off", "switch the beam", 1, 1, parseBeam},
    {"drift", "AMPLITUDE [PERIOD [WALK]] | off", "drift of both axes in um and s, random walk in um RMS", 1, 3,
     parseDrift},
    {"kick", "X Y", "displace the beam by so many um; decays with 0.5 s", 2, 2, parseKick},
    {"vibration", "LINE FREQUENCY AMPLITUDE [Y] | LINE off", "vibration line 0 to 7 in Hz and um peak", 2, 4,
     parseVibration},
    {"noise", "POSITION [CURRENT]", "white noise of the beam in um RMS, of the amplifiers in A RMS", 1, 2, parseNoise},
    {"quiet", "", "no drift, no vibration, no noise", 0, 0, parseQuiet},
    {"plug", "PORT CODE", "put a device into SFP port A to D, code as in 2101", 2, 2, parsePlug},
    {"unplug", "PORT", "empty an SFP port", 1, 1, parseUnplug},
    {"cable", "BPM TOP RIGHT BOTTOM LEFT", "put the cables of BPM 1 or 2 on channels 1 to 4, 0 hangs loose", 5, 5,
     parseCable},
    {"remove", "FILE", "take a device file away", 1, 1, parseDeviceFile<false>},
    {"restore", "FILE", "bring a device file back", 1, 1, parseDeviceFile<true>},
    {"fail", "FUNCTION [once|COUNT|always|off]", "make a function of the control library fail", 1, 2, parseFail},
    {"blocks", "good | short COUNT | garbage", "blocks of the display stream: whole, without COUNT records, garbage", 1,
     2, parseBlocks},
    {"repair", "", "end all faults of functions, device files and blocks", 0, 0, parseRepair},
    {"reset", "", "switch the installation off and on again", 0, 0, parseReset},
    {"time", "", "simulated seconds since power-on", 0, 0, parseTime},
    {"status", "[--json]", "show the installation", 0, 1, parseStatus},
};

} // namespace

Action parseCommand(const Words& words)
{
    if (words.empty())
        throw InputError("a command is missing");
    for (const Verb& verb : verbs) {
        if (words[0] != verb.name)
            continue;
        const std::size_t given = words.size() - 1;
        if (given < verb.fewest || given > verb.most)
            throw InputError(words[0] + (*verb.arguments ? " wants " : " takes no arguments") + verb.arguments);
        try {
            return verb.parse(words);
        } catch (const InputError& error) {
            throw InputError(words[0] + ": " + error.what());
        }
    }
    throw InputError("unknown command " + quoted(words[0]));
}

std::string answerTo(const std::string& line, SimulationControl& control)
{
    try {
        return protocol::accepted + parseCommand(wordsOf(line))(control);
    } catch (const InputError& error) {
        return protocol::refused + std::string(error.what()) + '\n';
    }
}

std::string commandHelp()
{
    std::string text;
    for (const Verb& verb : verbs) {
        const std::string form = std::string("  ") + verb.name + (*verb.arguments ? " " : "") + verb.arguments;
        constexpr std::size_t column = 30;
        const std::string gap =
            form.size() < column ? std::string(column - form.size(), ' ') : '\n' + std::string(column, ' ');
        text += form + gap + verb.effect + '\n';
    }
    return text;
}

} // namespace kora::simulation
