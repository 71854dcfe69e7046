#include "stream/Updater.h"

#include "stream/DeviceFile.h"

#include <cstdlib>
#include <fcntl.h>

namespace {

constexpr std::size_t bufferBytes = 0x2000000;

} // namespace

Updater::Updater() : buffer(std::malloc(bufferBytes)) {}

Updater::~Updater()
{
    std::free(buffer);
}

void Updater::setGraphData(int kind, int channel, QCPDataMap* map)
{
    switch (kind) {
    case KindXY1: dataXY[0] = map; break;
    case KindXY2: dataXY[1] = map; break;
    case KindFFT: dataFFT = map; break;
    case KindCurrents1: dataCurrents[0][channel] = map; break;
    case KindCurrents2: dataCurrents[1][channel] = map; break;
    case KindPosX: dataPosX[channel] = map; break;
    case KindPosY: dataPosY[channel] = map; break;
    case KindInt: dataInt[channel] = map; break;
    case KindDAC: dataDAC[channel] = map; break;
    default: break;
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
    emit replotGraphs();
}
