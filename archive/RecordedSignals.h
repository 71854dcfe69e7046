#pragma once

#include "stream/SignalTable.h"

#include <cstddef>
#include <iterator>
#include <string>
#include <string_view>

namespace kora::archive {

/// Every signal of the stream is recorded, as the record holds it, in a column under its name.
constexpr int signalCount = int(std::size(signalTable));
/// The signal that plots by default.
constexpr char defaultSignal[] = "pos1X";

/// Factors to micrometres that a recording keeps, in the order of SignalScale behind None.
constexpr int scaleCount = 4;

constexpr bool isSinglePrecision(const StreamSignal& signal)
{
    return signal.place.type == SignalPlace::Float;
}
constexpr std::size_t bytesOf(const StreamSignal& signal)
{
    return isSinglePrecision(signal) ? sizeof(float) : sizeof(double);
}

/// Unit of the recorded values: "1" for raw positions and what has none.
inline std::string recordedUnit(const StreamSignal& signal)
{
    const bool isPlain = signal.scale == SignalScale::None && signal.quantity.unit[0] != '\0';
    return isPlain ? signal.quantity.unit : "1";
}

/// @return index of the signal of this name, -1 for none
constexpr int signalNamed(std::string_view name)
{
    for (int signal = 0; signal < signalCount; ++signal) {
        if (name == signalTable[signal].name)
            return signal;
    }
    return -1;
}
static_assert(signalNamed(defaultSignal) >= 0);

} // namespace kora::archive
