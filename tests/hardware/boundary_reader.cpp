// A program that stands on the hardware boundary alone: it prints what the newest record, the first amplifier and the
// loops say.

#include "hardware/LoopConfiguration.h"
#include "hardware/LoopParameters.h"
#include "hardware/PidStatus.h"
#include "hardware/StreamRate.h"
#include "hardware/koralink.h"
#include "stream/DeviceFile.h"
#include "stream/DeviceRecords.h"
#include "stream/SignalTable.h"

#include <fcntl.h>

#include <cstdio>

int main()
{
    DisplayRecord newest;
    AmplifierStatus amplifier = {};
    DeviceFile device(amplifierDevicePath[0], O_RDONLY);
    if (getBuffer(&newest, 1) != 1 || device.control(requestAmplifierStatus, &amplifier) < 0)
        return 1;
    for (const StreamSignal& signal : signalTable)
        std::printf("%s %.17g %s\n", signal.name, signal.rawValue(newest), signal.quantity.unit);
    std::printf("high voltage %g V\n", double(amplifier.highVoltageVolts()));
    std::printf("status %s\n", pidStatusTexts[getPIDstatus()]);
    std::printf("rate %d Hz\n", SAMP_FREQ);
    for (const char* loop : loopNames)
        std::printf("loop %s\n", loop);
    for (const LoopParameter& parameter : loopParameters)
        std::printf("parameter %s\n", parameter.key);
    return 0;
}
