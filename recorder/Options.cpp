#include "recorder/Options.h"

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <map>

#include <unistd.h>

namespace kora::recorder {

const char usageText[] =
    "usage: kora-recorder [OPTIONS]\n"
    "       kora-recorder [--folder DIR] list\n"
    "       kora-recorder info FILE...\n"
    "       kora-recorder [--folder DIR] export --from T --to T [--signals A,B] [--rate full|128|16384]\n"
    "                     FILE.h5|FILE.csv\n"
    "       kora-recorder [--folder DIR] verify [FILE...]\n"
    "       kora-recorder [--folder DIR] mark TEXT\n"
    "       kora-recorder [--folder DIR] forget TIME|all\n"
    "\n"
    "Records everything that the installation tells, until SIGTERM.\n"
    "\n"
    "options:\n"
    "  --folder DIR        where the segments lie; /var/lib/kora-recorder, or the user's state folder\n"
    "  --keep TIME         how long segments are kept, as 90s, 15m, 24h or 7d; 24h\n"
    "  --limit SIZE        how much they may take, as 500M or 200G; 200G\n"
    "  --segment TIME      length of a segment; 60s\n"
    "  --compress          half the size, for more work\n"
    "  --post-mortem TIME  kept for good around a fault, a lost beam or a mark, to either side; 60s\n"
    "  --settings FILE     the operator interface's settings file\n"
    "  --seconds N         end after N seconds\n"
    "  --help, --version\n"
    "\n"
    "Times are local (2026-11-21T22:05:00, 22:05), UTC with a Z behind them, or back from now (-90s).\n"
    "Exit status: 0 done, 1 failed, 2 wrong usage.\n";

namespace {

constexpr char settingsFile[] = "/opt/Zenthic/KORALINK/config_koralink.ini";
constexpr double longestSeconds = 1e9;

/// Number in front of a unit of one letter.
double scaledNumber(const std::string& text, const std::string& what, const std::map<std::string, double>& units)
{
    double number = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    const auto unit = units.find(std::string(result.ptr, text.data() + text.size()));
    if (result.ec != std::errc() || unit == units.end() || !(number > 0) || !std::isfinite(number))
        throw UsageError(what + " cannot be \"" + text + '"');
    return number * unit->second;
}

std::vector<int> signalsOfText(const std::string& text)
{
    std::vector<int> signals;
    for (std::size_t start = 0; start <= text.size();) {
        const std::size_t end = std::min(text.find(',', start), text.size());
        const std::string name = text.substr(start, end - start);
        const int signal = archive::signalNamed(name);
        if (signal < 0)
            throw UsageError("there is no signal \"" + name + '"');
        signals.push_back(signal);
        start = end + 1;
    }
    return signals;
}

int factorOfText(const std::string& text)
{
    if (text == "full")
        return 1;
    for (const int factor : archive::overviewFactors) {
        if (text == std::to_string(factor))
            return factor;
    }
    throw UsageError("--rate cannot be \"" + text + "\": full, 128 or 16384");
}

Options::Command commandNamed(const std::string& word)
{
    static const std::map<std::string, Options::Command> commands = {
        {"list", Options::Command::List},     {"info", Options::Command::Info}, {"export", Options::Command::Export},
        {"verify", Options::Command::Verify}, {"mark", Options::Command::Mark}, {"forget", Options::Command::Forget}};
    const auto found = commands.find(word);
    if (found == commands.end())
        throw UsageError("unknown command \"" + word + "\"; kora-recorder --help shows them");
    return found->second;
}

/// Takes the words of a command line one after another.
class Parser
{
public:
    explicit Parser(const std::vector<std::string>& words) : words(words) {}

    Options parse()
    {
        bool hasCommand = false;
        for (; next < words.size(); ++next) {
            const std::string& word = words[next];
            if (word.size() > 1 && word.compare(0, 2, "--") == 0) {
                if (takeOption(word))
                    return options;
            } else if (!hasCommand) {
                options.command = commandNamed(word);
                hasCommand = true;
            } else {
                options.words.push_back(word);
            }
        }
        checkWords();
        if (options.recording.folder.empty())
            options.recording.folder = defaultFolder();
        return options;
    }

private:
    const std::string& value()
    {
        if (next + 1 >= words.size())
            throw UsageError(words[next] + " wants a value");
        return words[++next];
    }

    /// @return whether it says all that there is to do
    bool takeOption(const std::string& word)
    {
        RecordingOptions& recording = options.recording;
        if (word == "--help" || word == "--version") {
            options.command = word == "--help" ? Options::Command::Help : Options::Command::Version;
            return true;
        }
        if (word == "--folder")
            recording.folder = value();
        else if (word == "--keep")
            recording.ring.keepSeconds = secondsOfText(value(), word);
        else if (word == "--limit")
            recording.ring.limitBytes = bytesOfText(value(), word);
        else if (word == "--segment")
            recording.ring.segmentSeconds = secondsOfText(value(), word);
        else if (word == "--post-mortem")
            recording.postMortemSeconds = secondsOfText(value(), word);
        else if (word == "--settings")
            recording.settingsPath = value();
        else if (word == "--seconds")
            options.seconds = secondsOfText(value(), word);
        else if (word == "--compress")
            recording.compress = true;
        else if (options.command == Options::Command::Export)
            takeExportOption(word);
        else
            throw UsageError("unknown option " + word);
        return false;
    }

    void takeExportOption(const std::string& word)
    {
        if (word == "--from")
            options.exported.from = value();
        else if (word == "--to")
            options.exported.to = value();
        else if (word == "--signals")
            options.exported.signals = signalsOfText(value());
        else if (word == "--rate")
            options.exported.factor = factorOfText(value());
        else
            throw UsageError("export has no option " + word);
    }

    void checkWords()
    {
        const std::size_t count = options.words.size();
        switch (options.command) {
        case Options::Command::List:
            if (count != 0)
                throw UsageError("list takes no arguments");
            break;
        case Options::Command::Info:
            if (count == 0)
                throw UsageError("info wants a file");
            break;
        case Options::Command::Export:
            if (count != 1 || options.exported.from.empty() || options.exported.to.empty())
                throw UsageError("export wants --from, --to and one file");
            break;
        case Options::Command::Mark:
        case Options::Command::Forget:
            if (count != 1)
                throw UsageError(options.command == Options::Command::Mark ? "mark wants one text"
                                                                           : "forget wants a time or \"all\"");
            break;
        default:
            break;
        }
        if (options.recording.ring.segmentSeconds < 1)
            throw UsageError("--segment cannot be shorter than 1s");
    }

    const std::vector<std::string>& words;
    std::size_t next = 0;
    Options options;
};

} // namespace

double secondsOfText(const std::string& text, const std::string& what)
{
    const double seconds = scaledNumber(text, what, {{"", 1}, {"s", 1}, {"m", 60}, {"h", 3600}, {"d", 24 * 3600}});
    if (seconds > longestSeconds)
        throw UsageError(what + " cannot be \"" + text + '"');
    return seconds;
}

std::int64_t bytesOfText(const std::string& text, const std::string& what)
{
    constexpr double kibi = 1024;
    const double bytes = scaledNumber(
        text, what,
        {{"", 1}, {"k", kibi}, {"M", kibi * kibi}, {"G", kibi * kibi * kibi}, {"T", kibi * kibi * kibi * kibi}});
    if (bytes > 9e18)
        throw UsageError(what + " cannot be \"" + text + '"');
    return std::int64_t(bytes);
}

std::string defaultFolder()
{
    constexpr char system[] = "/var/lib/kora-recorder";
    if (::access(system, W_OK) == 0)
        return system;
    const char* state = std::getenv("XDG_STATE_HOME");
    if (state && *state)
        return std::string(state) + "/kora-recorder";
    const char* home = std::getenv("HOME");
    return std::string(home ? home : "/tmp") + "/.local/state/kora-recorder";
}

Options parseOptions(const std::vector<std::string>& words)
{
    Options options = Parser(words).parse();
    if (options.recording.settingsPath.empty())
        options.recording.settingsPath = settingsFile;
    return options;
}

} // namespace kora::recorder
