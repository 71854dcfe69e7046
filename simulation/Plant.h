#pragma once

#include "simulation/beam/Actuator.h"
#include "simulation/beam/Beam.h"
#include "simulation/detectors/CurrentAmplifier.h"
#include "simulation/detectors/ElectrodeCables.h"
#include "simulation/outputs/OutputUnit.h"
#include "simulation/processor/DisplayStream.h"
#include "simulation/processor/FeedbackLoops.h"
#include "simulation/processor/SfpPorts.h"
#include "simulation/processor/Statistics.h"

namespace kora::simulation {

/// The installation's physics and electronics, advanced step by step. Knows neither clock nor threads.
///
/// What the electrodes would read is computed in the steps in which a loop, a record or the caller of run() looks at
/// it. That is one step in five and changes no number: all that has a memory, noise included, advances in each.
class Plant
{
public:
    /// Switched on, at rest, loops stopped. @param displayRate Hz
    explicit Plant(int displayRate);

    void run(std::int64_t steps);
    /// Since power-on.
    std::int64_t stepsDone() const { return steps; }

    Beam& beam() { return source; }
    /// Centre of the beam at BPM1, micrometres.
    BeamSample beamAtMonitor() const { return {positionX, positionY, flux}; }
    SfpPorts& ports() { return sfp; }
    ElectrodeCables& cables(int bpm) { return wiring[bpm]; }
    CurrentAmplifier& amplifier(int index) { return amplifiers[index]; }
    PositionMonitor& monitor(int bpm) { return monitors[bpm]; }
    Interlock& interlock() { return region; }
    FeedbackLoops& loops() { return feedback; }
    OutputUnit& outputs() { return outputUnit; }
    FunctionGenerator& generator() { return sine; }
    DisplayStream& stream() { return display; }
    const DisplayStream& stream() const { return display; }

    BPMStats statistics() const;
    AmplifierStatus amplifierStatus(int index) const;
    CurrentRecord currentRecord(int index) const;

private:
    void applyPowerOn();
    void step();
    int unseenSteps() const;
    void passUnseen(int count);
    void moveBeam();
    void readMonitors();
    PositionReading readEncoder(int bpm) const;
    void runLoops();
    void updateOutputs();
    void fillRecord(DisplayRecord& record) const;

    SfpPorts sfp;
    Beam source;
    QuadrantDetector detector;
    ElectrodeCables wiring[2];
    CurrentAmplifier amplifiers[2];
    PositionMonitor monitors[2];
    Interlock region;
    FeedbackLoops feedback;
    FunctionGenerator sine;
    OutputUnit outputUnit;
    Actuator actuators[4];
    DisplayStream display;
    /// X, Y and intensity of each BPM.
    Statistics signalStatistics[2][3];

    double positionX = 0;
    double positionY = 0;
    double flux = 0;
    PositionReading readings[2];
    int stepsToLoop = 1;
    int currentLoopRate = 0;
    std::int64_t steps = 0;
};

} // namespace kora::simulation
