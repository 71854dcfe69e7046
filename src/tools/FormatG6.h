#pragma once

/// Room that one number needs at most.
constexpr int formatG6Room = 16;

/// Writes a number with six significant digits, byte for byte as QString::number(value, 'g', 6) does, in
/// about a tenth of its time. Any thread.
/// @param out room for formatG6Room characters; nothing is terminated
/// @return behind the last character
char* formatG6(char* out, double value);
