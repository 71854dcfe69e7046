#include "simulation/AcquisitionBoard.h"

#include "simulation/Installation.h"

#include <algorithm>

namespace kora::simulation {

template <typename Read>
int AcquisitionBoard::onAmplifier(int amplifier, Read read)
{
    return installation.operate([&](Plant& plant) {
        if ((amplifier != 0 && amplifier != 1) || !plant.ports().holds(amplifier, SfpPorts::AmplifierClass))
            return -ENODEV;
        read(plant);
        return 0;
    });
}

int AcquisitionBoard::amplifierStatus(int amplifier, AmplifierStatus* status)
{
    return onAmplifier(amplifier, [=](Plant& plant) {
        if (status)
            *status = plant.amplifierStatus(amplifier);
    });
}

int AcquisitionBoard::amplifierCurrents(int amplifier, CurrentRecord* currents)
{
    return onAmplifier(amplifier, [=](Plant& plant) {
        if (currents)
            *currents = plant.currentRecord(amplifier);
    });
}

int AcquisitionBoard::writeOutputs(const OutputVolts& volts)
{
    return installation.operate([&](Plant& plant) {
        if (!plant.ports().holdsAnywhere(SfpPorts::OutputClass))
            return -ENODEV;
        plant.outputs().write(volts.data());
        return 0;
    });
}

int AcquisitionBoard::countBufferCall()
{
    return installation.operate("getBuffer", [](Plant&) { return 0; });
}

int AcquisitionBoard::computeRecords(int count)
{
    installation.computeRecords(count);
    return 0;
}

int AcquisitionBoard::computeSteps(int steps)
{
    installation.advance(std::min(double(steps) / physicsRate, longestSliceS));
    return 0;
}

} // namespace kora::simulation
