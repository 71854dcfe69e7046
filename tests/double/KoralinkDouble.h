#pragma once

#include "hardware/koralink.h"
#include "stream/DeviceRecords.h"
#include "stream/DisplayRecord.h"

#include <functional>
#include <string>
#include <vector>

/// Double of the control library and of the device files. It records every call in order and answers as a test
/// scripts it. Calls may come from any thread; answers() is for times when no other thread calls.
namespace koralink_double {

/// One call of the control library ("setSetpoint") or on a device file ("open", "read", "ioctl", "close").
struct Call
{
    std::string name;
    /// Numbers as they were passed, arrays flattened, output pointers left out. For "ioctl" on the output device
    /// the four voltages and the flag; for "open" the flags; for "read" the byte count.
    std::vector<double> arguments;
    /// Texts as they were passed; for device calls the path. The texts of getLock are cut at 32 bytes.
    std::vector<std::string> texts;

    /// For comparisons: "setSetpoint(0, 12.5)", "ioctl(/dev/kora_anvolt0, 0, 0, 0, 0, 1)".
    std::string text() const;
};

struct Answers
{
    signed char pidConf = 0;
    double setpoints[4] = {};
    unsigned char outSel[4] = {0, 1, 2, 3};
    int bpmSel[4] = {};
    unsigned char outputMux = 1;
    unsigned char rocEnable[6] = {};
    int displayFreq = 1000;
    unsigned char displayFilter = 1;
    PID_Status_Type pidStatus = PidStatusOff;
    BPMStats stats = {};
    SFPinfo sfp[4] = {};
    /// Hardware timestamp, software version, PID version; bytes 1, 0, 0, 3 read "1.0.03".
    std::uint32_t versions[3] = {20210317, 0x03000001, 0x00000001};
    /// Level of a user and a password; null knows "cruise", "user" and "admin", whose password is the name.
    std::function<int(const std::string& user, const std::string& password)> lock;
    /// Fills a block of the stream; null leaves zero records.
    std::function<void(DisplayRecord* block, int count)> fillBlock;
    /// Records that getBuffer delivers at most, and bytes that a read delivers at most; negative means all.
    int deliveredRecords = -1;
    long deliveredBytes = -1;
    AmplifierStatus amplifierStatus[2] = {};
    /// Present currents of an amplifier given the last output record; null gives zero.
    std::function<CurrentRecord(int amplifier, const OutputRecord& outputs)> currents;
    OutputRecord lastOutputs;
};

/// Back to the initial answers, no failures, all devices present, no calls recorded, descriptors of devices closed.
void reset();
Answers& answers();

/// Makes a library function return -1, the next times or, with a negative number, until told otherwise (0).
void fail(const std::string& function, int times = -1);
/// Makes a device file appear or vanish.
void setDevicePresent(const std::string& path, bool present);
/// Descriptors of device files that are open now.
int openDescriptors();

std::vector<Call> calls();
/// Calls whose name starts with "set", "commit", "funcGen" or "ionbar", and "ioctl" on the output device: what
/// reached the hardware, as texts.
std::vector<std::string> commands();
/// Texts of all calls of one name.
std::vector<std::string> callsOf(const std::string& name);
void clearCalls();

} // namespace koralink_double
