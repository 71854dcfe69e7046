#pragma once

#include "stream/DeviceRecords.h"

#include <array>
#include <cerrno>

/// The operations of AcquisitionBoard, as KORA_OPERATIONS lists those of the control library.
// clang-format off
#define KORA_BOARD_OPERATIONS(X) \
    X(int, amplifierStatus, -ENODEV, (int amplifier, AmplifierStatus* status), (amplifier, status)) \
    X(int, amplifierCurrents, -ENODEV, (int amplifier, CurrentRecord* currents), (amplifier, currents)) \
    X(int, writeOutputs, -ENODEV, (const kora::simulation::OutputVolts& volts), (volts)) \
    X(int, countBufferCall, -1, (), ()) \
    X(int, computeRecords, -ENODEV, (int count), (count)) \
    X(int, computeSteps, -ENODEV, (int steps), (steps))
// clang-format on

namespace kora::simulation {

class Installation;

/// Outputs 0 to 3, V.
using OutputVolts = std::array<double, 4>;

/// The acquisition board of an installation of this process, behind the device files, and what makes its records: the
/// passing of driven time. Results are 0, or a negative errno value as the driver gives it. May be called from any
/// thread.
class AcquisitionBoard
{
public:
    explicit AcquisitionBoard(Installation& operated) : installation(operated) {}

    /// @param amplifier 0 or 1; @return -ENODEV where no amplifier is plugged
    int amplifierStatus(int amplifier, AmplifierStatus* status);
    int amplifierCurrents(int amplifier, CurrentRecord* currents);
    /// @return -ENODEV where no output unit is plugged
    int writeOutputs(const OutputVolts& volts);
    /// Counts one call of getBuffer. @return -1 where it is told to fail
    int countBufferCall();
    /// On a driven clock, computes time towards `count` records since the rate was set, a tenth of a second at most.
    int computeRecords(int count);
    /// Computes so many steps of the physics on either clock, a tenth of a second at most.
    int computeSteps(int steps);

private:
    template <typename Read>
    int onAmplifier(int amplifier, Read read);

    Installation& installation;
};

} // namespace kora::simulation
