#include "simulation/console/Scenario.h"

#include "simulation/console/Commands.h"
#include "simulation/console/InputError.h"

#include <sys/stat.h>

#include <algorithm>
#include <fstream>

namespace kora::simulation {

namespace {

constexpr double longestTime = 7 * 86400.0; ///< s
/// The simulated time may pass slower than ours: look at it at least that often, s.
constexpr double longestNap = 0.25;
constexpr double shortestNap = 0.001;
/// Some editors put it before the first line of a text in UTF-8.
constexpr std::string_view byteOrderMark = "\xef\xbb\xbf";

/// Takes the step of one line, unless the line has none.
void addStep(std::vector<Scenario::Step>& steps, const std::string& line)
{
    Words words = wordsOf(line.substr(0, line.find('#')));
    if (words.empty())
        return;
    const double time = scenarioTime(words.front());
    words.erase(words.begin());
    parseCommand(words);
    if (!steps.empty() && time < steps.back().time)
        throw InputError("the time is earlier than that of the step before");
    steps.push_back({time, lineOf(words)});
}

} // namespace

double scenarioTime(const std::string& text)
{
    double time = 0;
    std::size_t start = 0;
    int colons = 0;
    for (std::size_t colon = text.find(':'); colon != std::string::npos; colon = text.find(':', start)) {
        if (++colons > 2)
            throw InputError("the time must be seconds, m:ss or h:mm:ss, not " + quoted(text));
        time = 60 * (time + wholeNumberOf(text.substr(start, colon - start), "the time before a colon", 0, 10079));
        start = colon + 1;
    }
    return time + numberOf(text.substr(start), "the time", 0, colons > 0 ? 59.999999 : longestTime);
}

Scenario Scenario::load(const std::string& path)
{
    // A pipe would keep the trainer waiting for a writer.
    struct stat kind;
    if (stat(path.c_str(), &kind) == 0 && !S_ISREG(kind.st_mode))
        throw InputError("the scenario " + quoted(path) + " is no regular file");
    std::ifstream file(path);
    Scenario scenario;
    std::string line;
    int number = 0;
    while (std::getline(file, line)) {
        ++number;
        if (number == 1 && line.rfind(byteOrderMark, 0) == 0)
            line.erase(0, byteOrderMark.size());
        try {
            addStep(scenario.steps, line);
        } catch (const InputError& error) {
            throw InputError(printable(path) + ":" + std::to_string(number) + ": " + error.what());
        }
    }
    if (!file.eof())
        throw InputError("the scenario " + quoted(path) + " cannot be read");
    if (scenario.steps.empty())
        throw InputError("the scenario " + quoted(path) + " has no step");
    return scenario;
}

void Scenario::play(double speed, const Surroundings& surroundings) const
{
    double before = surroundings.time();
    double elapsed = 0;
    for (const Step& step : steps) {
        const double due = step.time / speed;
        while (elapsed < due) {
            surroundings.sleep(std::clamp(due - elapsed, shortestNap, longestNap));
            const double now = surroundings.time();
            elapsed += std::max(now - before, 0.0);
            before = now;
        }
        surroundings.perform(step);
    }
}

} // namespace kora::simulation
