#pragma once

#include "hardware/koralink.h"

/// True while the loops run or wait for the beam; configuration changes are refused then.
constexpr bool pidIsRunning(int status)
{
    return status == PidStatusBeamOff || status == PidStatusOn;
}

/// What the operator reads, by status.
constexpr const char* pidStatusTexts[] = {"Feedback OFF", "FAULT: Out of ROC", "Beam OFF", "Feedback ON"};
