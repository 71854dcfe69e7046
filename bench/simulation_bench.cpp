#include "simulation/Plant.h"
#include "simulation/PowerOn.h"
#include "simulation/Rates.h"

#include <benchmark/benchmark.h>

#include <vector>

using namespace kora::simulation;

namespace {

enum LoopState
{
    Open,
    LowFrequencyLoops,
    AllLoops
};

/// A tenth of a simulated second with everything on: both amplifiers, bias, filters, statistics and stream.
void plantAgainstRealTime(benchmark::State& state)
{
    const int displayRate = int(state.range(0));
    const auto loops = LoopState(state.range(1));
    Plant plant(1000);
    plant.stream().setRate(displayRate, true);
    for (int amplifier = 0; amplifier < 2; ++amplifier) {
        plant.amplifier(amplifier).highVoltage().setTarget(500);
        plant.amplifier(amplifier).highVoltage().enable(true);
    }
    for (int check = 0; check < 6; ++check)
        plant.interlock().enable(check, true);
    plant.interlock().setLimits(3, 0, 1);
    plant.interlock().setLimits(4, 0, 1);
    if (loops != Open) {
        plant.loops().setConfiguration(loops == AllLoops ? 7 : powerOn::configuration);
        plant.loops().enable(true);
    }
    constexpr int slice = physicsRate / 10;
    for (auto _ : state)
        plant.run(slice);
    if (loops != Open && plant.loops().status() != PidStatusOn)
        state.SkipWithError("the loops did not stay closed");
    const double simulated = double(state.iterations()) * slice / physicsRate;
    state.counters["times_real_time"] = benchmark::Counter(simulated, benchmark::Counter::kIsRate);
    state.counters["target"] = 280;
}

/// What the live display asks for once a second.
void largestBlock(benchmark::State& state)
{
    Plant plant(physicsRate);
    plant.run(physicsRate);
    std::vector<DisplayRecord> block(largestBlockRecords);
    for (auto _ : state) {
        plant.stream().copyNewest(block.data(), largestBlockRecords);
        benchmark::DoNotOptimize(block.data());
    }
    state.SetBytesProcessed(std::int64_t(state.iterations()) * largestBlockBytes);
}

} // namespace

BENCHMARK(plantAgainstRealTime)
    ->ArgNames({"display_hz", "loops"})
    ->Args({1000, Open})
    ->Args({1000, LowFrequencyLoops})
    ->Args({1000, AllLoops})
    ->Args({physicsRate, AllLoops})
    ->Unit(benchmark::kMillisecond);
BENCHMARK(largestBlock)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
