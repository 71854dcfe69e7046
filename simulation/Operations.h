#pragma once

#include <cstring>

namespace kora::simulation {

/// Names of the operations of the control library, in the order of its declarations.
constexpr const char* operationNames[] = {
    "setFBenable",      "setCtrlReset",   "setPIDconf",     "getPIDconf",   "setPIDparams",   "setOffset",
    "setWindAvg",       "setSetpoint",    "getSetpoint",    "setPIDoutSel", "getPIDoutSel",   "setBPMselector",
    "getBPMselector",   "setOutputMux",   "getOutputMux",   "setBPMorient", "setBPMscale",    "setBPMoffset",
    "setCrossBar",      "setROCenable",   "getROCenable",   "setROClimits", "ionbarHVenable", "ionbarHVSetVoltage",
    "ionbarSetRange",   "setDisplayFreq", "getDisplayFreq", "getBuffer",    "setFiltControl", "setFiltCoef",
    "commitFiltCoef",   "funcGenConfig",  "funcGenEnable",  "getPIDstatus", "getBPMStats",    "getSFPinfo",
    "getSystemVersion", "getLock"};
static_assert(sizeof operationNames / sizeof operationNames[0] == 38);

inline bool isOperation(const char* name)
{
    for (const char* operation : operationNames)
        if (std::strcmp(name, operation) == 0)
            return true;
    return false;
}

} // namespace kora::simulation
