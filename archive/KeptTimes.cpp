#include "archive/KeptTimes.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace kora::archive {

namespace {

std::string oneLine(std::string text)
{
    std::replace_if(
        text.begin(), text.end(), [](unsigned char c) { return c < ' '; }, ' ');
    return text;
}

std::string lineOf(const KeptTime& time)
{
    char seconds[32];
    std::snprintf(seconds, sizeof seconds, "%.3f", time.seconds);
    return isoText(time.moment) + '\t' + seconds + '\t' + oneLine(time.kind) + '\t' + oneLine(time.text) + '\n';
}

bool append(const std::string& path, const std::string& text)
{
    // In one write at the end of the file, since the recorder and a user may add at the same time.
    std::FILE* file = std::fopen(path.c_str(), "ae");
    if (!file)
        return false;
    const bool written = std::fwrite(text.data(), 1, text.size(), file) == text.size();
    return (std::fclose(file) == 0) && written;
}

} // namespace

KeptTimes::KeptTimes(const std::string& folder) : file(folder + "/kora_kept.txt") {}

std::vector<KeptTime> KeptTimes::all() const
{
    std::vector<KeptTime> times;
    std::ifstream stream(file);
    for (std::string line; std::getline(stream, line);) {
        std::istringstream fields(line);
        std::string moment, seconds;
        KeptTime time = {};
        if (!std::getline(fields, moment, '\t') || !std::getline(fields, seconds, '\t') ||
            !std::getline(fields, time.kind, '\t'))
            continue;
        std::getline(fields, time.text);
        const auto parsed = momentOfIsoText(moment);
        std::istringstream number(seconds);
        number.imbue(std::locale::classic());
        if (!parsed || !(number >> time.seconds))
            continue;
        time.moment = *parsed;
        times.push_back(time);
    }
    return times;
}

bool KeptTimes::add(const KeptTime& time) const
{
    return append(file, lineOf(time));
}

bool KeptTimes::replace(const std::vector<KeptTime>& times) const
{
    const std::string beside = file + ".new";
    std::remove(beside.c_str());
    std::string text;
    for (const KeptTime& time : times)
        text += lineOf(time);
    std::error_code error;
    if (!append(beside, text))
        return false;
    std::filesystem::rename(beside, file, error);
    return !error;
}

} // namespace kora::archive
