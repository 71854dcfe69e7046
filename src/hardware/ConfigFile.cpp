#include "hardware/ConfigFile.h"

#include "hardware/LoopConfiguration.h"
#include "hardware/LoopParameters.h"
#include "hardware/SettingsChange.h"
#include "hardware/SettingsPath.h"

#include <QFileInfo>
#include <QSettings>

#include <cmath>
#include <iterator>

namespace {

constexpr double missingBeamOffTh = 1e-09;
constexpr int iirLength = 10;

constexpr const char* outputKeys[4] = {"DAC_posXlf", "DAC_posXhf", "DAC_posYlf", "DAC_posYhf"};
constexpr const char* filterNames[2][2] = {{"Xlf", "Ylf"}, {"Xhf", "Yhf"}};
constexpr const char* iirGroups[3] = {"IIR_X", "IIR_Y", "IIR_I0"};

/// A number of the file. What is no finite number reads as 0, as other garbage does: a field would show it as its
/// largest value, and send that.
double finiteNumber(const QVariant& text)
{
    const double number = text.toDouble();
    return std::isfinite(number) ? number : 0.0;
}

/// What is there but is no file is not opened: a pipe would be waited for.
QString readablePath()
{
    const QFileInfo file(settingsPath());
    return file.isFile() || !file.exists() ? file.filePath() : QStringLiteral("/dev/null");
}

/// The settings file for reading, open for as long as one accessor runs.
class File : public QSettings
{
public:
    File() : QSettings(readablePath(), QSettings::IniFormat) {}

    QVariant read(const QString& group, const char* key, const QVariant& missing = QVariant())
    {
        return value(group + QLatin1Char('/') + QLatin1String(key), missing);
    }

    double readNumber(const QString& group, const char* key, const QVariant& missing = QVariant())
    {
        return finiteNumber(read(group, key, missing));
    }
};

/// A change of values of one group, for as long as one accessor runs.
class Change : public SettingsChange
{
public:
    explicit Change(const QString& group) { settings().beginGroup(group); }

    void write(const QString& key, const QVariant& newValue) { settings().setValue(key, newValue); }
    void write(const char* key, const QVariant& newValue) { write(QString::fromLatin1(key), newValue); }
};

QString bpmGroup(int bpm)
{
    return bpm == 0 ? QStringLiteral("BPM1") : QStringLiteral("BPM2");
}

QString regionGroup(int bpm)
{
    return bpm == 0 ? QStringLiteral("ROCandROI") : QStringLiteral("ROCandROI2");
}

void writeToBpm(int bpm, const char* key, const QVariant& value)
{
    Change file(bpmGroup(bpm));
    file.write(key, value);
}

double readDoubleOfBpm(int bpm, const char* key)
{
    return File().readNumber(bpmGroup(bpm), key);
}

QString loopGroup(int loop)
{
    return QLatin1String("PID_") + QLatin1String(loopNames[loop]);
}

/// @param places in the order of loopParameters
void store(const LoopParameters& parameters, double* const (&places)[std::size(loopParameters)])
{
    for (std::size_t i = 0; i < std::size(loopParameters); ++i)
        *places[i] = parameters.*loopParameters[i].value;
}

QString filterKey(int band, int axis, const char* item)
{
    return QLatin1String(filterNames[band != 0][axis != 0]) + QLatin1String(item);
}

void writeIirArray(QSettings& file, const char* name, const double* values)
{
    // The read form of an array: it writes no size, and no reader needs one.
    file.beginReadArray(QLatin1String(name));
    for (int i = 0; i < iirLength; ++i) {
        file.setArrayIndex(i);
        file.setValue(QStringLiteral("val"), values[i]);
    }
    file.endArray();
}

void readIirArray(QSettings& file, const char* name, double* values)
{
    file.beginReadArray(QLatin1String(name));
    for (int i = 0; i < iirLength; ++i) {
        file.setArrayIndex(i);
        values[i] = finiteNumber(file.value(QStringLiteral("val")));
    }
    file.endArray();
}

} // namespace

void ConfigFile::writeOrient(bool value, int bpm)
{
    writeToBpm(bpm, "Orient", int(value));
}

int ConfigFile::readOrient(int bpm)
{
    return File().read(bpmGroup(bpm), "Orient").toInt();
}

void ConfigFile::writeScaleX(int bpm, double value)
{
    writeToBpm(bpm, "Scale_X", value);
}

double ConfigFile::readScaleX(int bpm)
{
    return readDoubleOfBpm(bpm, "Scale_X");
}

void ConfigFile::writeScaleY(int bpm, double value)
{
    writeToBpm(bpm, "Scale_Y", value);
}

double ConfigFile::readScaleY(int bpm)
{
    return readDoubleOfBpm(bpm, "Scale_Y");
}

void ConfigFile::writeOffsetX(int bpm, double value)
{
    writeToBpm(bpm, "Offset_X", value);
}

double ConfigFile::readOffsetX(int bpm)
{
    return readDoubleOfBpm(bpm, "Offset_X");
}

void ConfigFile::writeOffsetY(int bpm, double value)
{
    writeToBpm(bpm, "Offset_Y", value);
}

double ConfigFile::readOffsetY(int bpm)
{
    return readDoubleOfBpm(bpm, "Offset_Y");
}

void ConfigFile::writeChannels(int top, int right, int bottom, int left, int bpm)
{
    Change file(bpmGroup(bpm));
    file.write("Top", top);
    file.write("Right", right);
    file.write("Bottom", bottom);
    file.write("Left", left);
}

void ConfigFile::readChannels(int* top, int* right, int* bottom, int* left, int bpm)
{
    File file;
    *top = file.read(bpmGroup(bpm), "Top").toInt();
    *right = file.read(bpmGroup(bpm), "Right").toInt();
    *bottom = file.read(bpmGroup(bpm), "Bottom").toInt();
    *left = file.read(bpmGroup(bpm), "Left").toInt();
}

void ConfigFile::writeBeamOffTh(int bpm, double value)
{
    Change file(regionGroup(bpm));
    file.write("BeamOffTh", value);
}

void ConfigFile::readBeamOffTh(double* value, int bpm)
{
    *value = File().readNumber(regionGroup(bpm), "BeamOffTh", missingBeamOffTh);
}

void ConfigFile::writeROI(int bpm, double RoiX, double RoiY, double RoiI0min, double RoiI0max, double Roc)
{
    Change file(regionGroup(bpm));
    file.write("RoiX", RoiX);
    file.write("RoiY", RoiY);
    file.write("RoiI0min", RoiI0min);
    file.write("RoiI0max", RoiI0max);
    file.write("Roc", Roc);
}

void ConfigFile::readROI(double* RoiX, double* RoiY, double* RoiI0min, double* RoiI0max, double* Roc, int bpm)
{
    File file;
    const QString group = regionGroup(bpm);
    *RoiX = file.readNumber(group, "RoiX");
    *RoiY = file.readNumber(group, "RoiY");
    *RoiI0min = file.readNumber(group, "RoiI0min");
    *RoiI0max = file.readNumber(group, "RoiI0max");
    *Roc = file.readNumber(group, "Roc");
}

void ConfigFile::writeROCenable(bool x, bool y, bool beamOff, int bpm)
{
    Change file(regionGroup(bpm));
    file.write("RocXenable", x);
    file.write("RocYenable", y);
    file.write("BeamOffEnable", beamOff);
}

void ConfigFile::readROCenable(bool* x, bool* y, bool* beamOff, int bpm)
{
    File file;
    const QString group = regionGroup(bpm);
    *x = file.read(group, "RocXenable").toBool();
    *y = file.read(group, "RocYenable").toBool();
    *beamOff = file.read(group, "BeamOffEnable").toBool();
}

LoopParameters ConfigFile::readLoop(int loop)
{
    File file;
    LoopParameters parameters;
    for (const LoopParameter& parameter : loopParameters)
        parameters.*parameter.value = file.readNumber(loopGroup(loop), parameter.key);
    if (loop == LoopYlf)
        parameters.Omin = file.readNumber(QStringLiteral("PID_Ylhf"), "Omin");
    return parameters;
}

void ConfigFile::writeLoop(int loop, const LoopParameters& parameters)
{
    Change file(loopGroup(loop));
    for (const LoopParameter& parameter : loopParameters)
        file.write(parameter.key, parameters.*parameter.value);
}

void ConfigFile::writePIDXlf(double Freq, double Kp, double Ki, double Kd, double emin, double Imax, double Omin,
                             double Omax, double Ogain, double Offset)
{
    writeLoop(LoopXlf, {Freq, Kp, Ki, Kd, emin, Imax, Omin, Omax, Ogain, Offset});
}

void ConfigFile::writePIDXhf(double Freq, double Kp, double Ki, double Kd, double emin, double Imax, double Omin,
                             double Omax, double Ogain, double Offset)
{
    writeLoop(LoopXhf, {Freq, Kp, Ki, Kd, emin, Imax, Omin, Omax, Ogain, Offset});
}

void ConfigFile::writePIDYlf(double Freq, double Kp, double Ki, double Kd, double emin, double Imax, double Omin,
                             double Omax, double Ogain, double Offset)
{
    writeLoop(LoopYlf, {Freq, Kp, Ki, Kd, emin, Imax, Omin, Omax, Ogain, Offset});
}

void ConfigFile::writePIDYhf(double Freq, double Kp, double Ki, double Kd, double emin, double Imax, double Omin,
                             double Omax, double Ogain, double Offset)
{
    writeLoop(LoopYhf, {Freq, Kp, Ki, Kd, emin, Imax, Omin, Omax, Ogain, Offset});
}

void ConfigFile::readPIDXlf(double* Freq, double* Kp, double* Ki, double* Kd, double* emin, double* Imax, double* Omin,
                            double* Omax, double* Ogain, double* Offset)
{
    store(readLoop(LoopXlf), {Freq, Kp, Ki, Kd, emin, Imax, Omin, Omax, Ogain, Offset});
}

void ConfigFile::readPIDXhf(double* Freq, double* Kp, double* Ki, double* Kd, double* emin, double* Imax, double* Omin,
                            double* Omax, double* Ogain, double* Offset)
{
    store(readLoop(LoopXhf), {Freq, Kp, Ki, Kd, emin, Imax, Omin, Omax, Ogain, Offset});
}

void ConfigFile::readPIDYlf(double* Freq, double* Kp, double* Ki, double* Kd, double* emin, double* Imax, double* Omin,
                            double* Omax, double* Ogain, double* Offset)
{
    store(readLoop(LoopYlf), {Freq, Kp, Ki, Kd, emin, Imax, Omin, Omax, Ogain, Offset});
}

void ConfigFile::readPIDYhf(double* Freq, double* Kp, double* Ki, double* Kd, double* emin, double* Imax, double* Omin,
                            double* Omax, double* Ogain, double* Offset)
{
    store(readLoop(LoopYhf), {Freq, Kp, Ki, Kd, emin, Imax, Omin, Omax, Ogain, Offset});
}

void ConfigFile::writeDACpos(int Xlf, int Xhf, int Ylf, int Yhf)
{
    Change file(QStringLiteral("Beamline"));
    const int values[4] = {Xlf, Xhf, Ylf, Yhf};
    for (int i = 0; i < 4; ++i)
        file.write(outputKeys[i], values[i]);
}

void ConfigFile::readDACpos(int* Xlf, int* Xhf, int* Ylf, int* Yhf)
{
    File file;
    int* const values[4] = {Xlf, Xhf, Ylf, Yhf};
    for (int i = 0; i < 4; ++i)
        *values[i] = file.read(QStringLiteral("Beamline"), outputKeys[i], i).toInt();
}

void ConfigFile::writePositionFilter(int band, int axis, unsigned int type, double low, double high)
{
    Change file(QStringLiteral("PositionFilters"));
    file.write(filterKey(band, axis, "Filter"), type);
    file.write(filterKey(band, axis, "FcutLow"), low);
    if (band != 0)
        file.write(filterKey(band, axis, "FcutHigh"), high);
}

void ConfigFile::readPositionFilter(int band, int axis, int* type, double* low, double* high)
{
    File file;
    const QString group = QStringLiteral("PositionFilters/");
    *type = file.value(group + filterKey(band, axis, "Filter")).toInt();
    *low = finiteNumber(file.value(group + filterKey(band, axis, "FcutLow")));
    if (band != 0)
        *high = finiteNumber(file.value(group + filterKey(band, axis, "FcutHigh")));
}

void ConfigFile::writeIIR(const double* aX, const double* bX, const double* aY, const double* bY, const double* aI0,
                          const double* bI0)
{
    SettingsChange change;
    QSettings& file = change.settings();
    const double* const values[3][2] = {{aX, bX}, {aY, bY}, {aI0, bI0}};
    for (int i = 0; i < 3; ++i) {
        file.beginGroup(QLatin1String(iirGroups[i]));
        writeIirArray(file, "a", values[i][0]);
        writeIirArray(file, "b", values[i][1]);
        file.endGroup();
    }
}

void ConfigFile::readIIR(double* aX, double* bX, double* aY, double* bY, double* aI0, double* bI0)
{
    File file;
    double* const values[3][2] = {{aX, bX}, {aY, bY}, {aI0, bI0}};
    for (int i = 0; i < 3; ++i) {
        file.beginGroup(QLatin1String(iirGroups[i]));
        readIirArray(file, "a", values[i][0]);
        readIirArray(file, "b", values[i][1]);
        file.endGroup();
    }
}

void ConfigFile::removeIIR()
{
    SettingsChange change;
    QSettings& file = change.settings();
    for (const char* group : iirGroups) {
        file.beginGroup(QLatin1String(group));
        file.remove(QString());
        file.endGroup();
    }
}

bool ConfigFile::hasIIR()
{
    return File().childGroups().contains(QLatin1String(iirGroups[0]));
}
