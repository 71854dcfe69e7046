// Stub of the control library for the linker: the 38 names under the soname libkoralink.so.1 and nothing behind
// them. Executables are linked against it, and the loader then finds the library of the host, or the simulated
// installation. It is neither run nor installed.

#define KORALINK_STUB(name)                                                                                            \
    extern "C" __attribute__((visibility("default"))) int name()                                                       \
    {                                                                                                                  \
        return -1;                                                                                                     \
    }

KORALINK_STUB(setFBenable)
KORALINK_STUB(setCtrlReset)
KORALINK_STUB(setPIDconf)
KORALINK_STUB(getPIDconf)
KORALINK_STUB(setPIDparams)
KORALINK_STUB(setOffset)
KORALINK_STUB(setWindAvg)
KORALINK_STUB(setSetpoint)
KORALINK_STUB(getSetpoint)
KORALINK_STUB(setPIDoutSel)
KORALINK_STUB(getPIDoutSel)
KORALINK_STUB(setBPMselector)
KORALINK_STUB(getBPMselector)
KORALINK_STUB(setOutputMux)
KORALINK_STUB(getOutputMux)
KORALINK_STUB(setBPMorient)
KORALINK_STUB(setBPMscale)
KORALINK_STUB(setBPMoffset)
KORALINK_STUB(setCrossBar)
KORALINK_STUB(setROCenable)
KORALINK_STUB(getROCenable)
KORALINK_STUB(setROClimits)
KORALINK_STUB(ionbarHVenable)
KORALINK_STUB(ionbarHVSetVoltage)
KORALINK_STUB(ionbarSetRange)
KORALINK_STUB(setDisplayFreq)
KORALINK_STUB(getDisplayFreq)
KORALINK_STUB(getBuffer)
KORALINK_STUB(setFiltControl)
KORALINK_STUB(setFiltCoef)
KORALINK_STUB(commitFiltCoef)
KORALINK_STUB(funcGenConfig)
KORALINK_STUB(funcGenEnable)
KORALINK_STUB(getPIDstatus)
KORALINK_STUB(getBPMStats)
KORALINK_STUB(getSFPinfo)
KORALINK_STUB(getSystemVersion)
KORALINK_STUB(getLock)
