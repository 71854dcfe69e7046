#include "simulation/detectors/HighVoltage.h"

#include <algorithm>

namespace kora::simulation {

bool HighVoltage::advance(double seconds)
{
    const double before = present;
    const double reach = slewVoltsPerSecond * seconds;
    present += std::clamp(wanted() - present, -reach, reach);
    return present != before;
}

double HighVoltage::microamps() const
{
    double amps = present / leakageOhm;
    if (state() == HighVoltageState::Rising)
        amps += cableFarad * slewVoltsPerSecond;
    else if (state() == HighVoltageState::Falling)
        amps -= cableFarad * slewVoltsPerSecond;
    return amps * 1e6;
}

HighVoltageState HighVoltage::state() const
{
    if (present < wanted())
        return HighVoltageState::Rising;
    if (present > wanted())
        return HighVoltageState::Falling;
    return enabled ? HighVoltageState::On : HighVoltageState::Off;
}

} // namespace kora::simulation
