#include "simulation/Plant.h"

#include "simulation/PowerOn.h"
#include "simulation/Rates.h"

#include <algorithm>
#include <cmath>

namespace kora::simulation {

namespace {

/// Counts of an encoder box per unit of raw position: a signed 32-bit number spans -1 to 1.
constexpr double encoderCounts = 2147483648.0;

/// Share of the flux that one tuning output lets through at this voltage.
double tuning(double volts)
{
    const double distance = (volts - powerOn::tuningPeak) / powerOn::tuningWidth;
    return std::exp(-0.5 * distance * distance);
}

} // namespace

Plant::Plant(int displayRate)
    : source(1),
      detector(powerOn::orientation, powerOn::beamSigma), amplifiers{CurrentAmplifier(2), CurrentAmplifier(3)},
      outputUnit(powerOn::restVolts), actuators{Actuator(powerOn::actuators[0], powerOn::restVolts),
                                                Actuator(powerOn::actuators[1], powerOn::restVolts),
                                                Actuator(powerOn::actuators[2], powerOn::restVolts),
                                                Actuator(powerOn::actuators[3], powerOn::restVolts)},
      display(displayRate)
{
    applyPowerOn();
}

void Plant::applyPowerOn()
{
    for (int port = 0; port < SfpPorts::count; ++port)
        sfp.plug(port, powerOn::devices[port]);
    for (int bpm = 0; bpm < 2; ++bpm) {
        monitors[bpm].setOrientation(powerOn::orientation);
        monitors[bpm].setScale(powerOn::scale, powerOn::scale);
        const double reach = powerOn::regionOfInterest * powerOn::regionOfConfidence / powerOn::scale;
        region.setLimits(3 * bpm, 0, reach);
        region.setLimits(3 * bpm + 1, 0, reach);
        region.setLimits(3 * bpm + 2, 0, powerOn::beamOffAmps);
    }
    feedback.setConfiguration(powerOn::configuration);
    for (int loop = 0; loop < FeedbackLoops::count; ++loop) {
        const bool isHigh = loop % 2 == 1;
        PidController& controller = feedback.controller(loop);
        controller.setGains(isHigh ? powerOn::highFrequencyGains : powerOn::lowFrequencyGains);
        controller.setOffset(powerOn::restVolts);
        controller.setWindow(int(std::lround(loopRate / powerOn::loopFrequency)));
        PositionFilter& filter = feedback.filter(loop);
        for (int kind = 0; kind < 2; ++kind)
            for (int k = 0; k < 5; ++k)
                filter.write(kind, k, isHigh ? powerOn::bandPass[kind][k] : powerOn::lowPass[kind][k]);
        filter.commit();
        filter.bypass(!isHigh);
    }
}

void Plant::run(std::int64_t count)
{
    while (count > 0) {
        const auto unseen = int(std::min<std::int64_t>(unseenSteps(), count - 1));
        if (unseen > 0)
            passUnseen(unseen);
        step();
        count -= unseen + 1;
    }
}

/// Steps ahead in which neither a loop nor a record takes the readings. With a range that follows the currents, a
/// record that is a mean or a sine on an output each step counts.
int Plant::unseenSteps() const
{
    if (sine.isRunning() || display.takesEveryStep() || amplifiers[0].isAutomatic() || amplifiers[1].isAutomatic())
        return 0;
    return std::min(stepsToLoop, display.stepsToRecord()) - 1;
}

/// What step() does, without the readings: what has a memory goes on, the rest is computed when it is looked at.
void Plant::passUnseen(int count)
{
    // Commands since the last step act; between two ticks of the loops nothing else moves the outputs.
    updateOutputs();
    source.skip(count);
    for (int bpm = 0; bpm < 2; ++bpm)
        if (sfp.holds(bpm, SfpPorts::AmplifierClass))
            amplifiers[bpm].skip(count);
    display.pass(count);
    for (std::size_t i = 0; i < 4; ++i)
        actuators[i].hold(outputUnit.volts()[i], count);
    stepsToLoop -= count;
    steps += count;
}

void Plant::step()
{
    moveBeam();
    readMonitors();
    if (--stepsToLoop == 0)
        runLoops();
    updateOutputs();
    display.step([this](DisplayRecord& record) { fillRecord(record); });
    sine.step();
    for (std::size_t i = 0; i < 4; ++i)
        actuators[i].hold(outputUnit.volts()[i], 1);
    ++steps;
}

void Plant::moveBeam()
{
    const BeamSample free = source.next();
    positionX = free.x + actuators[0].displacement() + actuators[1].displacement();
    positionY = free.y + actuators[2].displacement() + actuators[3].displacement();
    flux = free.flux * tuning(actuators[0].settledVolts()) * tuning(actuators[1].settledVolts());
}

void Plant::readMonitors()
{
    for (int bpm = 0; bpm < 2; ++bpm) {
        if (sfp.holds(bpm, SfpPorts::AmplifierClass)) {
            FourValues electrodes = detector.shares(positionX * powerOn::lever[bpm], positionY * powerOn::lever[bpm]);
            for (double& current : electrodes)
                current *= flux * powerOn::totalCurrent;
            readings[bpm] = monitors[bpm].evaluate(amplifiers[bpm].measure(wiring[bpm].carry(electrodes)));
        } else {
            amplifiers[bpm].measureNothing();
            readings[bpm] = readEncoder(bpm);
        }
    }
}

PositionReading Plant::readEncoder(int bpm) const
{
    if (!sfp.holds(bpm, SfpPorts::EncoderClass))
        return {};
    const auto counted = [bpm](double micrometres) {
        return std::nearbyint(micrometres * powerOn::lever[bpm] / powerOn::scale * encoderCounts) / encoderCounts;
    };
    return monitors[bpm].evaluatePosition(counted(positionX), counted(positionY));
}

void Plant::runLoops()
{
    const int rate = sfp.holdsAnywhere(SfpPorts::EncoderClass) ? encoderLoopRate : loopRate;
    stepsToLoop = physicsRate / rate;
    if (rate != currentLoopRate) {
        currentLoopRate = rate;
        for (auto& bpm : signalStatistics)
            for (Statistics& signal : bpm)
                signal.start(rate);
    }
    const double period = 1.0 / rate;
    bool hasIntensity[2];
    for (int bpm = 0; bpm < 2; ++bpm) {
        hasIntensity[bpm] = !sfp.holds(bpm, SfpPorts::EncoderClass);
        signalStatistics[bpm][0].add(readings[bpm].x);
        signalStatistics[bpm][1].add(readings[bpm].y);
        signalStatistics[bpm][2].add(readings[bpm].intensity);
        amplifiers[bpm].advanceBias(period);
    }
    feedback.tick(readings, monitors, region.judge(readings, hasIntensity), period);
}

void Plant::updateOutputs()
{
    if (sfp.holdsAnywhere(SfpPorts::OutputClass))
        outputUnit.update(feedback, sine);
    else
        outputUnit.updateUnplugged();
}

void Plant::fillRecord(DisplayRecord& record) const
{
    record = DisplayRecord{};
    record.pos1X = readings[0].x;
    record.pos1Y = readings[0].y;
    record.int1 = readings[0].intensity;
    record.pos2X = readings[1].x;
    record.pos2Y = readings[1].y;
    record.int2 = readings[1].intensity;
    record.funcGenRefA = sine.referenceA();
    record.funcGenRefB = sine.referenceB();
    std::copy_n(outputUnit.volts(), 4, record.dac);
    record.xLf = feedback.path(0);
    record.xHf = feedback.path(1);
    record.yLf = feedback.path(2);
    record.yHf = feedback.path(3);
    std::copy_n(amplifiers[0].amps().begin(), 4, record.cur1);
    std::copy_n(amplifiers[1].amps().begin(), 4, record.cur2);
}

BPMStats Plant::statistics() const
{
    BPMStats stats;
    stats.reserved = std::uint64_t(steps);
    for (int bpm = 0; bpm < 2; ++bpm) {
        const Statistics& x = signalStatistics[bpm][0];
        const Statistics& y = signalStatistics[bpm][1];
        const Statistics& i0 = signalStatistics[bpm][2];
        stats.bpm[bpm] = {x.mean(),  x.deviation(),  x.filteredDeviation(),
                          y.mean(),  y.deviation(),  y.filteredDeviation(),
                          i0.mean(), i0.deviation(), i0.filteredDeviation()};
    }
    return stats;
}

AmplifierStatus Plant::amplifierStatus(int index) const
{
    AmplifierStatus status = {};
    const CurrentAmplifier& amplifier = amplifiers[index];
    const HighVoltage& bias = amplifier.highVoltage();
    const double sign = sfp.biasSign(index);
    status.setField(12, float(sign * bias.microamps()));
    status.setField(16, float(sign * bias.volts()));
    status.setField(20, std::uint32_t(bias.state()));
    for (std::size_t channel = 0; channel < 4; ++channel)
        status.setField(28 + 8 * (3 - channel), amplifier.amps()[channel]);
    return status;
}

CurrentRecord Plant::currentRecord(int index) const
{
    CurrentRecord record;
    for (std::size_t channel = 0; channel < 4; ++channel)
        record.amps[3 - channel] = amplifiers[index].amps()[channel];
    return record;
}

} // namespace kora::simulation
