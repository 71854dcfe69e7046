#include "tools/step/StepAnalysis.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <optional>

namespace {

constexpr int samplesBeforeStep = 100;
/// Part of the rise between the two crossings, 10 % to 90 %.
constexpr double crossingSpan = 0.8;

double meanProduct(const std::vector<double>& a, const std::vector<double>& b, std::size_t count)
{
    return std::inner_product(a.begin(), a.begin() + long(count), b.begin(), 0.0) / double(count);
}

/// A total order also for NaN, which comes last.
bool sortsBefore(double a, double b)
{
    return std::isnan(b) ? !std::isnan(a) : a < b;
}

/// Index before the first sample above the level, from the given index on; nothing if there is none.
std::optional<int> indexBefore(const std::vector<double>& samples, int from, double level)
{
    for (int i = from; i < int(samples.size()); ++i) {
        if (samples[std::size_t(i)] > level)
            return i - 1;
    }
    return std::nullopt;
}

struct Levels
{
    double low;
    double high;
};

Levels levels(std::vector<double> samples)
{
    std::sort(samples.begin(), samples.end(), sortsBefore);
    const auto count = long(samples.size());
    const double tenth = double(count) / 10.0;
    return {std::accumulate(samples.begin(), samples.begin() + count / 10, 0.0) / tenth,
            std::accumulate(samples.begin() + count * 9 / 10, samples.end(), 0.0) / tenth};
}

} // namespace

bool step_analysis::isInverted(const std::vector<double>& response, const std::vector<double>& stimulus)
{
    const std::size_t first = std::min(response.size(), std::size_t(samplesBeforeStep));
    return meanProduct(response, stimulus, first) > meanProduct(response, stimulus, response.size());
}

step_analysis::Result step_analysis::analyse(const std::vector<double>& response, const std::vector<double>& stimulus,
                                             double bias, double step, double rateHz)
{
    Result result;
    const Levels found = levels(response);
    result.low = found.low;
    result.high = found.high;
    result.dy = found.high - found.low;
    const double middle = (found.low + found.high) / 2;
    const double lower = middle - 0.5 * result.dy * crossingSpan;
    const double upper = middle + 0.5 * result.dy * crossingSpan;

    const int last = int(response.size()) - 1;
    const std::optional<int> low = indexBefore(response, 1, lower);
    result.iLow = low.value_or(last);
    // The search starts at the first crossing itself, so that a rise within one sample gives no time. Without one there
    // is no rise: the upper level, which then may lie below the lower one, is not searched.
    result.iHigh = low ? indexBefore(response, *low, upper).value_or(last) : last;
    result.iStim = indexBefore(stimulus, 0, bias + 0.5 * step).value_or(last);

    result.tLow = result.iLow / rateHz;
    result.tHigh = result.iHigh / rateHz;
    result.tStim = result.iStim / rateHz;
    result.tDead = result.tLow - result.tStim;
    result.tSettle = result.tHigh - result.tLow;
    return result;
}
