#include "recorder/SettingsText.h"

#include <charconv>
#include <cmath>
#include <fstream>
#include <sstream>

namespace kora::recorder {

SettingsText SettingsText::ofFile(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return SettingsText(text.str());
}

double SettingsText::number(const char* group, const char* key) const
{
    const std::string header = std::string("[") + group + ']';
    const std::string start = std::string(key) + '=';
    bool inGroup = false;
    std::istringstream lines(content);
    for (std::string line; std::getline(lines, line);) {
        if (!line.empty() && line.front() == '[') {
            inGroup = line.compare(0, header.size(), header) == 0;
        } else if (inGroup && line.compare(0, start.size(), start) == 0) {
            double value = 0;
            const char* digits = line.data() + start.size();
            const auto result = std::from_chars(digits, line.data() + line.size(), value);
            return result.ec == std::errc() && std::isfinite(value) ? value : 0;
        }
    }
    return 0;
}

double SettingsText::scale(SignalScale which) const
{
    switch (which) {
    case SignalScale::Bpm1X:
        return number("BPM1", "Scale_X");
    case SignalScale::Bpm1Y:
        return number("BPM1", "Scale_Y");
    case SignalScale::Bpm2X:
        return number("BPM2", "Scale_X");
    case SignalScale::Bpm2Y:
        return number("BPM2", "Scale_Y");
    case SignalScale::None:
        break;
    }
    return 1;
}

} // namespace kora::recorder
