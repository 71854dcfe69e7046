#include "simulation/console/CommandLine.h"

#include "simulation/console/InputError.h"

#include <charconv>
#include <cmath>

namespace kora::simulation {

namespace {

constexpr std::string_view blanks = " \t\r\n\v\f";

/// @return whether the whole text is a number
template <typename Number>
bool read(std::string_view text, Number& number)
{
    if (text.size() > 1 && text[0] == '+' && text[1] != '-')
        text.remove_prefix(1);
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size();
}

} // namespace

Words wordsOf(std::string_view line)
{
    Words words;
    for (std::size_t start = line.find_first_not_of(blanks); start != std::string_view::npos;) {
        const std::size_t end = line.find_first_of(blanks, start);
        words.emplace_back(line.substr(start, end - start));
        start = line.find_first_not_of(blanks, end);
    }
    return words;
}

std::string lineOf(const Words& words)
{
    std::string line;
    for (const std::string& word : words)
        line += (line.empty() ? "" : " ") + word;
    return line;
}

std::string printable(std::string_view text)
{
    std::string result;
    for (const char character : text)
        result += static_cast<unsigned char>(character) < ' ' || character == '\x7f' ? '?' : character;
    return result;
}

std::string quoted(std::string_view text)
{
    constexpr std::size_t longest = 60;
    if (text.size() <= longest)
        return '"' + printable(text) + '"';
    std::size_t end = longest;
    // Not within a character of UTF-8.
    while (end > 0 && (text[end] & 0xc0) == 0x80)
        --end;
    return '"' + printable(text.substr(0, end)) + "...\"";
}

std::string textOf(double value)
{
    char buffer[32];
    return {buffer, std::to_chars(buffer, buffer + sizeof buffer, value).ptr};
}

double numberOf(std::string_view text, const std::string& what, double low, double high)
{
    double number = 0;
    // The comparison also refuses NaN.
    if (!read(text, number) || !(number >= low && number <= high))
        throw InputError(what + " must be a number from " + textOf(low) + " to " + textOf(high) + ", not " +
                         quoted(text));
    // Adding 0 makes a plain zero of a negative one, which would be shown as it was typed.
    return number + 0.0;
}

int wholeNumberOf(std::string_view text, const std::string& what, int low, int high)
{
    int number = 0;
    if (!read(text, number) || number < low || number > high)
        throw InputError(what + " must be a whole number from " + std::to_string(low) + " to " + std::to_string(high) +
                         ", not " + quoted(text));
    return number;
}

} // namespace kora::simulation
