#include "simulation/processor/PositionFilter.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace kora::simulation {

bool PositionFilter::write(int kind, int index, double value)
{
    if (kind < 0 || kind > 1 || index < 0 || index > 4 || !std::isfinite(value))
        return false;
    written[kind][std::size_t(index)] = value;
    return true;
}

void PositionFilter::commit()
{
    active[0] = written[0];
    active[1] = written[1];
    fresh = true;
}

void PositionFilter::bypass(bool fullBand)
{
    bypassed = fullBand;
    fresh = true;
}

void PositionFilter::settleAt(double sample)
{
    const auto& b = active[0];
    const auto& f = active[1];
    const double open = 1 - std::accumulate(f.begin() + 1, f.end(), 0.0);
    const double gain = std::accumulate(b.begin(), b.end(), 0.0) / open;
    inputs.fill(sample);
    outputs.fill(std::isfinite(gain) ? std::clamp(gain * sample, -saturation, saturation) : 0);
    fresh = false;
}

double PositionFilter::process(double sample)
{
    if (bypassed)
        return sample;
    if (fresh)
        settleAt(sample);
    const auto& b = active[0];
    const auto& f = active[1];
    double sum = b[0] * sample;
    for (std::size_t k = 0; k < 4; ++k)
        sum += b[k + 1] * inputs[k] + f[k + 1] * outputs[k];
    const double result = std::clamp(sum, -saturation, saturation);
    for (std::size_t k = 3; k > 0; --k) {
        inputs[k] = inputs[k - 1];
        outputs[k] = outputs[k - 1];
    }
    inputs[0] = sample;
    outputs[0] = result;
    return result;
}

} // namespace kora::simulation
