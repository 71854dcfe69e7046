#include "hardware/MailboxComm.h"

#include "app/Globals.h"
#include "hardware/PidStatusMetaType.h"
#include "hardware/VersionText.h"
#include "logging/Log.h"

#include <QThread>
#include <QTimer>

namespace {

constexpr int pollIntervalMs = 1000;
constexpr int amplifierClass = 0x2100;
constexpr int encoderBoxClass = 0x2300;
constexpr int classMask = 0xff00;
constexpr int loopRateWithEncoderBox = 5000;
/// Source of the outputs while the loops drive them.
constexpr unsigned char outputsOfLoops = 1;

int warnIfFailed(int result, const char* text)
{
    if (result < 0)
        KORA_LOG_WARN << text;
    return result;
}

int deviceClass(const SFPinfo& port)
{
    return port.deviceId & classMask;
}

// Before main, so that a queued connection finds the name of the argument whoever makes it first.
void registerPidStatus()
{
    qRegisterMetaType<PID_Status_Type>("PID_Status_Type");
}

} // namespace

Q_CONSTRUCTOR_FUNCTION(registerPidStatus)

MailboxComm::MailboxComm(QObject* parent) : QObject(parent) {}

void MailboxComm::doSetup(QThread& workerThread)
{
    thread = &workerThread;
    connect(thread, SIGNAL(started()), this, SLOT(refreshData()));
    connect(this, SIGNAL(finished()), thread, SLOT(quit()));
    connect(this, SIGNAL(finished()), this, SLOT(deleteLater()));
}

void MailboxComm::emitNrIonBars()
{
    emit nrIonBarsChanged(nrIonBars);
}

void MailboxComm::doSetupOnNewThread()
{
    auto* timer = new QTimer(this);
    connect(timer, SIGNAL(timeout()), this, SLOT(refreshData()));
    timer->start(pollIntervalMs);
    scanSfpPorts();
}

void MailboxComm::refreshData()
{
    scanSfpPorts();
    statsResult = getBPMStats(&stats);
    pidStatus = getPIDstatus();
}

void MailboxComm::scanSfpPorts()
{
    for (SFPinfo& port : sfp) {
        port.deviceId = 0;
        port.hwVersion = 0;
        port.version[0] = 0;
        port.version[1] = 0;
    }
    for (int port = 0; port < 4; ++port) {
        SFPinfo& info = sfp[port];
        if (getSFPinfo(port, &info.deviceId, &info.hwVersion, info.version, &info.serialNumber) < 0) {
            // A failed port counts as empty, whatever the call left in the entry.
            info.deviceId = 0;
            KORA_LOG_WARN << "getSFPinfo(" << port << ") failed";
        }
    }

    bool cogtrakSeen = false;
    for (const SFPinfo& port : sfp)
        cogtrakSeen = cogtrakSeen || deviceClass(port) == encoderBoxClass;
    const int wanted = cogtrakSeen ? encoderBoxClass : amplifierClass;
    const int mask = (deviceClass(sfp[0]) == wanted ? 1 : 0) | (deviceClass(sfp[1]) == wanted ? 2 : 0);

    if (int(cogtrakSeen) != cogtrakPresent) {
        KORA_LOG_DEBUG << "Cogtrak change detected";
        emit nrIonBarsChanged(mask);
        // In both directions: the loops keep the lower rate once an encoder box was seen.
        sampFreq = loopRateWithEncoderBox;
    }
    cogtrakPresent = cogtrakSeen;

    if (mask != nrIonBars) {
        KORA_LOG_DEBUG << "Number of acquisition devices changed";
        getBPMselector(&bpmSelXlf, &bpmSelXhf, &bpmSelYlf, &bpmSelYhf);
        emit nrIonBarsChanged(mask);
    }
    // Only after the emission: receivers go by the signal's argument.
    nrIonBars = mask;
}

int MailboxComm::setFBenable(unsigned char enable)
{
    return warnIfFailed(::setFBenable(enable), "setFBenable() failed");
}

int MailboxComm::setCtrlReset()
{
    return warnIfFailed(::setCtrlReset(), "setCtrlReset() failed");
}

int MailboxComm::setPIDconf(signed char conf)
{
    return warnIfFailed(::setPIDconf(conf), "setPIDconf() failed");
}

signed char MailboxComm::getPIDconf()
{
    signed char conf = 0;
    warnIfFailed(::getPIDconf(&conf), "getPIDconf() failed");
    return conf;
}

int MailboxComm::setPIDparams(signed char controller, double Kp, double Ki, double Kd, double emin, double Imax,
                              double Omin, double Omax, double Ogain)
{
    return warnIfFailed(::setPIDparams(controller, Kp, Ki, Kd, emin, Imax, Omin, Omax, Ogain), "setPIDparams() failed");
}

int MailboxComm::setOffset(double Xlf, double Xhf, double Ylf, double Yhf)
{
    return warnIfFailed(::setOffset(Xlf, Xhf, Ylf, Yhf), "setOffset() failed");
}

int MailboxComm::setWindAvg(int controller, int samples)
{
    return warnIfFailed(::setWindAvg(controller, samples), "setWindAvg() failed");
}

int MailboxComm::setSetpointXlf(double value)
{
    return warnIfFailed(::setSetpoint(0, value), "setSetpoint(Xlf) failed");
}

int MailboxComm::setSetpointXhf(double value)
{
    return warnIfFailed(::setSetpoint(1, value), "setSetpoint(Xhf) failed");
}

int MailboxComm::setSetpointYlf(double value)
{
    return warnIfFailed(::setSetpoint(2, value), "setSetpoint(Ylf) failed");
}

int MailboxComm::setSetpointYhf(double value)
{
    return warnIfFailed(::setSetpoint(3, value), "setSetpoint(Yhf) failed");
}

int MailboxComm::setSetpoints(double Xlf, double Xhf, double Ylf, double Yhf)
{
    int joined = setSetpointXlf(Xlf);
    joined |= setSetpointXhf(Xhf);
    joined |= setSetpointYlf(Ylf);
    joined |= setSetpointYhf(Yhf);
    return joined;
}

int MailboxComm::getSetpoints(double* Xlf, double* Xhf, double* Ylf, double* Yhf)
{
    warnIfFailed(::getSetpoint(0, Xlf), "getSetpoint(Xlf) failed");
    warnIfFailed(::getSetpoint(1, Xhf), "getSetpoint(Xhf) failed");
    warnIfFailed(::getSetpoint(2, Ylf), "getSetpoint(Ylf) failed");
    return warnIfFailed(::getSetpoint(3, Yhf), "getSetpoint(Yhf) failed");
}

int MailboxComm::setPIDoutSel(unsigned char Xlf, unsigned char Xhf, unsigned char Ylf, unsigned char Yhf)
{
    return warnIfFailed(::setPIDoutSel(Xlf, Xhf, Ylf, Yhf), "setPIDoutSel() failed");
}

int MailboxComm::setBPMselector(int Xlf, int Xhf, int Ylf, int Yhf)
{
    return warnIfFailed(::setBPMselector(Xlf, Xhf, Ylf, Yhf), "setBPMselector() failed");
}

int MailboxComm::getBPMselector(int* Xlf, int* Xhf, int* Ylf, int* Yhf)
{
    return warnIfFailed(::getBPMselector(Xlf, Xhf, Ylf, Yhf), "getBPMselector() failed");
}

int MailboxComm::setOutputMux(unsigned char source)
{
    const int result = ::setOutputMux(source);
    if (result < 0)
        KORA_LOG_WARN << "setOutputMux(" << int(source) << ") failed";
    return result;
}

unsigned char MailboxComm::getOutputMux()
{
    unsigned char source = outputsOfLoops;
    // What a failed call left in the variable could take the outputs from running loops.
    return warnIfFailed(::getOutputMux(&source), "getOutputMux() failed") < 0 ? outputsOfLoops : source;
}

int MailboxComm::setBPMorient(unsigned char orientation, unsigned char bpm)
{
    return warnIfFailed(::setBPMorient(bpm, orientation), "setBPMorient() failed");
}

int MailboxComm::setBPMscale(int bpm, double scaleX, double scaleY)
{
    return warnIfFailed(::setBPMscale(bpm, scaleX, scaleY), "setBPMscale() failed");
}

int MailboxComm::setBPMoffset(int bpm, double offsetX, double offsetY)
{
    return warnIfFailed(::setBPMoffset(bpm, offsetX, offsetY), "setBPMoffset() failed");
}

int MailboxComm::setCrossBar(unsigned char top, unsigned char right, unsigned char bottom, unsigned char left,
                             unsigned char bpm)
{
    return warnIfFailed(::setCrossBar(bpm, top, right, bottom, left), "setCrossBar() failed");
}

int MailboxComm::setROCenable(unsigned char x1, unsigned char y1, unsigned char beamOff1, unsigned char x2,
                              unsigned char y2, unsigned char beamOff2)
{
    return warnIfFailed(::setROCenable(x1, y1, beamOff1, x2, y2, beamOff2), "setROCenable() failed");
}

int MailboxComm::getROCenable(unsigned char* x1, unsigned char* y1, unsigned char* beamOff1, unsigned char* x2,
                              unsigned char* y2, unsigned char* beamOff2)
{
    return warnIfFailed(::getROCenable(x1, y1, beamOff1, x2, y2, beamOff2), "getROCenable() failed");
}

int MailboxComm::setROClimits(int limit, double low, double high)
{
    return warnIfFailed(::setROClimits(limit, low, high), "setROClimits() failed");
}

int MailboxComm::ionbarHVenable(int enable, unsigned char amplifier)
{
    return warnIfFailed(::ionbarHVenable(enable, amplifier), "ionbarHVenable() failed");
}

int MailboxComm::ionbarHVSetVoltage(unsigned char amplifier, float volts)
{
    return warnIfFailed(::ionbarHVSetVoltage(amplifier, volts), "ionbarHVSetVoltage() failed");
}

int MailboxComm::ionbarSetRange(int range, unsigned char amplifier)
{
    return warnIfFailed(::ionbarSetRange(range, amplifier), "ionbarSetRange() failed");
}

int MailboxComm::setDisplayFreq(unsigned char filterEnable)
{
    return warnIfFailed(::setDisplayFreq(SAMP_FREQ, filterEnable), "setDisplayFreq() failed");
}

double MailboxComm::getDisplayFreq(bool* filterEnable)
{
    int hertz = 0;
    unsigned char filter = 0;
    warnIfFailed(::getDisplayFreq(&hertz, &filter), "getDisplayFreq() failed");
    if (filterEnable)
        *filterEnable = filter != 0;
    return hertz;
}

int MailboxComm::getSystemVersion(QString* timestamp, QString* swVersion, QString* pidVersion)
{
    std::uint32_t time = 0;
    std::uint32_t software = 0;
    std::uint32_t pid = 0;
    const int result = warnIfFailed(::getSystemVersion(&time, &software, &pid), "getSystemVersion() failed");
    if (timestamp)
        *timestamp = QString::number(time);
    if (swVersion)
        *swVersion = versionText(software);
    if (pidVersion)
        *pidVersion = versionText(pid);
    return result;
}
