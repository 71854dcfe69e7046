#pragma once

#include <cstdint>

/// The control library of the installation, libkoralink.so.1, as this program uses it.
///
/// Every operation returns int: a negative value is a failure, zero or more is success. getPIDstatus and getLock
/// are the exceptions, they return data. Pointers are owned by the caller and are not kept. Safe to be called
/// from several threads at once.
///
/// Shared codes: controller 0 Xlf, 1 Xhf, 2 Ylf, 3 Yhf; BPM and amplifier 0 or 1; output 0 to 3; SFP port 0 to 3;
/// filter band 0 low frequency, 1 high frequency; filter axis 0 X, 1 Y.

/// State of the feedback. The values 2 and 3 both mean that the PID is running.
enum PID_Status_Type : std::int32_t
{
    PidStatusOff = 0,      ///< loops stopped
    PidStatusOutOfRoc = 1, ///< fault: the beam left the region of confidence
    PidStatusBeamOff = 2,  ///< armed, beam absent
    PidStatusOn = 3        ///< loops running
};

/// Beam statistics of one BPM. Positions are raw: the BPM's scale factor turns them into micrometres.
/// Intensities are in amperes. "Filt" figures are standard deviations at 1000 Hz.
struct BPMStatsBlock
{
    double posXMean;
    double posXStd;
    double posXStdFilt;
    double posYMean;
    double posYStd;
    double posYStdFilt;
    double i0Mean;
    double i0Std;
    double i0StdFilt;
};

struct BPMStats
{
    std::uint64_t reserved; ///< the library's own, never read here
    BPMStatsBlock bpm[2];
};
static_assert(sizeof(BPMStats) == 8 + 2 * 9 * 8);

/// What sits in one SFP port.
struct SFPinfo
{
    std::uint16_t deviceId; ///< product code, 0 for an empty port; the high byte is the product class
    std::uint32_t hwVersion;
    char version[4]; ///< firmware version, four character codes, shown last to first
    std::uint32_t serialNumber;
};

extern "C" {

// Loop configuration
int setFBenable(unsigned char enable);
int setCtrlReset();
int setPIDconf(signed char conf);
int getPIDconf(signed char* conf);
int setPIDparams(signed char controller, double Kp, double Ki, double Kd, double emin, double Imax, double Omin,
                 double Omax, double Ogain);
int setOffset(double Xlf, double Xhf, double Ylf, double Yhf);
int setWindAvg(int controller, int samples);
int setSetpoint(int controller, double value);
/// @param value may be null; nothing is stored then
int getSetpoint(int controller, double* value);
int setPIDoutSel(unsigned char Xlf, unsigned char Xhf, unsigned char Ylf, unsigned char Yhf);
int getPIDoutSel(unsigned char* Xlf, unsigned char* Xhf, unsigned char* Ylf, unsigned char* Yhf);
int setBPMselector(int Xlf, int Xhf, int Ylf, int Yhf);
int getBPMselector(int* Xlf, int* Xhf, int* Ylf, int* Yhf);
/// @param source 1 the FPGA loop, 0 direct writes to the output device file
int setOutputMux(unsigned char source);
int getOutputMux(unsigned char* source);

// Beam geometry and interlock
/// @param orientation 0 for 45 degrees, 1 for 90 degrees
int setBPMorient(unsigned char bpm, unsigned char orientation);
int setBPMscale(int bpm, double scaleX, double scaleY);
int setBPMoffset(int bpm, double offsetX, double offsetY);
int setCrossBar(unsigned char bpm, unsigned char top, unsigned char right, unsigned char bottom, unsigned char left);
int setROCenable(unsigned char x1, unsigned char y1, unsigned char beamOff1, unsigned char x2, unsigned char y2,
                 unsigned char beamOff2);
int getROCenable(unsigned char* x1, unsigned char* y1, unsigned char* beamOff1, unsigned char* x2, unsigned char* y2,
                 unsigned char* beamOff2);
/// @param limit 3 times the BPM, plus 0 for X, 1 for Y (raw position), 2 for the beam-off intensity (A)
int setROClimits(int limit, double low, double high);

// Acquisition chain
int ionbarHVenable(int enable, unsigned char amplifier);
int ionbarHVSetVoltage(unsigned char amplifier, float volts);
int ionbarSetRange(int range, unsigned char amplifier);
int setDisplayFreq(int hertz, unsigned char filterEnable);
int getDisplayFreq(int* hertz, unsigned char* filterEnable);
/// Copies the newest records of the display stream, the oldest first.
/// @param destination room for samples * 256 bytes
/// @return number of records delivered
int getBuffer(void* destination, int samples);

// Position filters
int setFiltControl(signed char band, signed char axis, int fullBand);
/// @param kind 0 numerator, 1 denominator; @param index 0 to 4
int setFiltCoef(signed char band, signed char axis, int kind, int index, double value);
int commitFiltCoef(signed char band, signed char axis);

// Function generator
int funcGenConfig(float amplitudes[4], float offsets[4], float frequency);
/// @param mode 0 stops, output number plus 2 runs on that output
int funcGenEnable(signed char mode);

// Status and identification
PID_Status_Type getPIDstatus();
int getBPMStats(BPMStats* stats);
int getSFPinfo(int port, std::uint16_t* deviceId, std::uint32_t* hwVersion, char* version, std::uint32_t* serialNumber);
int getSystemVersion(std::uint32_t* timestamp, std::uint32_t* swVersion, std::uint32_t* pidVersion);
/// @param user, password  buffers of 32 bytes, not terminated when the text has 32 characters or more
/// @return the user level 0, 1 or 2
int getLock(const char* user, const char* password);
}
