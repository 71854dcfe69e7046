#pragma once

#include "simulation/SimulationControl.h"

/// The members of SimulationControl that travel to a served installation as they are: X(result, name, parameters,
/// arguments). advance() travels in slices instead, by AcquisitionBoard::computeSteps.
// clang-format off
#define KORA_CONTROL_OPERATIONS(X) \
    X(void, useDrivenClock, (), ()) \
    X(void, useRealClock, (), ()) \
    X(double, time, (), ()) \
    X(void, setBeamOn, (bool on), (on)) \
    X(void, kick, (double xMicrometres, double yMicrometres), (xMicrometres, yMicrometres)) \
    X(void, setNoise, (double positionMicrometres, double currentAmps), (positionMicrometres, currentAmps)) \
    X(void, setVibration, (int line, double frequencyHz, double xMicrometres, double yMicrometres), \
      (line, frequencyHz, xMicrometres, yMicrometres)) \
    X(void, setDrift, (double amplitudeMicrometres, double periodSeconds, double walkMicrometres), \
      (amplitudeMicrometres, periodSeconds, walkMicrometres)) \
    X(void, quietBeam, (), ()) \
    X(void, plug, (int port, std::uint16_t deviceId), (port, deviceId)) \
    X(void, setDevicePresent, (const char* path, bool present), (path, present)) \
    X(bool, failFunction, (const char* name, int times), (name, times)) \
    X(void, truncateBlocks, (int missingRecords), (missingRecords)) \
    X(void, setGarbageBlocks, (bool garbage), (garbage)) \
    X(BeamPosition, beamPosition, (), ()) \
    X(double, outputVolts, (int output), (output)) \
    X(void, reset, (), ()) \
    X(InstallationState, state, (), ()) \
    X(bool, connectCables, (int bpm, const ElectrodeChannels& channels), (bpm, channels))
// clang-format on
