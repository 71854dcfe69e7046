// The 38 operations of the control library, on the installation of this process.

#include "hardware/koralink.h"

#include "simulation/Accounts.h"
#include "simulation/Installation.h"
#include "simulation/PowerOn.h"

#include <algorithm>
#include <cmath>

using namespace kora::simulation;

#define KORALINK_EXPORT __attribute__((visibility("default")))

extern "C" {
/// Rate of the display stream at power-on, Hz. The program defines and exports it; left undefined here, so that a
/// program without it does not start.
extern int SAMP_FREQ;
}

namespace kora::simulation {

Installation& installation()
{
    static const MonotonicClock clock;
    static Installation* const one = new Installation(clock, SAMP_FREQ);
    return *one;
}

} // namespace kora::simulation

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
int onLoop(const char* name, int loop, Act act)
{
    return installation().operate(name,
                                  [&](Plant& plant) { return isLoop(loop) ? resultOf(act(plant.loops())) : failure; });
}

template <typename Act>
int onBpm(const char* name, int bpm, Act act)
{
    return installation().operate(name, [&](Plant& plant) { return isBpm(bpm) ? resultOf(act(plant)) : failure; });
}

} // namespace

extern "C" {

KORALINK_EXPORT SimulationControl* kora_simulation_control()
{
    return &installation();
}

KORALINK_EXPORT int setFBenable(unsigned char enable)
{
    return installation().operate(__func__, [&](Plant& plant) {
        plant.loops().enable(enable != 0);
        return success;
    });
}

KORALINK_EXPORT int setCtrlReset()
{
    return installation().operate(__func__, [](Plant& plant) {
        plant.loops().resetControllers();
        return success;
    });
}

KORALINK_EXPORT int setPIDconf(signed char conf)
{
    return installation().operate(__func__,
                                  [&](Plant& plant) { return resultOf(plant.loops().setConfiguration(conf)); });
}

KORALINK_EXPORT int getPIDconf(signed char* conf)
{
    return installation().operate(__func__, [&](Plant& plant) {
        store(conf, static_cast<signed char>(plant.loops().configuration()));
        return success;
    });
}

KORALINK_EXPORT int setPIDparams(signed char controller, double Kp, double Ki, double Kd, double emin, double Imax,
                                 double Omin, double Omax, double Ogain)
{
    return onLoop(__func__, controller, [&](FeedbackLoops& loops) {
        return loops.controller(controller).setGains({Kp, Ki, Kd, emin, Imax, Omin, Omax, Ogain});
    });
}

KORALINK_EXPORT int setOffset(double Xlf, double Xhf, double Ylf, double Yhf)
{
    const double offsets[] = {Xlf, Xhf, Ylf, Yhf};
    return installation().operate(__func__, [&](Plant& plant) {
        if (!std::all_of(std::begin(offsets), std::end(offsets), [](double volts) { return std::isfinite(volts); }))
            return failure;
        for (int loop = 0; loop < FeedbackLoops::count; ++loop)
            plant.loops().controller(loop).setOffset(offsets[loop]);
        return success;
    });
}

KORALINK_EXPORT int setWindAvg(int controller, int samples)
{
    return onLoop(__func__, controller,
                  [&](FeedbackLoops& loops) { return loops.controller(controller).setWindow(samples); });
}

KORALINK_EXPORT int setSetpoint(int controller, double value)
{
    return onLoop(__func__, controller,
                  [&](FeedbackLoops& loops) { return loops.controller(controller).setSetpoint(value); });
}

KORALINK_EXPORT int getSetpoint(int controller, double* value)
{
    return onLoop(__func__, controller, [&](FeedbackLoops& loops) {
        store(value, loops.controller(controller).setpoint());
        return true;
    });
}

KORALINK_EXPORT int setPIDoutSel(unsigned char Xlf, unsigned char Xhf, unsigned char Ylf, unsigned char Yhf)
{
    const int outputs[] = {Xlf, Xhf, Ylf, Yhf};
    return installation().operate(__func__, [&](Plant& plant) { return resultOf(plant.loops().setOutputs(outputs)); });
}

KORALINK_EXPORT int getPIDoutSel(unsigned char* Xlf, unsigned char* Xhf, unsigned char* Ylf, unsigned char* Yhf)
{
    return installation().operate(__func__, [&](Plant& plant) {
        const int* outputs = plant.loops().outputs();
        unsigned char* const places[] = {Xlf, Xhf, Ylf, Yhf};
        for (int loop = 0; loop < FeedbackLoops::count; ++loop)
            store(places[loop], static_cast<unsigned char>(outputs[loop]));
        return success;
    });
}

KORALINK_EXPORT int setBPMselector(int Xlf, int Xhf, int Ylf, int Yhf)
{
    const int bpms[] = {Xlf, Xhf, Ylf, Yhf};
    return installation().operate(__func__, [&](Plant& plant) { return resultOf(plant.loops().setSelectors(bpms)); });
}

KORALINK_EXPORT int getBPMselector(int* Xlf, int* Xhf, int* Ylf, int* Yhf)
{
    return installation().operate(__func__, [&](Plant& plant) {
        const int* bpms = plant.loops().selectors();
        int* const places[] = {Xlf, Xhf, Ylf, Yhf};
        for (int loop = 0; loop < FeedbackLoops::count; ++loop)
            store(places[loop], bpms[loop]);
        return success;
    });
}

KORALINK_EXPORT int setOutputMux(unsigned char source)
{
    return installation().operate(__func__, [&](Plant& plant) { return resultOf(plant.outputs().setSource(source)); });
}

KORALINK_EXPORT int getOutputMux(unsigned char* source)
{
    return installation().operate(__func__, [&](Plant& plant) {
        store(source, static_cast<unsigned char>(plant.outputs().source()));
        return success;
    });
}

KORALINK_EXPORT int setBPMorient(unsigned char bpm, unsigned char orientation)
{
    return onBpm(__func__, bpm, [&](Plant& plant) { return plant.monitor(bpm).setOrientation(orientation); });
}

KORALINK_EXPORT int setBPMscale(int bpm, double scaleX, double scaleY)
{
    return onBpm(__func__, bpm, [&](Plant& plant) { return plant.monitor(bpm).setScale(scaleX, scaleY); });
}

KORALINK_EXPORT int setBPMoffset(int bpm, double offsetX, double offsetY)
{
    return onBpm(__func__, bpm, [&](Plant& plant) { return plant.monitor(bpm).setOffset(offsetX, offsetY); });
}

KORALINK_EXPORT int setCrossBar(unsigned char bpm, unsigned char top, unsigned char right, unsigned char bottom,
                                unsigned char left)
{
    return onBpm(__func__, bpm,
                 [&](Plant& plant) { return plant.monitor(bpm).crossbar().connect(top, right, bottom, left); });
}

KORALINK_EXPORT int setROCenable(unsigned char x1, unsigned char y1, unsigned char beamOff1, unsigned char x2,
                                 unsigned char y2, unsigned char beamOff2)
{
    const unsigned char enables[] = {x1, y1, beamOff1, x2, y2, beamOff2};
    return installation().operate(__func__, [&](Plant& plant) {
        for (int check = 0; check < 6; ++check)
            plant.interlock().enable(check, enables[check] != 0);
        return success;
    });
}

KORALINK_EXPORT int getROCenable(unsigned char* x1, unsigned char* y1, unsigned char* beamOff1, unsigned char* x2,
                                 unsigned char* y2, unsigned char* beamOff2)
{
    unsigned char* const places[] = {x1, y1, beamOff1, x2, y2, beamOff2};
    return installation().operate(__func__, [&](Plant& plant) {
        for (int check = 0; check < 6; ++check)
            store(places[check], static_cast<unsigned char>(plant.interlock().isEnabled(check)));
        return success;
    });
}

KORALINK_EXPORT int setROClimits(int limit, double low, double high)
{
    return installation().operate(
        __func__, [&](Plant& plant) { return resultOf(plant.interlock().setLimits(limit, low, high)); });
}

KORALINK_EXPORT int ionbarHVenable(int enable, unsigned char amplifier)
{
    return onBpm(__func__, amplifier, [&](Plant& plant) {
        plant.amplifier(amplifier).highVoltage().enable(enable != 0);
        return plant.ports().holds(amplifier, SfpPorts::AmplifierClass);
    });
}

KORALINK_EXPORT int ionbarHVSetVoltage(unsigned char amplifier, float volts)
{
    return onBpm(__func__, amplifier, [&](Plant& plant) {
        // Without an amplifier the limit is 0; the comparison also refuses what is not a number.
        if (!(volts >= 0 && double(volts) <= plant.ports().biasLimit(amplifier)))
            return false;
        plant.amplifier(amplifier).highVoltage().setTarget(double(volts));
        return true;
    });
}

KORALINK_EXPORT int ionbarSetRange(int range, unsigned char amplifier)
{
    return onBpm(__func__, amplifier, [&](Plant& plant) { return plant.amplifier(amplifier).setRange(range); });
}

KORALINK_EXPORT int setDisplayFreq(int hertz, unsigned char filterEnable)
{
    return installation().operate(
        __func__, [&](Plant& plant) { return resultOf(plant.stream().setRate(hertz, filterEnable != 0)); });
}

KORALINK_EXPORT int getDisplayFreq(int* hertz, unsigned char* filterEnable)
{
    return installation().operate(__func__, [&](Plant& plant) {
        store(hertz, plant.stream().rate());
        store(filterEnable, static_cast<unsigned char>(plant.stream().isFiltered()));
        return success;
    });
}

KORALINK_EXPORT int getBuffer(void* destination, int samples)
{
    const int fault = installation().operate(__func__, [](Plant&) { return success; });
    if (fault != success || !destination || samples < 0)
        return failure;
    return installation().newestRecords(destination, samples);
}

KORALINK_EXPORT int setFiltControl(signed char band, signed char axis, int fullBand)
{
    const int loop = loopOf(band, axis);
    return onLoop(__func__, loop, [&](FeedbackLoops& loops) {
        loops.filter(loop).bypass(fullBand != 0);
        return true;
    });
}

KORALINK_EXPORT int setFiltCoef(signed char band, signed char axis, int kind, int index, double value)
{
    const int loop = loopOf(band, axis);
    return onLoop(__func__, loop, [&](FeedbackLoops& loops) { return loops.filter(loop).write(kind, index, value); });
}

KORALINK_EXPORT int commitFiltCoef(signed char band, signed char axis)
{
    const int loop = loopOf(band, axis);
    return onLoop(__func__, loop, [&](FeedbackLoops& loops) {
        loops.filter(loop).commit();
        return true;
    });
}

KORALINK_EXPORT int funcGenConfig(float amplitudes[4], float offsets[4], float frequency)
{
    return installation().operate(__func__, [&](Plant& plant) {
        return resultOf(amplitudes && offsets && plant.generator().configure(amplitudes, offsets, frequency));
    });
}

KORALINK_EXPORT int funcGenEnable(signed char mode)
{
    return installation().operate(__func__, [&](Plant& plant) { return resultOf(plant.generator().enable(mode)); });
}

KORALINK_EXPORT PID_Status_Type getPIDstatus()
{
    // Data, never a negative code: a failing read shows the feedback as off.
    const int status = installation().operate(__func__, [](Plant& plant) { return int(plant.loops().status()); });
    return status < 0 ? PidStatusOff : PID_Status_Type(status);
}

KORALINK_EXPORT int getBPMStats(BPMStats* stats)
{
    const int fault = installation().operate(__func__, [](Plant&) { return success; });
    if (fault != success || !stats)
        return failure;
    *stats = installation().statistics();
    return success;
}

KORALINK_EXPORT int getSFPinfo(int port, std::uint16_t* deviceId, std::uint32_t* hwVersion, char* version,
                               std::uint32_t* serialNumber)
{
    return installation().operate(__func__, [&](Plant& plant) {
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

KORALINK_EXPORT int getSystemVersion(std::uint32_t* timestamp, std::uint32_t* swVersion, std::uint32_t* pidVersion)
{
    return installation().operate(__func__, [&](Plant&) {
        store(timestamp, powerOn::hardwareTimestamp);
        store(swVersion, powerOn::softwareVersion);
        store(pidVersion, powerOn::pidVersion);
        return success;
    });
}

KORALINK_EXPORT int getLock(const char* user, const char* password)
{
    // Data, never a negative code: a failing check gives the lowest level.
    const int level = installation().operate(__func__, [&](Plant&) { return accountLevel(user, password); });
    return level < 0 ? 0 : level;
}
}
