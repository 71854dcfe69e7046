#pragma once

/// Room that one number needs at most.
constexpr int sixDigitsRoom = 16;

/// Writes a number with six significant digits, byte for byte as QString::number(value, 'g', 6) does, in
/// about a tenth of its time. Any thread.
/// @param out room for sixDigitsRoom characters; nothing is terminated
/// @return behind the last character
char* writeSixDigits(char* out, double value);
