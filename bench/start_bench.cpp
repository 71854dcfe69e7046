// How long the program takes to its first picture, against a program that shows one empty plot.

#include "ProgramStart.h"

#include <benchmark/benchmark.h>

#include <QCoreApplication>

#include <algorithm>
#include <iterator>

namespace {

constexpr int starts = 9;

/// Medians of starts that take turns, so that both meet the same load.
void startAgainstEmptyPlot(benchmark::State& state)
{
    ProgramStart program(KORA_PROGRAM);
    ProgramStart reference(KORA_EMPTY_PLOT);
    double programSeconds[starts];
    double referenceSeconds[starts];
    for (auto _ : state) {
        for (int i = 0; i < starts; ++i) {
            referenceSeconds[i] = reference.secondsToPicture();
            programSeconds[i] = program.secondsToPicture();
        }
    }
    for (double* seconds : {programSeconds, referenceSeconds})
        std::sort(seconds, seconds + starts);
    if (programSeconds[0] < 0 || referenceSeconds[0] < 0) {
        state.SkipWithError(programSeconds[0] < 0 ? "the program showed no picture"
                                                  : "the empty plot showed no picture");
        return;
    }
    state.counters["program_ms"] = programSeconds[starts / 2] * 1e3;
    state.counters["empty_plot_ms"] = referenceSeconds[starts / 2] * 1e3;
    state.counters["ratio"] = programSeconds[starts / 2] / referenceSeconds[starts / 2];
}
BENCHMARK(startAgainstEmptyPlot)->Iterations(1)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
