#pragma once

#include <cstdint>
#include <vector>

namespace kora::archive {

/// Samples that one value of an overview stands for, the finer first.
constexpr int overviewFactors[] = {128, 16384};
constexpr int overviewCount = 2;

/// What an overview keeps of a stretch of samples: extremes, mean and standard deviation (of the whole stretch, not
/// estimated from a part). NaN counts as no sample; a stretch without a number has NaN in all four.
struct Stretch
{
    double min;
    double max;
    double mean;
    double deviation;
};

/// Collects the samples of one stretch. The deviations of parts are joined by their means (Chan, Golub & LeVeque,
/// 1979), so that a small deviation on top of a large mean keeps its digits.
class StretchBuilder
{
public:
    /// @param samples at any alignment of double
    void add(const double* samples, int number);
    void add(const StretchBuilder& part);
    /// Samples so far, NaN included.
    std::int64_t samples() const { return collected; }
    Stretch result() const;
    void clear() { *this = StretchBuilder(); }

private:
    std::int64_t collected = 0;
    std::int64_t numbers = 0;
    double min = 0;
    double max = 0;
    double mean = 0;
    double squares = 0; ///< sum of the squared distances from the mean
};

/// The overviews of one signal, fed with its samples in order.
class OverviewBuilder
{
public:
    /// Finished values of one factor, not yet taken.
    using Finished = std::vector<Stretch>;

    void add(const double* samples, int number);
    /// Also finishes what is left over at the end, a shorter stretch.
    void finish();
    Finished& finished(int overview) { return ready[overview]; }

private:
    void takeFine();

    StretchBuilder open[overviewCount];
    Finished ready[overviewCount];
};

} // namespace kora::archive
