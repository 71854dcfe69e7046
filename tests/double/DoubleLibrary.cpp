// The 38 operations of the control library, recorded and answered as scripted.

#include "double/DoubleInternals.h"

#include <algorithm>
#include <cstring>

using koralink_double::Double;

#define RECORDED_CALL(...)                                                                                             \
    Double& self = Double::instance();                                                                                 \
    const std::lock_guard<std::recursive_mutex> lock(self.mutex);                                                      \
    const int result = self.record(__VA_ARGS__);                                                                       \
    koralink_double::Answers& answers = self.answers;                                                                  \
    static_cast<void>(answers)

namespace {

std::string boundedText(const char* text)
{
    return std::string(text, ::strnlen(text, 32));
}

} // namespace

int setFBenable(unsigned char enable)
{
    RECORDED_CALL("setFBenable", {double(enable)});
    return result;
}

int setCtrlReset()
{
    RECORDED_CALL("setCtrlReset");
    return result;
}

int setPIDconf(signed char conf)
{
    RECORDED_CALL("setPIDconf", {double(conf)});
    if (result == 0)
        answers.pidConf = conf;
    return result;
}

int getPIDconf(signed char* conf)
{
    RECORDED_CALL("getPIDconf");
    if (result == 0)
        *conf = answers.pidConf;
    return result;
}

int setPIDparams(signed char controller, double Kp, double Ki, double Kd, double emin, double Imax, double Omin,
                 double Omax, double Ogain)
{
    RECORDED_CALL("setPIDparams", {double(controller), Kp, Ki, Kd, emin, Imax, Omin, Omax, Ogain});
    return result;
}

int setOffset(double Xlf, double Xhf, double Ylf, double Yhf)
{
    RECORDED_CALL("setOffset", {Xlf, Xhf, Ylf, Yhf});
    return result;
}

int setWindAvg(int controller, int samples)
{
    RECORDED_CALL("setWindAvg", {double(controller), double(samples)});
    return result;
}

int setSetpoint(int controller, double value)
{
    RECORDED_CALL("setSetpoint", {double(controller), value});
    if (result == 0)
        answers.setpoints[controller & 3] = value;
    return result;
}

int getSetpoint(int controller, double* value)
{
    RECORDED_CALL("getSetpoint", {double(controller), double(value != nullptr)});
    if (result == 0 && value)
        *value = answers.setpoints[controller & 3];
    return result;
}

int setPIDoutSel(unsigned char Xlf, unsigned char Xhf, unsigned char Ylf, unsigned char Yhf)
{
    RECORDED_CALL("setPIDoutSel", {double(Xlf), double(Xhf), double(Ylf), double(Yhf)});
    if (result == 0) {
        const unsigned char values[4] = {Xlf, Xhf, Ylf, Yhf};
        std::copy(values, values + 4, answers.outSel);
    }
    return result;
}

int getPIDoutSel(unsigned char* Xlf, unsigned char* Xhf, unsigned char* Ylf, unsigned char* Yhf)
{
    RECORDED_CALL("getPIDoutSel");
    if (result == 0) {
        *Xlf = answers.outSel[0];
        *Xhf = answers.outSel[1];
        *Ylf = answers.outSel[2];
        *Yhf = answers.outSel[3];
    }
    return result;
}

int setBPMselector(int Xlf, int Xhf, int Ylf, int Yhf)
{
    RECORDED_CALL("setBPMselector", {double(Xlf), double(Xhf), double(Ylf), double(Yhf)});
    if (result == 0) {
        const int values[4] = {Xlf, Xhf, Ylf, Yhf};
        std::copy(values, values + 4, answers.bpmSel);
    }
    return result;
}

int getBPMselector(int* Xlf, int* Xhf, int* Ylf, int* Yhf)
{
    RECORDED_CALL("getBPMselector");
    if (result == 0) {
        *Xlf = answers.bpmSel[0];
        *Xhf = answers.bpmSel[1];
        *Ylf = answers.bpmSel[2];
        *Yhf = answers.bpmSel[3];
    }
    return result;
}

int setOutputMux(unsigned char source)
{
    RECORDED_CALL("setOutputMux", {double(source)});
    if (result == 0)
        answers.outputMux = source;
    return result;
}

int getOutputMux(unsigned char* source)
{
    RECORDED_CALL("getOutputMux");
    if (result == 0)
        *source = answers.outputMux;
    return result;
}

int setBPMorient(unsigned char bpm, unsigned char orientation)
{
    RECORDED_CALL("setBPMorient", {double(bpm), double(orientation)});
    return result;
}

int setBPMscale(int bpm, double scaleX, double scaleY)
{
    RECORDED_CALL("setBPMscale", {double(bpm), scaleX, scaleY});
    return result;
}

int setBPMoffset(int bpm, double offsetX, double offsetY)
{
    RECORDED_CALL("setBPMoffset", {double(bpm), offsetX, offsetY});
    return result;
}

int setCrossBar(unsigned char bpm, unsigned char top, unsigned char right, unsigned char bottom, unsigned char left)
{
    RECORDED_CALL("setCrossBar", {double(bpm), double(top), double(right), double(bottom), double(left)});
    return result;
}

int setROCenable(unsigned char x1, unsigned char y1, unsigned char beamOff1, unsigned char x2, unsigned char y2,
                 unsigned char beamOff2)
{
    RECORDED_CALL("setROCenable", {double(x1), double(y1), double(beamOff1), double(x2), double(y2), double(beamOff2)});
    if (result == 0) {
        const unsigned char values[6] = {x1, y1, beamOff1, x2, y2, beamOff2};
        std::copy(values, values + 6, answers.rocEnable);
    }
    return result;
}

int getROCenable(unsigned char* x1, unsigned char* y1, unsigned char* beamOff1, unsigned char* x2, unsigned char* y2,
                 unsigned char* beamOff2)
{
    RECORDED_CALL("getROCenable");
    if (result == 0) {
        unsigned char* const targets[6] = {x1, y1, beamOff1, x2, y2, beamOff2};
        for (int i = 0; i < 6; ++i)
            *targets[i] = answers.rocEnable[i];
    }
    return result;
}

int setROClimits(int limit, double low, double high)
{
    RECORDED_CALL("setROClimits", {double(limit), low, high});
    return result;
}

int ionbarHVenable(int enable, unsigned char amplifier)
{
    RECORDED_CALL("ionbarHVenable", {double(enable), double(amplifier)});
    return result;
}

int ionbarHVSetVoltage(unsigned char amplifier, float volts)
{
    RECORDED_CALL("ionbarHVSetVoltage", {double(amplifier), double(volts)});
    return result;
}

int ionbarSetRange(int range, unsigned char amplifier)
{
    RECORDED_CALL("ionbarSetRange", {double(range), double(amplifier)});
    return result;
}

int setDisplayFreq(int hertz, unsigned char filterEnable)
{
    RECORDED_CALL("setDisplayFreq", {double(hertz), double(filterEnable)});
    if (result == 0) {
        answers.displayFreq = hertz;
        answers.displayFilter = filterEnable;
    }
    return result;
}

int getDisplayFreq(int* hertz, unsigned char* filterEnable)
{
    RECORDED_CALL("getDisplayFreq");
    if (result == 0) {
        *hertz = answers.displayFreq;
        *filterEnable = answers.displayFilter;
    }
    return result;
}

int getBuffer(void* destination, int samples)
{
    RECORDED_CALL("getBuffer", {double(samples)});
    if (result < 0)
        return result;
    const int delivered = answers.deliveredRecords < 0 ? samples : std::min(samples, answers.deliveredRecords);
    auto* block = static_cast<DisplayRecord*>(destination);
    std::fill(block, block + delivered, DisplayRecord());
    if (answers.fillBlock)
        answers.fillBlock(block, delivered);
    return delivered;
}

int setFiltControl(signed char band, signed char axis, int fullBand)
{
    RECORDED_CALL("setFiltControl", {double(band), double(axis), double(fullBand)});
    return result;
}

int setFiltCoef(signed char band, signed char axis, int kind, int index, double value)
{
    RECORDED_CALL("setFiltCoef", {double(band), double(axis), double(kind), double(index), value});
    return result;
}

int commitFiltCoef(signed char band, signed char axis)
{
    RECORDED_CALL("commitFiltCoef", {double(band), double(axis)});
    return result;
}

int funcGenConfig(float amplitudes[4], float offsets[4], float frequency)
{
    RECORDED_CALL("funcGenConfig", {amplitudes[0], amplitudes[1], amplitudes[2], amplitudes[3], offsets[0], offsets[1],
                                    offsets[2], offsets[3], frequency});
    return result;
}

int funcGenEnable(signed char mode)
{
    RECORDED_CALL("funcGenEnable", {double(mode)});
    return result;
}

PID_Status_Type getPIDstatus()
{
    RECORDED_CALL("getPIDstatus");
    static_cast<void>(result);
    return answers.pidStatus;
}

int getBPMStats(BPMStats* stats)
{
    RECORDED_CALL("getBPMStats");
    if (result == 0)
        *stats = answers.stats;
    return result;
}

int getSFPinfo(int port, std::uint16_t* deviceId, std::uint32_t* hwVersion, char* version, std::uint32_t* serialNumber)
{
    RECORDED_CALL("getSFPinfo", {double(port)});
    if (result == 0) {
        const SFPinfo& info = answers.sfp[port & 3];
        *deviceId = info.deviceId;
        *hwVersion = info.hwVersion;
        std::memcpy(version, info.version, sizeof info.version);
        *serialNumber = info.serialNumber;
    }
    return result;
}

int getSystemVersion(std::uint32_t* timestamp, std::uint32_t* swVersion, std::uint32_t* pidVersion)
{
    RECORDED_CALL("getSystemVersion");
    if (result == 0) {
        *timestamp = answers.versions[0];
        *swVersion = answers.versions[1];
        *pidVersion = answers.versions[2];
    }
    return result;
}

int getLock(const char* user, const char* password)
{
    const std::string userText = boundedText(user);
    const std::string passwordText = boundedText(password);
    RECORDED_CALL("getLock", {}, {userText, passwordText});
    static_cast<void>(result);
    if (answers.lock)
        return answers.lock(userText, passwordText);
    const char* const names[3] = {"cruise", "user", "admin"};
    for (int level = 0; level < 3; ++level) {
        if (userText == names[level] && passwordText == userText)
            return level;
    }
    return userText == "cruise" ? 1 : 0;
}
