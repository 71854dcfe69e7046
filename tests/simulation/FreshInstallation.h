#pragma once

#include "simulation/SimulationControl.h"

/// The installation of this process as it is switched on, under a clock that the test drives; null on any other control
/// library.
inline kora::simulation::SimulationControl* freshInstallation()
{
    kora::simulation::SimulationControl* const control = kora::simulation::findControl();
    if (control) {
        control->useDrivenClock();
        control->reset();
    }
    return control;
}
