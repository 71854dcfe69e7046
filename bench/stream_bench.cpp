#include "Interleaved.h"

#include "app/Globals.h"
#include "app/MainWindow.h"
#include "hardware/ConfigFile.h"
#include "hardware/MailboxComm.h"
#include "hardware/koralink.h"
#include "stream/Spectrum.h"
#include "stream/TraceDecoder.h"
#include "stream/TraceTable.h"

#include <QApplication>
#include <QDockWidget>
#include <QMap>
#include <fftw3.h>

#include <cstring>
#include <memory>
#include <random>

// Decoding of full windows against the same memory traffic without any work: 3.5 MiB are read, and 22 traces of 14336
// points of 16 bytes, 5.05 MB, are written.

/// In the control library's place: the window is in the buffer already.
int getBuffer(void*, int samples)
{
    return samples;
}

namespace {

constexpr int windowRecords = largestBlockRecords;
constexpr std::size_t writtenBytes = std::size_t(timeTraceCount) * windowRecords * sizeof(QCPGraphData);

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
    Stream() : block(windowRecords), copy(writtenBytes)
    {
        fillWithNoise(block.data());
        for (const TimeTrace& trace : timeTraces)
            targets.push_back({&traces[&trace - timeTraces], trace.slot, 1.5});
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
    void copyMemory()
    {
        const std::size_t readBytes = block.size() * sizeof(DisplayRecord);
        std::memcpy(copy.data(), block.data(), readBytes);
        std::memcpy(copy.data() + readBytes, block.data(), writtenBytes - readBytes);
        benchmark::DoNotOptimize(copy.data());
        benchmark::ClobberMemory();
    }

    /// The same content, point by point into trees.
    void fillTrees()
    {
        for (const TimeTrace& trace : timeTraces) {
            QMap<double, QCPGraphData>& tree = trees[&trace - timeTraces];
            tree.clear();
            for (int record = 0; record < windowRecords; ++record) {
                const double key = double(float(record) / 1000.0f);
                tree.insert(key, QCPGraphData(key, 1.5 * slotValue(block[std::size_t(record)], trace.slot)));
            }
        }
        for (int bpm = 0; bpm < 2; ++bpm) {
            QMap<double, QCPGraphData>& tree = trees[timeTraceCount + bpm];
            tree.clear();
            for (int record = windowRecords - cloudRecords; record < windowRecords; ++record) {
                const double key = 1.5 * slotValue(block[std::size_t(record)], cloudSlots[bpm][0]);
                tree.insert(key, QCPGraphData(key, 1.5 * slotValue(block[std::size_t(record)], cloudSlots[bpm][1])));
            }
        }
        transform(8192);
        QMap<double, QCPGraphData>& tree = trees[timeTraceCount + 2];
        tree.clear();
        for (auto point = spectrum.constBegin(); point != spectrum.constEnd(); ++point)
            tree.insert(point->key, *point);
    }

private:
    std::vector<DisplayRecord> block;
    std::vector<char> copy;
    QCPDataMap traces[timeTraceCount];
    QCPDataMap clouds[2];
    QCPDataMap spectrum;
    QMap<double, QCPGraphData> trees[timeTraceCount + 3];
    std::vector<TraceTarget> targets;
};

void decodeWindow(benchmark::State& state)
{
    Stream stream;
    Interleaved().way("decode", [&] { stream.decodeTraces(); }).way("copy", [&] { stream.copyMemory(); }).run(state);
}

/// The two references run apart: the trees leave nothing of the window in the caches.
void decodeWindowCloudsAndSpectrum(benchmark::State& state)
{
    Stream stream;
    const bool againstTrees = state.range(0) != 0;
    Interleaved runs;
    runs.way("decode", [&] {
        stream.decodeTraces();
        stream.decodeClouds();
        stream.transform(8192);
    });
    if (againstTrees)
        runs.way("trees", [&] { stream.fillTrees(); });
    else
        runs.way("copy", [&] { stream.copyMemory(); });
    runs.run(state);
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

void bringIntoSight(MainWindow& window, const QString& dockTitle)
{
    for (QDockWidget* dock : window.findChildren<QDockWidget*>()) {
        if (dock->windowTitle() == dockTitle)
            dock->raise();
    }
    for (int turn = 0; turn < 30; ++turn)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
}

void wholeTick(benchmark::State& state)
{
    Stream stream;
    const char* const title = state.range(0) ? "Graph DAC" : "Graph FFT";
    state.SetLabel(title);
    MainWindow window;
    window.resize(1800, 900);
    window.show();
    bringIntoSight(window, QLatin1String(title));
    updater->fftLength = 8192;
    SAMP_FREQ = 10000;
    fillWithNoise(static_cast<DisplayRecord*>(updater->buffer));
    Interleaved()
        .way("tick",
             [] {
                 updater->updateGraphs();
                 QCoreApplication::processEvents();
             })
        .way("copy", [&] { stream.copyMemory(); })
        .run(state);
}

} // namespace

BENCHMARK(decodeWindow)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(decodeWindowCloudsAndSpectrum)->Arg(0)->Arg(1)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(spectrumOf8192)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(wholeTick)->Arg(0)->Arg(1)->UseManualTime()->Unit(benchmark::kMillisecond);

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    configFile = new ConfigFile;
    updater = new Updater;
    mailbox = new MailboxComm(nullptr);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
