#include "Interleaved.h"

#include "stream/SignalTable.h"
#include "stream/Spectrum.h"
#include "stream/TraceDecoder.h"

#include <QMap>
#include <fftw3.h>
#include <qcustomplot.h>

#include <algorithm>
#include <cstring>
#include <random>

// Decoding of full windows, from caches that other work has filled, against the same content in trees; the spectrum
// against its transform alone. What a tick of the whole program costs is measured from outside (program/).

namespace {

constexpr int windowRecords = largestBlockRecords;
constexpr int cloudSlots[2][2] = {{SlotPos1X, SlotPos1Y}, {SlotPos2X, SlotPos2Y}};

/// Slots of all traces of the time-series graphs.
std::vector<int> tracedSlots()
{
    std::vector<int> slotNumbers;
    for (const StreamSignal& signal : signalTable) {
        if (signal.trace.graph != KindNone)
            slotNumbers.push_back(signal.slot());
    }
    return slotNumbers;
}

void fillWithNoise(DisplayRecord* block)
{
    std::mt19937 generator(1);
    std::normal_distribution<double> normal;
    for (int record = 0; record < windowRecords; ++record) {
        double numbers[slotsPerRecord];
        std::generate(std::begin(numbers), std::end(numbers), [&] { return normal(generator); });
        std::memcpy(static_cast<void*>(&block[record]), numbers, sizeof numbers);
    }
}

class Stream
{
public:
    Stream()
        : block(windowRecords), slotNumbers(tracedSlots()), traces(slotNumbers.size()), trees(slotNumbers.size() + 3)
    {
        fillWithNoise(block.data());
        for (std::size_t trace = 0; trace < slotNumbers.size(); ++trace)
            targets.push_back({&traces[trace], slotNumbers[trace], 1.5});
    }

    void decodeTraces() { decodeTimeTraces(block.data(), windowRecords, 1000, targets); }
    void decodeClouds()
    {
        for (int bpm = 0; bpm < 2; ++bpm)
            decodeCloud(block.data(), windowRecords, cloudSlots[bpm][0], cloudSlots[bpm][1], 1.5, 1.5, &clouds[bpm]);
    }
    void transform(int length)
    {
        SpectrumSettings settings = {};
        settings.length = length;
        settings.slot = SlotCur1;
        settings.factor = 1.0;
        settings.rate = 10000;
        computeSpectrum(block.data(), windowRecords, settings, &spectrum);
    }
    /// The same content, point by point into trees.
    void fillTrees()
    {
        for (std::size_t trace = 0; trace < slotNumbers.size(); ++trace) {
            QMap<double, QCPGraphData>& tree = trees[trace];
            tree.clear();
            for (int record = 0; record < windowRecords; ++record) {
                const double key = double(float(record) / 1000.0f);
                tree.insert(key, QCPGraphData(key, 1.5 * slotValue(block[std::size_t(record)], slotNumbers[trace])));
            }
        }
        for (int bpm = 0; bpm < 2; ++bpm) {
            QMap<double, QCPGraphData>& tree = trees[slotNumbers.size() + std::size_t(bpm)];
            tree.clear();
            for (int record = windowRecords - cloudRecords; record < windowRecords; ++record) {
                const double key = 1.5 * slotValue(block[std::size_t(record)], cloudSlots[bpm][0]);
                tree.insert(key, QCPGraphData(key, 1.5 * slotValue(block[std::size_t(record)], cloudSlots[bpm][1])));
            }
        }
        transform(8192);
        QMap<double, QCPGraphData>& tree = trees[slotNumbers.size() + 2];
        tree.clear();
        for (auto point = spectrum.constBegin(); point != spectrum.constEnd(); ++point)
            tree.insert(point->key, *point);
    }

private:
    std::vector<DisplayRecord> block;
    std::vector<int> slotNumbers;
    std::vector<QCPDataMap> traces;
    QCPDataMap clouds[2];
    QCPDataMap spectrum;
    std::vector<QMap<double, QCPGraphData>> trees;
    std::vector<TraceTarget> targets;
};

/// The trees leave nothing of the window in the caches, as a second of other work does.
void decodeWindowCloudsAndSpectrum(benchmark::State& state)
{
    Stream stream;
    Interleaved()
        .way("decode",
             [&] {
                 stream.decodeTraces();
                 stream.decodeClouds();
                 stream.transform(8192);
             })
        .way("trees", [&] { stream.fillTrees(); })
        .run(state);
}

void spectrumOf8192(benchmark::State& state)
{
    constexpr int length = 8192;
    Stream stream;
    auto* input = static_cast<double*>(fftw_malloc(sizeof(double) * length));
    auto* output = static_cast<fftw_complex*>(fftw_malloc(sizeof(fftw_complex) * (length / 2 + 1)));
    const fftw_plan plan = fftw_plan_dft_r2c_1d(length, input, output, FFTW_ESTIMATE);
    std::mt19937 generator(1);
    std::normal_distribution<double> normal;
    std::generate(input, input + length, [&] { return normal(generator); });
    Interleaved()
        .way("spectrum", [&] { stream.transform(length); })
        .way("execute", [&] { fftw_execute(plan); })
        .run(state);
    fftw_destroy_plan(plan);
    fftw_free(input);
    fftw_free(output);
}

} // namespace

BENCHMARK(decodeWindowCloudsAndSpectrum)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(spectrumOf8192)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_MAIN();
