#include "tools/frequency/FrequencySweep.h"

#include <armadillo>

#include <cmath>

namespace {

using frequency_sweep::Refusal;
using frequency_sweep::Timing;

constexpr Refusal startRefused = {"Start frequency not allowed ...\n", "Allowed values [0.1, 500] Hz\n\n"};
constexpr Refusal stopRefused = {"Stop frequency not allowed ...\n", "Allowed values [1, 1000] Hz\n\n"};
constexpr Refusal lengthRefused = {"Number of frequency points not allowed ...\n", "Allowed values [2, 1000]\n\n"};

constexpr Timing fast = {10, 1000, 10000};
constexpr Timing slow = {5, 1500, 1000};
constexpr Timing slowest = {1, 2000, 1000};

/// False also for NaN.
bool within(double value, double least, double most)
{
    return value >= least && value <= most;
}

} // namespace

const Refusal* frequency_sweep::refusal(double startHz, double stopHz, int length)
{
    if (!within(startHz, 0.1, 500))
        return &startRefused;
    if (!within(stopHz, 1, 1000))
        return &stopRefused;
    if (length < 2 || length > 1000)
        return &lengthRefused;
    return nullptr;
}

std::vector<double> frequency_sweep::points(bool logarithmic, double startHz, double stopHz, int length)
{
    const auto count = arma::uword(length);
    const arma::vec list = logarithmic ? arma::linspace(std::log10(startHz), std::log10(stopHz), count)
                                       : arma::linspace(startHz, stopHz, count);
    std::vector<double> frequencies(list.begin(), list.end());
    if (logarithmic) {
        for (double& frequency : frequencies)
            frequency = std::pow(10.0, frequency);
    }
    return frequencies;
}

Timing frequency_sweep::timing(float hertz)
{
    const int whole = int(hertz);
    if (whole >= 10)
        return fast;
    return whole >= 1 ? slow : slowest;
}

unsigned long frequency_sweep::waitMs(float hertz)
{
    const Timing chosen = timing(hertz);
    const float seconds = float(chosen.periods) / hertz;
    return static_cast<unsigned long>(double(seconds) * 1000.0 + chosen.settleMs);
}

int frequency_sweep::percent(int done, int length)
{
    const float share = float(done) / float(length);
    return int(double(share) * 100.0);
}
