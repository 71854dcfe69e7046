#pragma once

struct LoopParameters;

/// Accessor of the settings file. It has no state: every method opens the file, does its work and closes it, so that
/// each write is on disk when the method returns and each read sees what the last write left. GUI thread.
///
/// A missing key reads as zero or false, except BeamOffTh and the outputs of the group Beamline. A file that cannot
/// be read reads as an empty one. A write that cannot be done is lost without a word, and the file stays as it was; so
/// is one that finds the file locked by another process for longer than 2 s. What is no finite number reads as 0. No
/// other value is checked, none is transformed. The argument bpm is 0 for BPM1 and anything else for BPM2.
class ConfigFile
{
public:
    // Geometry of the monitors: orientation 0 for 45 degrees, 1 for 90 degrees; scale and offset in micrometres;
    // channel numbers 0 to 3.
    void writeOrient(bool value, int bpm);
    int readOrient(int bpm);
    void writeScaleX(int bpm, double value);
    double readScaleX(int bpm);
    void writeScaleY(int bpm, double value);
    double readScaleY(int bpm);
    void writeOffsetX(int bpm, double value);
    double readOffsetX(int bpm);
    void writeOffsetY(int bpm, double value);
    double readOffsetY(int bpm);
    void writeChannels(int top, int right, int bottom, int left, int bpm);
    void readChannels(int* top, int* right, int* bottom, int* left, int bpm);

    // Regions: threshold in microamperes; half-widths in micrometres; Roc in percent of the region of interest.
    void writeBeamOffTh(int bpm, double value);
    void readBeamOffTh(double* value, int bpm);
    void writeROI(int bpm, double RoiX, double RoiY, double RoiI0min, double RoiI0max, double Roc);
    void readROI(double* RoiX, double* RoiY, double* RoiI0min, double* RoiI0max, double* Roc, int bpm);
    void writeROCenable(bool x, bool y, bool beamOff, int bpm);
    void readROCenable(bool* x, bool* y, bool* beamOff, int bpm);

    /// All that the file holds of one controller. @param loop 0 Xlf, 1 Xhf, 2 Ylf, 3 Yhf
    ///
    /// Omin of Ylf comes from the key "PID_Ylhf/Omin", which no writer writes: it reads 0 whatever was saved, until
    /// someone adds that key by hand.
    LoopParameters readLoop(int loop);
    void writeLoop(int loop, const LoopParameters& parameters);

    // The same value by value.
    void writePIDXlf(double Freq, double Kp, double Ki, double Kd, double emin, double Imax, double Omin, double Omax,
                     double Ogain, double Offset);
    void writePIDXhf(double Freq, double Kp, double Ki, double Kd, double emin, double Imax, double Omin, double Omax,
                     double Ogain, double Offset);
    void writePIDYlf(double Freq, double Kp, double Ki, double Kd, double emin, double Imax, double Omin, double Omax,
                     double Ogain, double Offset);
    void writePIDYhf(double Freq, double Kp, double Ki, double Kd, double emin, double Imax, double Omin, double Omax,
                     double Ogain, double Offset);
    void readPIDXlf(double* Freq, double* Kp, double* Ki, double* Kd, double* emin, double* Imax, double* Omin,
                    double* Omax, double* Ogain, double* Offset);
    void readPIDXhf(double* Freq, double* Kp, double* Ki, double* Kd, double* emin, double* Imax, double* Omin,
                    double* Omax, double* Ogain, double* Offset);
    void readPIDYlf(double* Freq, double* Kp, double* Ki, double* Kd, double* emin, double* Imax, double* Omin,
                    double* Omax, double* Ogain, double* Offset);
    void readPIDYhf(double* Freq, double* Kp, double* Ki, double* Kd, double* emin, double* Imax, double* Omin,
                    double* Omax, double* Ogain, double* Offset);

    /// Output number 0 to 3 of each controller.
    void writeDACpos(int Xlf, int Xhf, int Ylf, int Yhf);
    void readDACpos(int* Xlf, int* Xhf, int* Ylf, int* Yhf);

    /// Cut-offs in hertz. Band 0 (low frequency) has no upper cut-off: it stores none and leaves *high untouched.
    void writePositionFilter(int band, int axis, unsigned int type, double low, double high);
    void readPositionFilter(int band, int axis, int* type, double* low, double* high);

    // Coefficients of free filters, ten values an array.
    void writeIIR(const double* aX, const double* bX, const double* aY, const double* bY, const double* aI0,
                  const double* bI0);
    void readIIR(double* aX, double* bX, double* aY, double* bY, double* aI0, double* bI0);
    void removeIIR();
    bool hasIIR();
};
