#include "recorder/StatusReader.h"

#include "hardware/koralink.h"
#include "stream/DeviceFile.h"

#include <algorithm>

#include <fcntl.h>

namespace kora::recorder {

using archive::UnreadableItem;

bool StatusReader::accept(int result, UnreadableItem item)
{
    if (result < 0)
        sample.unreadable |= item;
    return result >= 0;
}

const archive::StatusSample& StatusReader::read()
{
    sample.unreadable = 0;
    sample.feedback = getPIDstatus();
    signed char configuration = 0;
    if (accept(getPIDconf(&configuration), archive::UnreadableConfiguration))
        sample.configuration = configuration;
    for (int controller = 0; controller < 4; ++controller) {
        double value = 0;
        if (accept(getSetpoint(controller, &value), archive::UnreadableSetpoints))
            sample.setpoints[controller] = value;
    }
    unsigned char outputs[4] = {};
    if (accept(getPIDoutSel(&outputs[0], &outputs[1], &outputs[2], &outputs[3]), archive::UnreadableOutputs))
        std::copy(outputs, outputs + 4, sample.outputs);
    int selectors[4] = {};
    if (accept(getBPMselector(&selectors[0], &selectors[1], &selectors[2], &selectors[3]),
               archive::UnreadableSelectors))
        std::copy(selectors, selectors + 4, sample.selectors);
    unsigned char source = 0;
    if (accept(getOutputMux(&source), archive::UnreadableOutputSource))
        sample.outputSource = source;
    unsigned char regions[6] = {};
    if (accept(getROCenable(&regions[0], &regions[1], &regions[2], &regions[3], &regions[4], &regions[5]),
               archive::UnreadableRegions))
        std::copy(regions, regions + 6, sample.regionsEnabled);
    BPMStats statistics = {};
    if (accept(getBPMStats(&statistics), archive::UnreadableStatistics))
        sample.statistics = statistics;
    for (int port = 0; port < 4; ++port) {
        SFPinfo info = {};
        if (accept(getSFPinfo(port, &info.deviceId, &info.hwVersion, info.version, &info.serialNumber),
                   archive::UnreadablePorts))
            sample.ports[port] = info;
    }
    int rate = 0;
    unsigned char filter = 0;
    if (accept(getDisplayFreq(&rate, &filter), archive::UnreadableRate)) {
        sample.rate = rate;
        sample.filter = filter;
    }
    readAmplifier(0);
    readAmplifier(1);
    return sample;
}

void StatusReader::readAmplifier(int amplifier)
{
    AmplifierStatus status = {};
    DeviceFile device(amplifierDevicePath[amplifier], O_RDONLY);
    const bool read = device.isOpen() && device.control(requestAmplifierStatus, &status) >= 0;
    if (accept(read ? 0 : -1, amplifier == 0 ? archive::UnreadableAmplifier1 : archive::UnreadableAmplifier2))
        sample.amplifiers[amplifier] = status;
}

} // namespace kora::recorder
