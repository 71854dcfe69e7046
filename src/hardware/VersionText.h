#pragma once

#include <QString>

#include <cstdint>

/// Text of a packed version: its four bytes in memory order as b0.b1.b2b3, each in decimal, with no point between
/// the last two. The bytes 1, 0, 0, 2 read "1.0.02".
QString versionText(std::uint32_t packed);

/// Firmware newer than "1.0.02" has a variable display rate and position offsets. Versions are compared as texts,
/// character by character, never as numbers.
bool firmwareHasVariableRate(const QString& swVersion);
