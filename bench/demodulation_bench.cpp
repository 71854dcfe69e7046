// Demodulation of a block of 14336 records, against one pass that reads the block.

#include "Interleaved.h"

#include "stream/DisplayRecord.h"
#include "tools/frequency/Demodulation.h"

#include <cmath>
#include <cstring>

namespace {

std::vector<DisplayRecord> sineBlock()
{
    std::vector<DisplayRecord> block(largestBlockRecords);
    for (int i = 0; i < largestBlockRecords; ++i) {
        DisplayRecord& record = block[std::size_t(i)];
        record.xLf = 0.01 * std::sin(0.031 * i + 0.5);
        record.funcGenRefA = float(4 * std::sin(0.031 * i));
        record.funcGenRefB = float(4 * std::cos(0.031 * i));
    }
    return block;
}

/// Adds up all words of the block, so that every byte is read once.
std::uint64_t sumOfWords(const std::vector<DisplayRecord>& block)
{
    const auto* bytes = reinterpret_cast<const unsigned char*>(block.data());
    std::uint64_t sum = 0;
    for (std::size_t i = 0; i < block.size() * sizeof(DisplayRecord); i += sizeof sum) {
        std::uint64_t word;
        std::memcpy(&word, bytes + i, sizeof word);
        sum += word;
    }
    return sum;
}

void demodulatingOneBlock(benchmark::State& state)
{
    const std::vector<DisplayRecord> block = sineBlock();
    Interleaved()
        .way("demodulate",
             [&] {
                 benchmark::DoNotOptimize(
                     demodulation::demodulate(block.data(), largestBlockRecords - 1, SlotXLf, 500, 0.1F));
             })
        .way("one_pass", [&] { benchmark::DoNotOptimize(sumOfWords(block)); })
        .run(state);
}

} // namespace

BENCHMARK(demodulatingOneBlock)->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK_MAIN();
