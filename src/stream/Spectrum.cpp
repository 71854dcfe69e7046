#include "stream/Spectrum.h"

#include "stream/GraphDataWriter.h"

#include <fftw3.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <numeric>

namespace {

struct FftwFree
{
    void operator()(void* memory) const { fftw_free(memory); }
};
struct FftwDestroy
{
    void operator()(fftw_plan plan) const { fftw_destroy_plan(plan); }
};
using InputArray = std::unique_ptr<double[], FftwFree>;
using OutputArray = std::unique_ptr<fftw_complex[], FftwFree>;
using Plan = std::unique_ptr<std::remove_pointer_t<fftw_plan>, FftwDestroy>;

/// The newest settings.length values of the slot, the oldest first, zeros before the first record.
void gather(const DisplayRecord* block, int count, const SpectrumSettings& settings, double* input)
{
    const bool hasSlot = settings.slot >= 0 && settings.slot < slotsPerRecord;
    const int taken = hasSlot ? std::clamp(count, 0, settings.length) : 0;
    const int missing = settings.length - taken;
    std::fill(input, input + missing, 0.0);
    const DisplayRecord* newest = block + (count - taken);
    for (int record = 0; record < taken; ++record)
        input[missing + record] = settings.factor * slotValue(newest[record], settings.slot);
}

void subtractMean(double* input, int length)
{
    const double mean = std::accumulate(input, input + length, 0.0) / length;
    std::for_each(input, input + length, [mean](double& value) { value -= mean; });
}

/// 32-bit as the frequency axis is defined; a rate far beyond any real one wraps.
double binKey(int rate, int bin, int length)
{
    return std::int32_t(std::uint32_t(rate) * std::uint32_t(bin)) / length;
}

} // namespace

double fftw_abs(double* c)
{
    return std::sqrt(c[0] * c[0] + c[1] * c[1]);
}

void computeSpectrum(const DisplayRecord* block, int count, const SpectrumSettings& settings, QCPDataMap* map)
{
    const int length = settings.length;
    if (length < 1) {
        map->clear();
        return;
    }
    const int bins = length / 2 + 1;
    const InputArray input(static_cast<double*>(fftw_malloc(sizeof(double) * std::size_t(length))));
    const OutputArray output(static_cast<fftw_complex*>(fftw_malloc(sizeof(fftw_complex) * std::size_t(bins))));
    gather(block, count, settings, input.get());
    if (settings.removeDC)
        subtractMean(input.get(), length);
    const Plan plan(fftw_plan_dft_r2c_1d(length, input.get(), output.get(), FFTW_ESTIMATE));
    fftw_execute(plan.get());

    QCPGraphData* points = pointsForWriting(map, bins);
    for (int bin = 0; bin < bins; ++bin) {
        points[bin].key = binKey(settings.rate, bin, length);
        points[bin].value = fftw_abs(output[std::size_t(bin)]) / length;
    }
    orderAsMap(map);
}
