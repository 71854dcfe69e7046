#pragma once

#include "stream/DeviceRecords.h"

namespace kora::simulation {

/// Bias supply of one amplifier: follows its set value at a fixed slew rate.
class HighVoltage
{
public:
    static constexpr double slewVoltsPerSecond = 100;
    static constexpr double leakageOhm = 1e9;
    static constexpr double cableFarad = 10e-9;

    void enable(bool on) { enabled = on; }
    /// @param volts magnitude of the bias; the amplifier's model knows the sign
    void setTarget(double volts) { target = volts; }
    /// @return whether the voltage moved
    bool advance(double seconds);

    double volts() const { return present; }
    /// Leakage of the detector, and while the voltage moves the charging of its cable.
    double microamps() const;
    HighVoltageState state() const;

private:
    double wanted() const { return enabled ? target : 0; }

    bool enabled = false;
    double target = 0;
    double present = 0;
};

} // namespace kora::simulation
