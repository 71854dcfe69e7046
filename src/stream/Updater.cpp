#include "stream/Updater.h"

#include "app/Globals.h"
#include "hardware/koralink.h"
#include "logging/Log.h"
#include "stream/DeviceFile.h"
#include "stream/MissingStream.h"
#include "stream/Spectrum.h"
#include "stream/TraceDecoder.h"
#include "stream/TraceTable.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fcntl.h>
#include <iterator>

namespace {

constexpr std::size_t bufferBytes = 0x2000000;

double factorOf(SlotScale scale)
{
    switch (scale) {
    case SlotScale::Bpm1X:
        return bpmScaleX[0];
    case SlotScale::Bpm1Y:
        return bpmScaleY[0];
    case SlotScale::Bpm2X:
        return bpmScaleX[1];
    case SlotScale::Bpm2Y:
        return bpmScaleY[1];
    case SlotScale::None:
        break;
    }
    return 1.0;
}

} // namespace

double fftw_abs(double* c)
{
    return std::sqrt(c[0] * c[0] + c[1] * c[1]);
}

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
        if (device.isOpen())
            device.control(requestAmplifierStatus, &ionbarStatus[amplifier]);
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
    // What the buffer holds is decoded all the same.
    if (delivered != records)
        reportMissingStreamAndQuit();
}

void Updater::decodeTraces(int records)
{
    std::vector<TraceTarget> targets;
    targets.reserve(timeTraceCount);
    for (const TimeTrace& trace : timeTraces) {
        if (QCPDataMap* map = *registered(trace.kind, trace.channel))
            targets.push_back({map, trace.slot, factorOf(trace.scale)});
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
    settings.factor = fftChannel == SlotPos1X ? bpmScaleX[0] : fftChannel == SlotPos1Y ? bpmScaleY[0] : 1.0;
    settings.removeDC = removeDC;
    settings.rate = SAMP_FREQ;
    computeSpectrum(static_cast<const DisplayRecord*>(buffer), records, settings, dataFFT);
}
