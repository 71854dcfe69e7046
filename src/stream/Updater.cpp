#include "stream/Updater.h"

#include "app/Globals.h"
#include "hardware/koralink.h"
#include "logging/Log.h"
#include "stream/DeviceFile.h"
#include "stream/MissingStream.h"
#include "stream/SignalTable.h"
#include "stream/TraceDecoder.h"

#include <algorithm>
#include <cstdlib>
#include <fcntl.h>
#include <iterator>

namespace {

constexpr std::size_t bufferBytes = 0x2000000;

static_assert(traceCount(KindCurrents1) == traceCount(KindCurrents2), "both have their traces in dataCurrents");

/// Position slots of the two monitors, X and Y, for the XY clouds.
constexpr int cloudSlots[2][2] = {{SlotPos1X, SlotPos1Y}, {SlotPos2X, SlotPos2Y}};

/// Factor of a slot that the spectrum offers, 1 for any other.
double spectrumFactor(int slot)
{
    const auto* found =
        std::find_if(std::begin(signalTable), std::end(signalTable),
                     [slot](const StreamSignal& signal) { return signal.spectrum.text && signal.slot() == slot; });
    return found == std::end(signalTable) ? 1.0 : factorOf(found->scale, bpmScaleX, bpmScaleY);
}

} // namespace

Updater::Updater() : buffer(std::malloc(bufferBytes)) {}

Updater::~Updater()
{
    std::free(buffer);
}

void Updater::setGraphData(int kind, int channel, QCPDataMap* map)
{
    if (QCPDataMap** place = registered(kind, channel))
        *place = map;
}

QCPDataMap** Updater::registered(int kind, int channel)
{
    const auto of = [channel](auto& maps) {
        return channel >= 0 && channel < int(std::size(maps)) ? &maps[channel] : nullptr;
    };
    switch (kind) {
    case KindXY1:
        return &dataXY[0];
    case KindXY2:
        return &dataXY[1];
    case KindFFT:
        return &dataFFT;
    case KindCurrents1:
        return of(dataCurrents[0]);
    case KindCurrents2:
        return of(dataCurrents[1]);
    case KindPosX:
        return of(dataPosX);
    case KindPosY:
        return of(dataPosY);
    case KindInt:
        return of(dataInt);
    case KindDAC:
        return of(dataDAC);
    default:
        return nullptr;
    }
}

const DisplayRecord* Updater::newestRecord() const
{
    return heldRecords > 0 ? static_cast<const DisplayRecord*>(buffer) + heldRecords - 1 : nullptr;
}

void Updater::setFFTchannel(int slot)
{
    fftChannel = slot;
}

void Updater::ChangeFFTremoveDC(bool removeDC)
{
    this->removeDC = removeDC;
}

void Updater::updateIonBars()
{
    for (int amplifier = 0; amplifier < 2; ++amplifier) {
        DeviceFile device(amplifierDevicePath[amplifier], O_RDONLY);
        ionbarStatusRead[amplifier] =
            device.isOpen() && device.control(requestAmplifierStatus, &ionbarStatus[amplifier]) >= 0;
    }
}

void Updater::updateGraphs()
{
    updateIonBars();
    if (paused)
        return;
    const int records = std::clamp(dispBufferBytes, 0, int(bufferBytes)) / recordBytes;
    fetchWindow(records);
    decodeTraces(records);
    decodeClouds(records);
    if (dataFFT)
        transform(records);
    emit replotGraphs();
}

void Updater::fetchWindow(int records)
{
    const int delivered = getBuffer(buffer, records);
    KORA_LOG_DEBUG << "updateGraphs read" << delivered << "samples";
    // A call that delivers nothing leaves the window before it in the buffer.
    if (delivered > 0)
        heldRecords = std::min(delivered, records);
    // What the buffer holds is decoded all the same.
    if (delivered != records)
        reportMissingStreamAndQuit();
}

void Updater::decodeTraces(int records)
{
    std::vector<TraceTarget> targets;
    for (const StreamSignal& signal : signalTable) {
        if (signal.trace.graph == KindNone)
            continue;
        if (QCPDataMap* map = *registered(signal.trace.graph, channelOf(signal)))
            targets.push_back({map, signal.slot(), factorOf(signal.scale, bpmScaleX, bpmScaleY)});
    }
    decodeTimeTraces(static_cast<const DisplayRecord*>(buffer), records, SAMP_FREQ, targets);
}

void Updater::decodeClouds(int records)
{
    for (int bpm = 0; bpm < 2; ++bpm) {
        if (dataXY[bpm])
            decodeCloud(static_cast<const DisplayRecord*>(buffer), records, cloudSlots[bpm][0], cloudSlots[bpm][1],
                        bpmScaleX[bpm], bpmScaleY[bpm], dataXY[bpm]);
    }
}

void Updater::transform(int records)
{
    SpectrumSettings settings;
    settings.length = fftLength;
    settings.slot = fftChannel;
    settings.factor = spectrumFactor(fftChannel);
    settings.removeDC = removeDC;
    settings.rate = SAMP_FREQ;
    computeSpectrum(static_cast<const DisplayRecord*>(buffer), records, settings, dataFFT);
}
