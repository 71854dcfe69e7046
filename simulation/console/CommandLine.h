#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kora::simulation {

using Words = std::vector<std::string>;

/// Words of a line, which blanks separate.
Words wordsOf(std::string_view line);
/// One line out of words.
std::string lineOf(const Words& words);
/// The text with its control characters replaced: fit for one line on a terminal.
std::string printable(std::string_view text);
/// The text, printable, in double quotes; a long one is cut.
std::string quoted(std::string_view text);

/// Shortest decimal form that reads back as the same value, with a point in every locale.
std::string textOf(double value);

/// The number that the whole of a text stands for, with a point in every locale.
/// @param what names the number in the message
/// @throw InputError unless it is finite and low <= number <= high
double numberOf(std::string_view text, const std::string& what, double low, double high);
int wholeNumberOf(std::string_view text, const std::string& what, int low, int high);

} // namespace kora::simulation
