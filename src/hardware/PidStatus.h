#pragma once

#include "hardware/koralink.h"

#include <QMetaType>

Q_DECLARE_METATYPE(PID_Status_Type)

/// True while the loops run or wait for the beam; configuration changes are refused then.
constexpr bool pidIsRunning(int status)
{
    return status == PidStatusBeamOff || status == PidStatusOn;
}
