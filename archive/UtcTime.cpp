#include "archive/UtcTime.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <regex>

namespace kora::archive {

namespace {

UtcNanoseconds floorToSeconds(UtcNanoseconds moment)
{
    const UtcNanoseconds rest = ((moment % nanosecondsPerSecond) + nanosecondsPerSecond) % nanosecondsPerSecond;
    return moment - rest;
}

/// Date and time with a letter or blank between them.
std::string formatted(const tm& parts, char between)
{
    char date[32];
    char time[32];
    std::strftime(date, sizeof date, "%Y-%m-%d", &parts);
    std::strftime(time, sizeof time, "%H:%M:%S", &parts);
    return std::string(date) + between + time;
}

int numberOf(const std::ssub_match& digits)
{
    int number = 0;
    const std::string text = digits.str();
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

/// ".25" as nanoseconds.
UtcNanoseconds fractionOf(const std::ssub_match& digits)
{
    std::string text = digits.matched ? digits.str() : std::string();
    text.resize(9, '0');
    UtcNanoseconds fraction = 0;
    std::from_chars(text.data(), text.data() + text.size(), fraction);
    return fraction;
}

/// Hour, minute, second and fraction stand in the groups from `first` on.
std::optional<UtcNanoseconds> momentOf(tm day, const std::smatch& match, std::size_t first, bool isUtc)
{
    day.tm_hour = numberOf(match[first]);
    day.tm_min = numberOf(match[first + 1]);
    day.tm_sec = numberOf(match[first + 2]);
    day.tm_isdst = -1;
    const bool exists = day.tm_mon >= 0 && day.tm_mon < 12 && day.tm_mday >= 1 && day.tm_mday <= 31 &&
                        day.tm_hour < 24 && day.tm_min < 60 && day.tm_sec < 61;
    if (!exists)
        return std::nullopt;
    const time_t seconds = isUtc ? timegm(&day) : mktime(&day);
    return UtcNanoseconds(seconds) * nanosecondsPerSecond + fractionOf(match[first + 3]);
}

} // namespace

std::string isoText(UtcNanoseconds moment)
{
    const UtcNanoseconds whole = floorToSeconds(moment);
    const time_t seconds = time_t(whole / nanosecondsPerSecond);
    tm parts = {};
    gmtime_r(&seconds, &parts);
    char fraction[16];
    std::snprintf(fraction, sizeof fraction, ".%06dZ", int((moment - whole) / 1000));
    return formatted(parts, 'T') + fraction;
}

std::string localText(UtcNanoseconds moment)
{
    const UtcNanoseconds whole = floorToSeconds(moment);
    const time_t seconds = time_t(whole / nanosecondsPerSecond);
    tm parts = {};
    localtime_r(&seconds, &parts);
    char fraction[16];
    std::snprintf(fraction, sizeof fraction, ".%03d", int((moment - whole) / 1000000));
    return formatted(parts, ' ') + fraction;
}

std::optional<UtcNanoseconds> momentOfIsoText(const std::string& text)
{
    if (text.empty() || text.back() != 'Z' || text.find('T') == std::string::npos)
        return std::nullopt;
    return momentOfUserText(text, 0);
}

std::optional<UtcNanoseconds> momentOfUserText(const std::string& text, UtcNanoseconds now)
{
    static const std::regex back(R"(-(\d{1,9}(?:\.\d{1,9})?)s)");
    static const std::regex date(R"((\d{4})-(\d\d)-(\d\d)[T ](\d\d):(\d\d)(?::(\d\d)(?:\.(\d{1,9}))?)?(Z?))");
    static const std::regex today(R"((\d\d):(\d\d)(?::(\d\d)(?:\.(\d{1,9}))?)?)");
    std::smatch match;
    if (std::regex_match(text, match, back)) {
        double seconds = 0;
        const std::string digits = match[1].str();
        std::from_chars(digits.data(), digits.data() + digits.size(), seconds);
        return now - nanosecondsOf(seconds);
    }
    if (std::regex_match(text, match, date)) {
        tm day = {};
        day.tm_year = numberOf(match[1]) - 1900;
        day.tm_mon = numberOf(match[2]) - 1;
        day.tm_mday = numberOf(match[3]);
        return momentOf(day, match, 4, match[8].length() > 0);
    }
    if (std::regex_match(text, match, today)) {
        const time_t seconds = time_t(now / nanosecondsPerSecond);
        tm day = {};
        localtime_r(&seconds, &day);
        return momentOf(day, match, 1, false);
    }
    return std::nullopt;
}

} // namespace kora::archive
