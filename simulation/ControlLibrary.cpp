#include "simulation/ControlLibrary.h"

#include "simulation/Accounts.h"
#include "simulation/Installation.h"
#include "simulation/PowerOn.h"

#include <algorithm>
#include <cmath>

namespace kora::simulation {

namespace {

constexpr int success = 0;
constexpr int failure = -1;

int resultOf(bool done)
{
    return done ? success : failure;
}

bool isLoop(int controller)
{
    return controller >= 0 && controller < FeedbackLoops::count;
}

bool isBpm(int bpm)
{
    return bpm == 0 || bpm == 1;
}

/// Index of the loop behind a pair of band and axis, -1 when there is none.
int loopOf(int band, int axis)
{
    return (band == 0 || band == 1) && (axis == 0 || axis == 1) ? 2 * axis + band : -1;
}

template <typename Value>
void store(Value* destination, Value value)
{
    if (destination)
        *destination = value;
}

template <typename Act>
int onLoop(Installation& installation, const char* name, int loop, Act act)
{
    return installation.operate(name,
                                [&](Plant& plant) { return isLoop(loop) ? resultOf(act(plant.loops())) : failure; });
}

template <typename Act>
int onBpm(Installation& installation, const char* name, int bpm, Act act)
{
    return installation.operate(name, [&](Plant& plant) { return isBpm(bpm) ? resultOf(act(plant)) : failure; });
}

} // namespace

int ControlLibrary::setFBenable(unsigned char enable)
{
    return installation.operate(__func__, [&](Plant& plant) {
        plant.loops().enable(enable != 0);
        return success;
    });
}

int ControlLibrary::setCtrlReset()
{
    return installation.operate(__func__, [](Plant& plant) {
        plant.loops().resetControllers();
        return success;
    });
}

int ControlLibrary::setPIDconf(signed char conf)
{
    return installation.operate(__func__, [&](Plant& plant) { return resultOf(plant.loops().setConfiguration(conf)); });
}

int ControlLibrary::getPIDconf(signed char* conf)
{
    return installation.operate(__func__, [&](Plant& plant) {
        store(conf, static_cast<signed char>(plant.loops().configuration()));
        return success;
    });
}

int ControlLibrary::setPIDparams(signed char controller, double Kp, double Ki, double Kd, double emin, double Imax,
                                 double Omin, double Omax, double Ogain)
{
    return onLoop(installation, __func__, controller, [&](FeedbackLoops& loops) {
        return loops.controller(controller).setGains({Kp, Ki, Kd, emin, Imax, Omin, Omax, Ogain});
    });
}

int ControlLibrary::setOffset(double Xlf, double Xhf, double Ylf, double Yhf)
{
    const double offsets[] = {Xlf, Xhf, Ylf, Yhf};
    return installation.operate(__func__, [&](Plant& plant) {
        if (!std::all_of(std::begin(offsets), std::end(offsets), [](double volts) { return std::isfinite(volts); }))
            return failure;
        for (int loop = 0; loop < FeedbackLoops::count; ++loop)
            plant.loops().controller(loop).setOffset(offsets[loop]);
        return success;
    });
}

int ControlLibrary::setWindAvg(int controller, int samples)
{
    return onLoop(installation, __func__, controller,
                  [&](FeedbackLoops& loops) { return loops.controller(controller).setWindow(samples); });
}

int ControlLibrary::setSetpoint(int controller, double value)
{
    return onLoop(installation, __func__, controller,
                  [&](FeedbackLoops& loops) { return loops.controller(controller).setSetpoint(value); });
}

int ControlLibrary::getSetpoint(int controller, double* value)
{
    return onLoop(installation, __func__, controller, [&](FeedbackLoops& loops) {
        store(value, loops.controller(controller).setpoint());
        return true;
    });
}

int ControlLibrary::setPIDoutSel(unsigned char Xlf, unsigned char Xhf, unsigned char Ylf, unsigned char Yhf)
{
    const int outputs[] = {Xlf, Xhf, Ylf, Yhf};
    return installation.operate(__func__, [&](Plant& plant) { return resultOf(plant.loops().setOutputs(outputs)); });
}

int ControlLibrary::getPIDoutSel(unsigned char* Xlf, unsigned char* Xhf, unsigned char* Ylf, unsigned char* Yhf)
{
    return installation.operate(__func__, [&](Plant& plant) {
        const int* outputs = plant.loops().outputs();
        unsigned char* const places[] = {Xlf, Xhf, Ylf, Yhf};
        for (int loop = 0; loop < FeedbackLoops::count; ++loop)
            store(places[loop], static_cast<unsigned char>(outputs[loop]));
        return success;
    });
}

int ControlLibrary::setBPMselector(int Xlf, int Xhf, int Ylf, int Yhf)
{
    const int bpms[] = {Xlf, Xhf, Ylf, Yhf};
    return installation.operate(__func__, [&](Plant& plant) { return resultOf(plant.loops().setSelectors(bpms)); });
}

int ControlLibrary::getBPMselector(int* Xlf, int* Xhf, int* Ylf, int* Yhf)
{
    return installation.operate(__func__, [&](Plant& plant) {
        const int* bpms = plant.loops().selectors();
        int* const places[] = {Xlf, Xhf, Ylf, Yhf};
        for (int loop = 0; loop < FeedbackLoops::count; ++loop)
            store(places[loop], bpms[loop]);
        return success;
    });
}

int ControlLibrary::setOutputMux(unsigned char source)
{
    return installation.operate(__func__, [&](Plant& plant) { return resultOf(plant.outputs().setSource(source)); });
}

int ControlLibrary::getOutputMux(unsigned char* source)
{
    return installation.operate(__func__, [&](Plant& plant) {
        store(source, static_cast<unsigned char>(plant.outputs().source()));
        return success;
    });
}

int ControlLibrary::setBPMorient(unsigned char bpm, unsigned char orientation)
{
    return onBpm(installation, __func__, bpm,
                 [&](Plant& plant) { return plant.monitor(bpm).setOrientation(orientation); });
}

int ControlLibrary::setBPMscale(int bpm, double scaleX, double scaleY)
{
    return onBpm(installation, __func__, bpm,
                 [&](Plant& plant) { return plant.monitor(bpm).setScale(scaleX, scaleY); });
}

int ControlLibrary::setBPMoffset(int bpm, double offsetX, double offsetY)
{
    return onBpm(installation, __func__, bpm,
                 [&](Plant& plant) { return plant.monitor(bpm).setOffset(offsetX, offsetY); });
}

int ControlLibrary::setCrossBar(unsigned char bpm, unsigned char top, unsigned char right, unsigned char bottom,
                                unsigned char left)
{
    return onBpm(installation, __func__, bpm,
                 [&](Plant& plant) { return plant.monitor(bpm).crossbar().connect(top, right, bottom, left); });
}

int ControlLibrary::setROCenable(unsigned char x1, unsigned char y1, unsigned char beamOff1, unsigned char x2,
                                 unsigned char y2, unsigned char beamOff2)
{
    const unsigned char enables[] = {x1, y1, beamOff1, x2, y2, beamOff2};
    return installation.operate(__func__, [&](Plant& plant) {
        for (int check = 0; check < 6; ++check)
            plant.interlock().enable(check, enables[check] != 0);
        return success;
    });
}

int ControlLibrary::getROCenable(unsigned char* x1, unsigned char* y1, unsigned char* beamOff1, unsigned char* x2,
                                 unsigned char* y2, unsigned char* beamOff2)
{
    unsigned char* const places[] = {x1, y1, beamOff1, x2, y2, beamOff2};
    return installation.operate(__func__, [&](Plant& plant) {
        for (int check = 0; check < 6; ++check)
            store(places[check], static_cast<unsigned char>(plant.interlock().isEnabled(check)));
        return success;
    });
}

int ControlLibrary::setROClimits(int limit, double low, double high)
{
    return installation.operate(__func__,
                                [&](Plant& plant) { return resultOf(plant.interlock().setLimits(limit, low, high)); });
}

int ControlLibrary::ionbarHVenable(int enable, unsigned char amplifier)
{
    return onBpm(installation, __func__, amplifier, [&](Plant& plant) {
        plant.amplifier(amplifier).highVoltage().enable(enable != 0);
        return plant.ports().holds(amplifier, SfpPorts::AmplifierClass);
    });
}

int ControlLibrary::ionbarHVSetVoltage(unsigned char amplifier, float volts)
{
    return onBpm(installation, __func__, amplifier, [&](Plant& plant) {
        // Without an amplifier the limit is 0; the comparison also refuses what is not a number.
        if (!(volts >= 0 && double(volts) <= plant.ports().biasLimit(amplifier)))
            return false;
        plant.amplifier(amplifier).highVoltage().setTarget(double(volts));
        return true;
    });
}

int ControlLibrary::ionbarSetRange(int range, unsigned char amplifier)
{
    return onBpm(installation, __func__, amplifier,
                 [&](Plant& plant) { return plant.amplifier(amplifier).setRange(range); });
}

int ControlLibrary::setDisplayFreq(int hertz, unsigned char filterEnable)
{
    return installation.operate(
        __func__, [&](Plant& plant) { return resultOf(plant.stream().setRate(hertz, filterEnable != 0)); });
}

int ControlLibrary::getDisplayFreq(int* hertz, unsigned char* filterEnable)
{
    return installation.operate(__func__, [&](Plant& plant) {
        store(hertz, plant.stream().rate());
        store(filterEnable, static_cast<unsigned char>(plant.stream().isFiltered()));
        return success;
    });
}

int ControlLibrary::getBuffer(void* destination, int samples)
{
    const int fault = installation.operate(__func__, [](Plant&) { return success; });
    if (fault != success || !destination || samples < 0)
        return failure;
    return installation.newestRecords(destination, samples);
}

int ControlLibrary::setFiltControl(signed char band, signed char axis, int fullBand)
{
    const int loop = loopOf(band, axis);
    return onLoop(installation, __func__, loop, [&](FeedbackLoops& loops) {
        loops.filter(loop).bypass(fullBand != 0);
        return true;
    });
}

int ControlLibrary::setFiltCoef(signed char band, signed char axis, int kind, int index, double value)
{
    const int loop = loopOf(band, axis);
    return onLoop(installation, __func__, loop,
                  [&](FeedbackLoops& loops) { return loops.filter(loop).write(kind, index, value); });
}

int ControlLibrary::commitFiltCoef(signed char band, signed char axis)
{
    const int loop = loopOf(band, axis);
    return onLoop(installation, __func__, loop, [&](FeedbackLoops& loops) {
        loops.filter(loop).commit();
        return true;
    });
}

int ControlLibrary::funcGenConfig(float amplitudes[4], float offsets[4], float frequency)
{
    return installation.operate(__func__, [&](Plant& plant) {
        return resultOf(amplitudes && offsets && plant.generator().configure(amplitudes, offsets, frequency));
    });
}

int ControlLibrary::funcGenEnable(signed char mode)
{
    return installation.operate(__func__, [&](Plant& plant) { return resultOf(plant.generator().enable(mode)); });
}

PID_Status_Type ControlLibrary::getPIDstatus()
{
    // Data, never a negative code: a failing read shows the feedback as off.
    const int status = installation.operate(__func__, [](Plant& plant) { return int(plant.loops().status()); });
    return status < 0 ? PidStatusOff : PID_Status_Type(status);
}

int ControlLibrary::getBPMStats(BPMStats* stats)
{
    const int fault = installation.operate(__func__, [](Plant&) { return success; });
    if (fault != success || !stats)
        return failure;
    *stats = installation.statistics();
    return success;
}

int ControlLibrary::getSFPinfo(int port, std::uint16_t* deviceId, std::uint32_t* hwVersion, char* version,
                               std::uint32_t* serialNumber)
{
    return installation.operate(__func__, [&](Plant& plant) {
        if (port < 0 || port >= SfpPorts::count)
            return failure;
        const SFPinfo& info = plant.ports().info(port);
        store(deviceId, info.deviceId);
        store(hwVersion, info.hwVersion);
        store(serialNumber, info.serialNumber);
        if (version)
            std::copy_n(info.version, sizeof info.version, version);
        return success;
    });
}

int ControlLibrary::getSystemVersion(std::uint32_t* timestamp, std::uint32_t* swVersion, std::uint32_t* pidVersion)
{
    return installation.operate(__func__, [&](Plant&) {
        store(timestamp, powerOn::hardwareTimestamp);
        store(swVersion, powerOn::softwareVersion);
        store(pidVersion, powerOn::pidVersion);
        return success;
    });
}

int ControlLibrary::getLock(const char* user, const char* password)
{
    // Data, never a negative code: a failing check gives the lowest level.
    const int level = installation.operate(__func__, [&](Plant&) { return accountLevel(user, password); });
    return level < 0 ? 0 : level;
}
} // namespace kora::simulation
