#pragma once

#include "simulation/Control.h"

/// The installation of this process as it is switched on, under a clock that the test drives; null on any other control
/// library.
inline kora::simulation::Control* freshInstallation()
{
    kora::simulation::Control* const control = kora::simulation::findControl();
    if (control) {
        control->useDrivenClock();
        control->reset();
    }
    return control;
}
