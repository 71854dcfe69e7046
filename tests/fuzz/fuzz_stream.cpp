// Any bytes as a block of the display stream: through the updater into every trace, cloud and spectrum, and through
// the arithmetic of the tools. Traces stay ordered by key and hold no more points than there are records.

#include "app/Globals.h"
#include "hardware/koralink.h"
#include "stream/DeviceRecords.h"
#include "stream/DisplayRecord.h"
#include "stream/Updater.h"
#include "tools/frequency/Demodulation.h"
#include "tools/savedata/SaveDataLines.h"
#include "tools/step/StepAnalysis.h"

#include <qcustomplot.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

int SAMP_FREQ = 1000;

namespace {

const std::uint8_t* blockBytes = nullptr;

/// What the operator may have chosen, as the first bytes of an input tell it.
struct Choices
{
    std::int32_t rate;
    std::uint16_t fftLength;
    std::uint8_t slot;
    std::uint8_t removeDC;
    float scale;
};

void require(bool holds)
{
    if (!holds)
        std::abort();
}

bool ordered(const QCPDataMap& map)
{
    return std::is_sorted(map.constBegin(), map.constEnd(), [](const QCPGraphData& next, const QCPGraphData& before) {
        return !(next.key >= before.key);
    });
}

struct Traces
{
    QCPDataMap clouds[2], spectrum, currents[2][4], dac[4], x[4], y[4], intensity[2];
    std::vector<QCPDataMap*> all;

    void registerWith(Updater& updater)
    {
        add(updater, KindXY1, 0, clouds[0]);
        add(updater, KindXY2, 0, clouds[1]);
        add(updater, KindFFT, 0, spectrum);
        for (int channel = 0; channel < 4; ++channel) {
            add(updater, KindCurrents1, channel, currents[0][channel]);
            add(updater, KindCurrents2, channel, currents[1][channel]);
            add(updater, KindDAC, channel, dac[channel]);
            add(updater, KindPosX, channel, x[channel]);
            add(updater, KindPosY, channel, y[channel]);
        }
        for (int channel = 0; channel < 2; ++channel)
            add(updater, KindInt, channel, intensity[channel]);
    }
    void add(Updater& updater, int kind, int channel, QCPDataMap& map)
    {
        updater.setGraphData(kind, channel, &map);
        all.push_back(&map);
    }
};

void showInGraphs(const Choices& choices, int records)
{
    // Made once: to provide its buffer of 32 MiB anew takes a hundred times as long as to decode a block.
    static Updater updater;
    Traces traces;
    traces.registerWith(updater);
    SAMP_FREQ = choices.rate;
    dispBufferBytes = records * recordBytes;
    for (int bpm = 0; bpm < 2; ++bpm)
        bpmScaleX[bpm] = bpmScaleY[bpm] = double(choices.scale);
    updater.fftLength = choices.fftLength % 4096;
    updater.setFFTchannel(choices.slot);
    updater.ChangeFFTremoveDC(choices.removeDC & 1);
    updater.updateGraphs();
    for (const QCPDataMap* map : traces.all) {
        require(ordered(*map));
        require(map == &traces.spectrum || map->size() <= records);
        if (choices.rate > 0 && map == &traces.dac[0])
            require(map->size() == records);
    }
}

void measure(const Choices& choices, const std::vector<DisplayRecord>& block)
{
    const int slot = choices.slot % slotsPerRecord;
    demodulation::demodulate(block.data(), int(block.size()), slot, double(choices.scale), choices.scale);
    std::vector<double> response, stimulus;
    for (const DisplayRecord& record : block) {
        response.push_back(slotValue(record, slot));
        stimulus.push_back(slotValue(record, SlotDac));
    }
    step_analysis::isInverted(response, stimulus);
    const step_analysis::Result result =
        step_analysis::analyse(response, stimulus, double(choices.scale), 0.1, double(choices.rate));
    for (int index : {result.iLow, result.iHigh, result.iStim})
        require(index >= -1 && index < int(block.size()));
    bool enabled[save_data::channelCount];
    std::fill(std::begin(enabled), std::end(enabled), true);
    require(save_data::dataRow(block.front(), choices.fftLength, choices.rate, enabled).count(QLatin1Char(',')) == 19);
}

void readStatus(const std::uint8_t* bytes)
{
    AmplifierStatus status;
    std::memcpy(status.bytes, bytes, sizeof status.bytes);
    for (int channel = 0; channel < 4; ++channel)
        (void)status.current(channel);
    require(status.highVoltageCode() >= 0 && status.highVoltageCode() < 16);
}

} // namespace

int getBuffer(void* buffer, int records)
{
    std::memcpy(buffer, blockBytes, std::size_t(records) * recordBytes);
    return records;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Choices choices;
    if (size < sizeof choices + recordBytes)
        return 0;
    std::memcpy(&choices, data, sizeof choices);
    blockBytes = data + sizeof choices;
    std::vector<DisplayRecord> block((size - sizeof choices) / recordBytes);
    std::memcpy(block.data(), blockBytes, block.size() * recordBytes);
    showInGraphs(choices, int(block.size()));
    measure(choices, block);
    readStatus(blockBytes);
    return 0;
}
