#pragma once

#include <cstdint>

/// What the turn meter leaves in the file that KORA_TURNS names, mapped by the meter and by who reads it.
struct TurnRecord
{
    static constexpr std::uint64_t capacity = 1 << 16;

    /// From the return of one wait of the GUI thread for events to the next wait.
    struct Turn
    {
        double begin; ///< monotonic clock, s
        double wall;  ///< s
        double busy;  ///< time of the GUI thread on a processor, s
    };
    std::uint64_t count; ///< turns so far; later ones than capacity are not kept
    Turn turns[capacity];
};
