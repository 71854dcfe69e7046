// Any bytes as the settings file: every value can be read, a value that is written is read again, and no other one is
// lost by the writing.

#include "hardware/ConfigFile.h"
#include "hardware/SettingsPath.h"

#include <QFile>
#include <QTemporaryDir>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <vector>

namespace {

const QTemporaryDir& folder()
{
    static const QTemporaryDir scratch(QStringLiteral("/dev/shm/kora_fuzz_XXXXXX"));
    return scratch;
}

/// A name of its own for every input, so that nothing remembers the last one.
int inputNumber = 0;

struct Value
{
    double number;
    bool writtenByTest;
};

class Reading
{
public:
    void add(double number, bool written = false) { values.push_back({number, written}); }
    void add(std::initializer_list<double> numbers)
    {
        for (double number : numbers)
            add(number);
    }
    bool holdsBesides(const Reading& before) const
    {
        for (std::size_t i = 0; i < values.size(); ++i) {
            const double now = values[i].number;
            const double then = before.values[i].number;
            const bool same = now == then || (std::isnan(now) && std::isnan(then));
            if (!same && !values[i].writtenByTest)
                return false;
        }
        return true;
    }

private:
    std::vector<Value> values;
};

void readMonitors(ConfigFile& file, Reading& reading)
{
    for (int bpm = 0; bpm < 2; ++bpm) {
        int top, right, bottom, left;
        double x, y, lowest, highest, roc, threshold;
        bool enableX, enableY, enableBeamOff;
        reading.add({double(file.readOrient(bpm)), file.readScaleY(bpm), file.readOffsetX(bpm), file.readOffsetY(bpm)});
        reading.add(file.readScaleX(bpm), bpm == 0);
        file.readChannels(&top, &right, &bottom, &left, bpm);
        reading.add({double(top), double(right), double(bottom), double(left)});
        file.readBeamOffTh(&threshold, bpm);
        file.readROI(&x, &y, &lowest, &highest, &roc, bpm);
        reading.add({threshold, x, y, lowest, highest, roc});
        file.readROCenable(&enableX, &enableY, &enableBeamOff, bpm);
        reading.add({double(enableX), double(enableY), double(enableBeamOff)});
    }
}

void readLoops(ConfigFile& file, Reading& reading)
{
    using Reader =
        void (ConfigFile::*)(double*, double*, double*, double*, double*, double*, double*, double*, double*, double*);
    for (Reader reader :
         {&ConfigFile::readPIDXlf, &ConfigFile::readPIDXhf, &ConfigFile::readPIDYlf, &ConfigFile::readPIDYhf}) {
        double v[10];
        (file.*reader)(v, v + 1, v + 2, v + 3, v + 4, v + 5, v + 6, v + 7, v + 8, v + 9);
        for (double number : v)
            reading.add(number);
    }
    int outputs[4];
    file.readDACpos(outputs, outputs + 1, outputs + 2, outputs + 3);
    for (int output : outputs)
        reading.add(output);
    for (int filter = 0; filter < 4; ++filter) {
        int type;
        double low, high = 0;
        file.readPositionFilter(filter & 1, filter >> 1, &type, &low, &high);
        reading.add({double(type), low, high});
    }
    double coefficients[6][10];
    file.readIIR(coefficients[0], coefficients[1], coefficients[2], coefficients[3], coefficients[4], coefficients[5]);
    for (const auto& row : coefficients) {
        for (double number : row)
            reading.add(number);
    }
    reading.add(file.hasIIR());
}

Reading readAll()
{
    ConfigFile file;
    Reading reading;
    readMonitors(file, reading);
    readLoops(file, reading);
    return reading;
}

} // namespace

QString settingsPath()
{
    return folder().filePath(QString::number(inputNumber) + QLatin1String(".ini"));
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    ++inputNumber;
    {
        QFile file(settingsPath());
        if (!file.open(QIODevice::WriteOnly))
            std::abort();
        file.write(reinterpret_cast<const char*>(data), qint64(size));
    }
    const Reading before = readAll();
    ConfigFile().writeScaleX(0, 2.5);
    const bool read = ConfigFile().readScaleX(0) == 2.5;
    const Reading after = readAll();
    QFile::remove(settingsPath());
    if (!read || !after.holdsBesides(before))
        std::abort();
    return 0;
}
