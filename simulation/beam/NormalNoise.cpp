#include "simulation/beam/NormalNoise.h"

#include <array>
#include <cmath>

namespace kora::simulation {

namespace {

/// Quantile of the standard normal distribution by Newton's method from a nearby start.
double quantile(double probability, double start)
{
    double x = start;
    for (int i = 0; i < 8; ++i) {
        const double excess = 0.5 * std::erfc(-x * M_SQRT1_2) - probability;
        x -= excess * std::sqrt(2 * M_PI) * std::exp(0.5 * x * x);
    }
    return x;
}

} // namespace

NormalNoise::NormalNoise(std::uint64_t seed) : quantiles(quantileTable()), state(seed) {}

const double* NormalNoise::quantileTable()
{
    static const auto table = [] {
        std::array<double, tableSize> values;
        double x = 0;
        double sumOfSquares = 0;
        for (int i = tableSize / 2; i < tableSize; ++i) {
            x = quantile((i + 0.5) / tableSize, x);
            values[std::size_t(i)] = x;
            values[std::size_t(tableSize - 1 - i)] = -x;
            sumOfSquares += 2 * x * x;
        }
        const double unit = 1 / std::sqrt(sumOfSquares / tableSize);
        for (double& value : values)
            value *= unit;
        return values;
    }();
    return table.data();
}

void NormalNoise::refill()
{
    state += stride;
    bits = state;
    bits = (bits ^ (bits >> 30)) * 0xbf58476d1ce4e5b9;
    bits = (bits ^ (bits >> 27)) * 0x94d049bb133111eb;
    bits ^= bits >> 31;
    valuesLeft = valuesPerStep;
}

} // namespace kora::simulation
