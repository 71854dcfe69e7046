#pragma once

#include "hardware/koralink.h"

#include <array>
#include <cstring>

/// The operations of the control library, in the order of its declarations: X(result, name, failure, parameters,
/// arguments). `failure` is what the program gets of an operation that cannot be carried out: a negative code, or of
/// those that return data the value that gives no right and shows nothing running. What differs from operation to
/// operation only by its name and its parameters is made from these rows: the exported functions, the way of a call to
/// a served installation and back, and their tests.
// clang-format off
#define KORA_OPERATIONS(X) \
    X(int, setFBenable, -1, (unsigned char enable), (enable)) \
    X(int, setCtrlReset, -1, (), ()) \
    X(int, setPIDconf, -1, (signed char conf), (conf)) \
    X(int, getPIDconf, -1, (signed char* conf), (conf)) \
    X(int, setPIDparams, -1, (signed char controller, double Kp, double Ki, double Kd, double emin, double Imax, \
      double Omin, double Omax, double Ogain), \
      (controller, Kp, Ki, Kd, emin, Imax, Omin, Omax, Ogain)) \
    X(int, setOffset, -1, (double Xlf, double Xhf, double Ylf, double Yhf), (Xlf, Xhf, Ylf, Yhf)) \
    X(int, setWindAvg, -1, (int controller, int samples), (controller, samples)) \
    X(int, setSetpoint, -1, (int controller, double value), (controller, value)) \
    X(int, getSetpoint, -1, (int controller, double* value), (controller, value)) \
    X(int, setPIDoutSel, -1, (unsigned char Xlf, unsigned char Xhf, unsigned char Ylf, unsigned char Yhf), \
      (Xlf, Xhf, Ylf, Yhf)) \
    X(int, getPIDoutSel, -1, (unsigned char* Xlf, unsigned char* Xhf, unsigned char* Ylf, unsigned char* Yhf), \
      (Xlf, Xhf, Ylf, Yhf)) \
    X(int, setBPMselector, -1, (int Xlf, int Xhf, int Ylf, int Yhf), (Xlf, Xhf, Ylf, Yhf)) \
    X(int, getBPMselector, -1, (int* Xlf, int* Xhf, int* Ylf, int* Yhf), (Xlf, Xhf, Ylf, Yhf)) \
    X(int, setOutputMux, -1, (unsigned char source), (source)) \
    X(int, getOutputMux, -1, (unsigned char* source), (source)) \
    X(int, setBPMorient, -1, (unsigned char bpm, unsigned char orientation), (bpm, orientation)) \
    X(int, setBPMscale, -1, (int bpm, double scaleX, double scaleY), (bpm, scaleX, scaleY)) \
    X(int, setBPMoffset, -1, (int bpm, double offsetX, double offsetY), (bpm, offsetX, offsetY)) \
    X(int, setCrossBar, -1, (unsigned char bpm, unsigned char top, unsigned char right, unsigned char bottom, \
      unsigned char left), \
      (bpm, top, right, bottom, left)) \
    X(int, setROCenable, -1, (unsigned char x1, unsigned char y1, unsigned char beamOff1, unsigned char x2, \
      unsigned char y2, unsigned char beamOff2), \
      (x1, y1, beamOff1, x2, y2, beamOff2)) \
    X(int, getROCenable, -1, (unsigned char* x1, unsigned char* y1, unsigned char* beamOff1, unsigned char* x2, \
      unsigned char* y2, unsigned char* beamOff2), \
      (x1, y1, beamOff1, x2, y2, beamOff2)) \
    X(int, setROClimits, -1, (int limit, double low, double high), (limit, low, high)) \
    X(int, ionbarHVenable, -1, (int enable, unsigned char amplifier), (enable, amplifier)) \
    X(int, ionbarHVSetVoltage, -1, (unsigned char amplifier, float volts), (amplifier, volts)) \
    X(int, ionbarSetRange, -1, (int range, unsigned char amplifier), (range, amplifier)) \
    X(int, setDisplayFreq, -1, (int hertz, unsigned char filterEnable), (hertz, filterEnable)) \
    X(int, getDisplayFreq, -1, (int* hertz, unsigned char* filterEnable), (hertz, filterEnable)) \
    X(int, getBuffer, -1, (void* destination, int samples), (destination, samples)) \
    X(int, setFiltControl, -1, (signed char band, signed char axis, int fullBand), (band, axis, fullBand)) \
    X(int, setFiltCoef, -1, (signed char band, signed char axis, int kind, int index, double value), \
      (band, axis, kind, index, value)) \
    X(int, commitFiltCoef, -1, (signed char band, signed char axis), (band, axis)) \
    X(int, funcGenConfig, -1, (float amplitudes[4], float offsets[4], float frequency), \
      (amplitudes, offsets, frequency)) \
    X(int, funcGenEnable, -1, (signed char mode), (mode)) \
    X(PID_Status_Type, getPIDstatus, PidStatusOff, (), ()) \
    X(int, getBPMStats, -1, (BPMStats* stats), (stats)) \
    X(int, getSFPinfo, -1, (int port, std::uint16_t* deviceId, std::uint32_t* hwVersion, char* version, \
      std::uint32_t* serialNumber), \
      (port, deviceId, hwVersion, version, serialNumber)) \
    X(int, getSystemVersion, -1, (std::uint32_t* timestamp, std::uint32_t* swVersion, std::uint32_t* pidVersion), \
      (timestamp, swVersion, pidVersion)) \
    X(int, getLock, 0, (const char* user, const char* password), (user, password))
// clang-format on

namespace kora::simulation {

#define KORA_NAME(result, name, failure, parameters, arguments) #name,
constexpr const char* operationNames[] = {KORA_OPERATIONS(KORA_NAME)};
#undef KORA_NAME
constexpr std::size_t operationCount = sizeof operationNames / sizeof operationNames[0];
static_assert(operationCount == 38);

inline bool isOperation(const char* name)
{
    for (const char* operation : operationNames)
        if (std::strcmp(name, operation) == 0)
            return true;
    return false;
}

} // namespace kora::simulation
