#pragma once

#include <cstdint>

namespace kora::simulation {

/// White noise of zero mean and unit variance, normal up to 3.6 standard deviations: the quantiles of the normal
/// distribution stand in a table, and twelve random bits choose one. Five values cost one step of the generator
/// (SplitMix64; Steele, Lea, Flood, "Fast splittable pseudorandom number generators", 2014).
class NormalNoise
{
public:
    explicit NormalNoise(std::uint64_t seed);

    double next()
    {
        if (valuesLeft == 0)
            refill();
        --valuesLeft;
        const double value = quantiles[bits & (tableSize - 1)];
        bits >>= tableBits;
        return value;
    }

    /// As count calls of next(), whose values are not wanted.
    void skip(int count)
    {
        if (count > valuesLeft) {
            count -= valuesLeft;
            const int passedOver = (count - 1) / valuesPerStep;
            state += std::uint64_t(passedOver) * stride;
            count -= passedOver * valuesPerStep;
            refill();
        }
        valuesLeft -= count;
        bits >>= count * tableBits;
    }

private:
    static constexpr int tableBits = 12;
    static constexpr int tableSize = 1 << tableBits;
    static constexpr int valuesPerStep = 64 / tableBits;
    static constexpr std::uint64_t stride = 0x9e3779b97f4a7c15;

    static const double* quantileTable();
    void refill();

    const double* quantiles;
    std::uint64_t state;
    std::uint64_t bits = 0;
    int valuesLeft = 0;
};

} // namespace kora::simulation
