#pragma once

#include "recorder/Recording.h"

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace kora::recorder {

/// A command line that cannot be understood; one line says why.
class UsageError : public std::runtime_error
{
    using std::runtime_error::runtime_error;
};

struct ExportOptions
{
    std::string from;
    std::string to;
    std::vector<int> signals;
    int factor = 1; ///< samples a row stands for: 1, 128 or 16384
    std::string file;
};

struct Options
{
    enum class Command
    {
        Record,
        List,
        Info,
        Export,
        Verify,
        Mark,
        Forget,
        Help,
        Version
    };
    Command command = Command::Record;
    RecordingOptions recording;
    std::optional<double> seconds;  ///< end after so long
    std::vector<std::string> words; ///< arguments of the command
    ExportOptions exported;
};

/// @throw UsageError
Options parseOptions(const std::vector<std::string>& words);

/// "90", "90s", "15m", "24h" or "7d" in seconds. @throw UsageError
double secondsOfText(const std::string& text, const std::string& what);
/// "1000000", "512k", "64M", "200G" or "2T" in bytes, by powers of 1024. @throw UsageError
std::int64_t bytesOfText(const std::string& text, const std::string& what);

/// /var/lib/kora-recorder where it can be written, else kora-recorder in the user's state folder.
std::string defaultFolder();

extern const char usageText[];

} // namespace kora::recorder
