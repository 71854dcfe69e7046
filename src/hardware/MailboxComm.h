#pragma once

#include "hardware/koralink.h"

#include <QObject>
#include <QString>

class QThread;

/// A poller of the control library on a thread of its own, and a method for each command whose failure is logged. The
/// stream, the position filters, the function generator, the login and getPIDoutSel() are called without it.
///
/// The worker thread runs doSetupOnNewThread() and refreshData() and writes sfp, nrIonBars, cogtrakPresent, stats,
/// statsResult, pidStatus and the globals sampFreq and bpmSel*. The GUI thread reads these and calls the commands,
/// which run on the caller's thread. Nothing is locked here: values are word-sized or display-only, and a torn read of
/// the statistics shows at most one wrong figure for a second. The control library itself is safe for both threads.
///
/// Commands return the library's result, negative on failure, and log a failure at warning level.
class MailboxComm : public QObject
{
    Q_OBJECT

public:
    explicit MailboxComm(QObject* parent);

    /// Lets the start of the worker thread start the poll, and finished() end the thread and delete this object. Called
    /// before moveToThread().
    void doSetup(QThread& workerThread);

    /// Announces the present device mask once more, for receivers that were connected late.
    void emitNrIonBars();

    /// The four ports, "SFP A" first, as the last scan left them.
    const SFPinfo* sfpPorts() const { return sfp; }

    int setFBenable(unsigned char enable);
    int setCtrlReset();
    int setPIDconf(signed char conf);
    signed char getPIDconf();
    int setPIDparams(signed char controller, double Kp, double Ki, double Kd, double emin, double Imax, double Omin,
                     double Omax, double Ogain);
    int setOffset(double Xlf, double Xhf, double Ylf, double Yhf);
    int setWindAvg(int controller, int samples);
    int setSetpointXlf(double value);
    int setSetpointXhf(double value);
    int setSetpointYlf(double value);
    int setSetpointYhf(double value);
    /// Sets all four, also behind a failing one. @return the four results joined by OR: negative if one failed
    int setSetpoints(double Xlf, double Xhf, double Ylf, double Yhf);
    /// Reads all four; each pointer may be null. @return the result of the last read alone
    int getSetpoints(double* Xlf, double* Xhf, double* Ylf, double* Yhf);
    int setPIDoutSel(unsigned char Xlf, unsigned char Xhf, unsigned char Ylf, unsigned char Yhf);
    int setBPMselector(int Xlf, int Xhf, int Ylf, int Yhf);
    int getBPMselector(int* Xlf, int* Xhf, int* Ylf, int* Yhf);
    int setOutputMux(unsigned char source);
    /// 1 while the loops drive the outputs, also when that cannot be read; 0 while they are driven directly.
    unsigned char getOutputMux();
    int setBPMorient(unsigned char orientation, unsigned char bpm);
    int setBPMscale(int bpm, double scaleX, double scaleY);
    int setBPMoffset(int bpm, double offsetX, double offsetY);
    int setCrossBar(unsigned char top, unsigned char right, unsigned char bottom, unsigned char left,
                    unsigned char bpm);
    int setROCenable(unsigned char x1, unsigned char y1, unsigned char beamOff1, unsigned char x2, unsigned char y2,
                     unsigned char beamOff2);
    int getROCenable(unsigned char* x1, unsigned char* y1, unsigned char* beamOff1, unsigned char* x2,
                     unsigned char* y2, unsigned char* beamOff2);
    int setROClimits(int limit, double low, double high);
    int ionbarHVenable(int enable, unsigned char amplifier);
    int ionbarHVSetVoltage(unsigned char amplifier, float volts);
    int ionbarSetRange(int range, unsigned char amplifier);
    /// Sends the rate that stands in SAMP_FREQ now.
    int setDisplayFreq(unsigned char filterEnable);
    /// @param filterEnable may be null; @return the rate in hertz, 0 when it cannot be read
    double getDisplayFreq(bool* filterEnable);
    /// Texts of the three versions; each pointer may be null. The texts are built also after a failure.
    int getSystemVersion(QString* timestamp, QString* swVersion, QString* pidVersion);

    SFPinfo sfp[4] = {};
    /// Presence mask of the acquisition devices, not a count: bit 0 the device of BPM1, bit 1 that of BPM2.
    int nrIonBars = 0;
    /// 1 while an encoder box was seen on any port at the last scan.
    int cogtrakPresent = 0;
    BPMStats stats = {};
    /// Result of the poll that should have filled stats: negative if it failed, and stats kept its old values.
    int statsResult = 0;
    /// A PID_Status_Type.
    int pidStatus = 0;

signals:
    void finished();
    void nrIonBarsChanged(int);

public slots:
    void doSetupOnNewThread();
    void refreshData();

private:
    void scanSfpPorts();

    QThread* thread = nullptr;
};
