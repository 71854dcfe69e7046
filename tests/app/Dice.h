#pragma once

#include <cstdint>
#include <iterator>
#include <random>

/// Reproducible chance: the same seed gives the same throws on every machine.
class Dice
{
public:
    explicit Dice(std::uint32_t seed) : engine(seed) {}

    /// 0 to count - 1; 0 for an empty range.
    int below(int count) { return count > 0 ? int(engine() % std::uint32_t(count)) : 0; }
    int between(int lowest, int highest) { return lowest + below(highest - lowest + 1); }
    bool oneIn(int count) { return below(count) == 0; }
    double fraction() { return double(engine()) / 4294967296.0; }

    /// An element of a container that is not empty.
    template <typename Container>
    auto& pick(Container& container)
    {
        return *std::next(std::begin(container), below(int(std::size(container))));
    }

private:
    std::mt19937 engine;
};
