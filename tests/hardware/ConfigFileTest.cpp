#include "hardware/ConfigFile.h"
#include "hardware/SettingsPath.h"
#include "support/FileContent.h"
#include "support/FullDisk.h"
#include "support/ScratchSettings.h"

#include <QDir>
#include <QFile>
#include <QSettings>
#include <QTemporaryDir>
#include <QtTest>

#include <array>

namespace {

using Ten = std::array<double, 10>;

constexpr const char* pidKeys[10] = {"Freq", "Kp", "Ki", "Kd", "emin", "Imax", "Omin", "Omax", "Ogain", "Offset"};

using PidWriter = void (ConfigFile::*)(double, double, double, double, double, double, double, double, double, double);
using PidReader = void (ConfigFile::*)(double*, double*, double*, double*, double*, double*, double*, double*, double*,
                                       double*);
struct PidGroup
{
    const char* group;
    PidWriter write;
    PidReader read;
};
constexpr PidGroup pidGroups[4] = {{"PID_Xlf", &ConfigFile::writePIDXlf, &ConfigFile::readPIDXlf},
                                   {"PID_Xhf", &ConfigFile::writePIDXhf, &ConfigFile::readPIDXhf},
                                   {"PID_Ylf", &ConfigFile::writePIDYlf, &ConfigFile::readPIDYlf},
                                   {"PID_Yhf", &ConfigFile::writePIDYhf, &ConfigFile::readPIDYhf}};

void writePid(const PidGroup& group, const Ten& v)
{
    ConfigFile file;
    (file.*group.write)(v[0], v[1], v[2], v[3], v[4], v[5], v[6], v[7], v[8], v[9]);
}

Ten readPid(const PidGroup& group)
{
    Ten v;
    v.fill(-99);
    ConfigFile file;
    (file.*group.read)(&v[0], &v[1], &v[2], &v[3], &v[4], &v[5], &v[6], &v[7], &v[8], &v[9]);
    return v;
}

Ten numbers(double first)
{
    Ten values;
    for (int i = 0; i < 10; ++i)
        values[std::size_t(i)] = first + i * 1.0625;
    return values;
}

QStringList keysInFile()
{
    QStringList keys = QSettings(settingsPath(), QSettings::IniFormat).allKeys();
    keys.sort();
    return keys;
}

double stored(const QString& key)
{
    const QVariant value = scratch_settings::value(key.toLatin1().constData());
    return value.isValid() ? value.toDouble() : -12345.0;
}

QStringList beneath(const QString& group, std::initializer_list<const char*> keys)
{
    QStringList full;
    for (const char* key : keys)
        full.append(group + QLatin1Char('/') + QLatin1String(key));
    full.sort();
    return full;
}

/// Reads everything that has a reader and compares it with what an empty file gives.
void compareWithEmptyFile()
{
    ConfigFile file;
    for (int bpm = 0; bpm < 2; ++bpm) {
        QCOMPARE(file.readOrient(bpm), 0);
        QCOMPARE(file.readScaleX(bpm), 0.0);
        QCOMPARE(file.readScaleY(bpm), 0.0);
        QCOMPARE(file.readOffsetX(bpm), 0.0);
        QCOMPARE(file.readOffsetY(bpm), 0.0);
        int channels[4] = {-1, -1, -1, -1};
        file.readChannels(&channels[0], &channels[1], &channels[2], &channels[3], bpm);
        for (int channel : channels)
            QCOMPARE(channel, 0);
        double threshold = -1;
        file.readBeamOffTh(&threshold, bpm);
        QCOMPARE(threshold, 1e-09);
        double roi[5] = {-1, -1, -1, -1, -1};
        file.readROI(&roi[0], &roi[1], &roi[2], &roi[3], &roi[4], bpm);
        for (double value : roi)
            QCOMPARE(value, 0.0);
        bool enabled[3] = {true, true, true};
        file.readROCenable(&enabled[0], &enabled[1], &enabled[2], bpm);
        for (bool value : enabled)
            QCOMPARE(value, false);
    }
    for (const PidGroup& group : pidGroups)
        QCOMPARE(readPid(group), Ten{});
    int outputs[4] = {-1, -1, -1, -1};
    file.readDACpos(&outputs[0], &outputs[1], &outputs[2], &outputs[3]);
    for (int i = 0; i < 4; ++i)
        QCOMPARE(outputs[i], i);
    for (int band = 0; band < 2; ++band) {
        for (int axis = 0; axis < 2; ++axis) {
            int type = -1;
            double low = -1;
            double high = -1;
            file.readPositionFilter(band, axis, &type, &low, &high);
            QCOMPARE(type, 0);
            QCOMPARE(low, 0.0);
            QCOMPARE(high, band == 0 ? -1.0 : 0.0);
        }
    }
    QCOMPARE(file.hasIIR(), false);
}

/// One write of every kind; none of them may harm anything when the file cannot be written.
void writeOneOfEach()
{
    ConfigFile file;
    file.writeOrient(true, 0);
    file.writeChannels(3, 2, 1, 0, 1);
    file.writeROCenable(true, true, true, 1);
    file.writeDACpos(3, 2, 1, 0);
    file.writePositionFilter(1, 1, 2, 3, 4);
    writePid(pidGroups[0], numbers(1));
    const Ten values = numbers(1);
    file.writeIIR(values.data(), values.data(), values.data(), values.data(), values.data(), values.data());
    file.removeIIR();
}

} // namespace

class ConfigFileTest : public QObject
{
    Q_OBJECT

private:
    ConfigFile file;

private slots:
    void init() { scratch_settings::clear(); }
    void cleanup() { scratch_settings::clear(); }

    void freshFileReadsAsDefaults()
    {
        QVERIFY(!QFile::exists(settingsPath()));
        compareWithEmptyFile();
        QVERIFY2(!QFile::exists(settingsPath()), "reading must not create the file");
    }

    void geometryOfEachMonitorStandsInItsGroup_data() { bpmRows("BPM1", "BPM2"); }
    void geometryOfEachMonitorStandsInItsGroup()
    {
        QFETCH(int, bpm);
        QFETCH(QString, group);
        file.writeOrient(true, bpm);
        file.writeScaleX(bpm, 1234.5);
        file.writeScaleY(bpm, 0.1);
        file.writeOffsetX(bpm, -7.25);
        file.writeOffsetY(bpm, 8.5);
        file.writeChannels(3, 2, 1, 0, bpm);
        QCOMPARE(keysInFile(), beneath(group, {"Orient", "Scale_X", "Scale_Y", "Offset_X", "Offset_Y", "Top", "Right",
                                               "Bottom", "Left"}));
        QCOMPARE(scratch_settings::value(qPrintable(group + QStringLiteral("/Orient"))).toString(),
                 QStringLiteral("1"));
        QCOMPARE(stored(group + QStringLiteral("/Scale_X")), 1234.5);
        QCOMPARE(stored(group + QStringLiteral("/Scale_Y")), 0.1);
        QCOMPARE(stored(group + QStringLiteral("/Offset_X")), -7.25);
        QCOMPARE(stored(group + QStringLiteral("/Offset_Y")), 8.5);
        QCOMPARE(stored(group + QStringLiteral("/Top")), 3.0);
        QCOMPARE(stored(group + QStringLiteral("/Right")), 2.0);
        QCOMPARE(stored(group + QStringLiteral("/Bottom")), 1.0);
        QCOMPARE(stored(group + QStringLiteral("/Left")), 0.0);

        QCOMPARE(file.readOrient(bpm), 1);
        QCOMPARE(file.readScaleX(bpm), 1234.5);
        QCOMPARE(file.readScaleY(bpm), 0.1);
        QCOMPARE(file.readOffsetX(bpm), -7.25);
        QCOMPARE(file.readOffsetY(bpm), 8.5);
        int channels[4] = {-1, -1, -1, -1};
        file.readChannels(&channels[0], &channels[1], &channels[2], &channels[3], bpm);
        QCOMPARE(channels[0], 3);
        QCOMPARE(channels[1], 2);
        QCOMPARE(channels[2], 1);
        QCOMPARE(channels[3], 0);
    }

    void everyMonitorNumberButZeroMeansTheSecond()
    {
        file.writeScaleX(7, 5.0);
        QCOMPARE(stored(QStringLiteral("BPM2/Scale_X")), 5.0);
        QCOMPARE(file.readScaleX(-1), 5.0);
        QCOMPARE(file.readScaleX(0), 0.0);
    }

    void orientationIsReadAsItStands()
    {
        scratch_settings::setValue("BPM1/Orient", 17);
        QCOMPARE(file.readOrient(0), 17);
    }

    void regionsOfEachMonitorStandInTheirGroup_data() { bpmRows("ROCandROI", "ROCandROI2"); }
    void regionsOfEachMonitorStandInTheirGroup()
    {
        QFETCH(int, bpm);
        QFETCH(QString, group);
        file.writeBeamOffTh(bpm, 0.25);
        file.writeROI(bpm, 100.5, 200.5, 0.0, 1e+12, 80.0);
        file.writeROCenable(true, false, true, bpm);
        QCOMPARE(keysInFile(), beneath(group, {"BeamOffTh", "RoiX", "RoiY", "RoiI0min", "RoiI0max", "Roc", "RocXenable",
                                               "RocYenable", "BeamOffEnable"}));
        QCOMPARE(stored(group + QStringLiteral("/BeamOffTh")), 0.25);
        QCOMPARE(stored(group + QStringLiteral("/RoiX")), 100.5);
        QCOMPARE(stored(group + QStringLiteral("/RoiY")), 200.5);
        QCOMPARE(stored(group + QStringLiteral("/RoiI0min")), 0.0);
        QCOMPARE(stored(group + QStringLiteral("/RoiI0max")), 1e12);
        QCOMPARE(stored(group + QStringLiteral("/Roc")), 80.0);

        double threshold = 0;
        file.readBeamOffTh(&threshold, bpm);
        QCOMPARE(threshold, 0.25);
        double roi[5] = {};
        file.readROI(&roi[0], &roi[1], &roi[2], &roi[3], &roi[4], bpm);
        QCOMPARE((std::array<double, 5>{roi[0], roi[1], roi[2], roi[3], roi[4]}),
                 (std::array<double, 5>{100.5, 200.5, 0.0, 1e12, 80.0}));
        bool enabled[3] = {false, true, false};
        file.readROCenable(&enabled[0], &enabled[1], &enabled[2], bpm);
        QCOMPARE(enabled[0], true);
        QCOMPARE(enabled[1], false);
        QCOMPARE(enabled[2], true);
    }

    void eachEnableFlagHasItsOwnKey()
    {
        file.writeROCenable(true, false, false, 0);
        QCOMPARE(scratch_settings::value("ROCandROI/RocXenable").toBool(), true);
        QCOMPARE(scratch_settings::value("ROCandROI/RocYenable").toBool(), false);
        file.writeROCenable(false, true, false, 1);
        QCOMPARE(scratch_settings::value("ROCandROI2/RocYenable").toBool(), true);
        QCOMPARE(scratch_settings::value("ROCandROI2/BeamOffEnable").toBool(), false);
        file.writeROCenable(false, false, true, 0);
        QCOMPARE(scratch_settings::value("ROCandROI/BeamOffEnable").toBool(), true);
        QCOMPARE(scratch_settings::value("ROCandROI/RocXenable").toBool(), false);
    }

    void controllerValuesStandInTheirGroup_data()
    {
        QTest::addColumn<int>("controller");
        for (int i = 0; i < 4; ++i)
            QTest::newRow(pidGroups[i].group) << i;
    }
    void controllerValuesStandInTheirGroup()
    {
        QFETCH(int, controller);
        const PidGroup& group = pidGroups[controller];
        const Ten values = numbers(controller + 0.1);
        writePid(group, values);
        QCOMPARE(keysInFile().size(), 10);
        for (std::size_t i = 0; i < 10; ++i) {
            const QString key = QLatin1String(group.group) + QLatin1Char('/') + QLatin1String(pidKeys[i]);
            QCOMPARE(stored(key), values[i]);
        }
        Ten expected = values;
        if (controller == 2)
            expected[6] = 0.0;
        QCOMPARE(readPid(group), expected);
    }

    void savedOminOfYlfReadsBackAsZeroAndTheOthersAsSaved()
    {
        Ten values = numbers(2);
        values[6] = -5;
        writePid(pidGroups[2], values);
        QCOMPARE(stored(QStringLiteral("PID_Ylf/Omin")), -5.0);
        const Ten read = readPid(pidGroups[2]);
        QCOMPARE(read[6], 0.0);
        values[6] = 0.0;
        QCOMPARE(read, values);
        QVERIFY(!scratch_settings::value("PID_Ylhf/Omin").isValid());
    }

    void ominOfYlfReadsTheOddKeyThatSomeoneAddedByHand()
    {
        writePid(pidGroups[2], numbers(2));
        scratch_settings::setValue("PID_Ylhf/Omin", -3.5);
        QCOMPARE(readPid(pidGroups[2])[6], -3.5);
    }

    void outputsOfTheControllersStandInBeamline()
    {
        file.writeDACpos(3, 2, 0, 1);
        QCOMPARE(keysInFile(),
                 beneath(QStringLiteral("Beamline"), {"DAC_posXlf", "DAC_posXhf", "DAC_posYlf", "DAC_posYhf"}));
        QCOMPARE(stored(QStringLiteral("Beamline/DAC_posXlf")), 3.0);
        QCOMPARE(stored(QStringLiteral("Beamline/DAC_posXhf")), 2.0);
        QCOMPARE(stored(QStringLiteral("Beamline/DAC_posYlf")), 0.0);
        QCOMPARE(stored(QStringLiteral("Beamline/DAC_posYhf")), 1.0);
        int outputs[4] = {-1, -1, -1, -1};
        file.readDACpos(&outputs[0], &outputs[1], &outputs[2], &outputs[3]);
        QCOMPARE(outputs[0], 3);
        QCOMPARE(outputs[1], 2);
        QCOMPARE(outputs[2], 0);
        QCOMPARE(outputs[3], 1);
    }

    void lowBandFilterStoresNoUpperCutOffAndLeavesTheCallersAlone()
    {
        file.writePositionFilter(0, 0, 3, 12.5, 99.0);
        file.writePositionFilter(0, 1, 4, 13.5, 99.0);
        QCOMPARE(keysInFile(),
                 beneath(QStringLiteral("PositionFilters"), {"XlfFilter", "XlfFcutLow", "YlfFilter", "YlfFcutLow"}));
        int type = -1;
        double low = -1;
        double high = -42;
        file.readPositionFilter(0, 0, &type, &low, &high);
        QCOMPARE(type, 3);
        QCOMPARE(low, 12.5);
        QCOMPARE(high, -42.0);
        file.readPositionFilter(0, 1, &type, &low, &high);
        QCOMPARE(type, 4);
        QCOMPARE(low, 13.5);
        QCOMPARE(high, -42.0);
    }

    void highBandFilterStoresBothCutOffs()
    {
        file.writePositionFilter(1, 0, 1, 12.5, 99.5);
        file.writePositionFilter(1, 1, 2, 13.5, 98.5);
        QCOMPARE(keysInFile(), beneath(QStringLiteral("PositionFilters"), {"XhfFilter", "XhfFcutLow", "XhfFcutHigh",
                                                                           "YhfFilter", "YhfFcutLow", "YhfFcutHigh"}));
        int type = -1;
        double low = -1;
        double high = -1;
        file.readPositionFilter(1, 1, &type, &low, &high);
        QCOMPARE(type, 2);
        QCOMPARE(low, 13.5);
        QCOMPARE(high, 98.5);
        file.readPositionFilter(1, 0, &type, &low, &high);
        QCOMPARE(type, 1);
        QCOMPARE(low, 12.5);
        QCOMPARE(high, 99.5);
    }

    void freeFiltersAreArraysOfTenWithoutASize()
    {
        const Ten values[6] = {numbers(1), numbers(20), numbers(40), numbers(60), numbers(80), numbers(100)};
        QCOMPARE(file.hasIIR(), false);
        file.writeIIR(values[0].data(), values[1].data(), values[2].data(), values[3].data(), values[4].data(),
                      values[5].data());
        QCOMPARE(file.hasIIR(), true);
        QCOMPARE(keysInFile().size(), 60);
        QCOMPARE(stored(QStringLiteral("IIR_X/a/1/val")), 1.0);
        QCOMPARE(stored(QStringLiteral("IIR_X/b/10/val")), values[1][9]);
        QCOMPARE(stored(QStringLiteral("IIR_Y/a/2/val")), values[2][1]);
        QCOMPARE(stored(QStringLiteral("IIR_I0/b/10/val")), values[5][9]);
        QVERIFY(contentOf(settingsPath()).contains("a\\10\\val="));
        QVERIFY(!contentOf(settingsPath()).contains("size"));

        Ten read[6] = {};
        file.readIIR(read[0].data(), read[1].data(), read[2].data(), read[3].data(), read[4].data(), read[5].data());
        for (int i = 0; i < 6; ++i)
            QCOMPARE(read[i], values[i]);

        file.writeScaleX(0, 2.0);
        file.removeIIR();
        QCOMPARE(file.hasIIR(), false);
        QCOMPARE(keysInFile(), QStringList{QStringLiteral("BPM1/Scale_X")});
        file.readIIR(read[0].data(), read[1].data(), read[2].data(), read[3].data(), read[4].data(), read[5].data());
        QCOMPARE(read[5], Ten{});
    }

    void eachWriteIsOnDiskWhenItReturnsAndNothingIsCached()
    {
        file.writeScaleX(0, 3.5);
        QVERIFY(contentOf(settingsPath()).contains("Scale_X=3.5"));
        QFile other(settingsPath());
        QVERIFY(other.open(QIODevice::WriteOnly));
        other.write("[BPM1]\nScale_X=77.25\nOdd=1\n[Library]\nown=text\n");
        other.close();
        QCOMPARE(file.readScaleX(0), 77.25);
        file.writeScaleY(0, 1.0);
        QCOMPARE(scratch_settings::value("Library/own").toString(), QStringLiteral("text"));
        QCOMPARE(scratch_settings::value("BPM1/Odd").toInt(), 1);
    }

    void malformedNumberReadsAsZero()
    {
        scratch_settings::setValue("BPM1/Scale_X", QStringLiteral("12,5"));
        scratch_settings::setValue("BPM1/Top", QStringLiteral("top"));
        scratch_settings::setValue("Beamline/DAC_posXhf", QStringLiteral("two"));
        QCOMPARE(file.readScaleX(0), 0.0);
        int channels[4] = {};
        file.readChannels(&channels[0], &channels[1], &channels[2], &channels[3], 0);
        QCOMPARE(channels[0], 0);
        int outputs[4] = {};
        file.readDACpos(&outputs[0], &outputs[1], &outputs[2], &outputs[3]);
        QCOMPARE(outputs[1], 0);
        QCOMPARE(outputs[3], 3);
    }

    void whatIsNoFiniteNumberReadsAsZero_data()
    {
        QTest::addColumn<QString>("text");
        for (const char* text : {"nan", "NaN", "-nan", "inf", "+inf", "-inf", "infinity", "1e999", "-1e999"})
            QTest::newRow(text) << QString::fromLatin1(text);
    }
    void whatIsNoFiniteNumberReadsAsZero()
    {
        QFETCH(QString, text);
        QByteArray content;
        for (const char* group : {"BPM1", "BPM2", "ROCandROI", "ROCandROI2", "PID_Xlf", "PID_Xhf", "PID_Ylf",
                                  "PID_Ylhf", "PID_Yhf", "PositionFilters"}) {
            content += '[' + QByteArray(group) + "]\n";
            for (const char* key :
                 {"Scale_X", "Scale_Y", "Offset_X", "Offset_Y", "BeamOffTh", "RoiX", "RoiY", "RoiI0min", "RoiI0max",
                  "Roc", "XlfFcutLow", "YlfFcutLow", "XhfFcutLow", "XhfFcutHigh", "YhfFcutLow", "YhfFcutHigh"})
                content += QByteArray(key) + '=' + text.toLatin1() + '\n';
            for (const char* key : pidKeys)
                content += QByteArray(key) + '=' + text.toLatin1() + '\n';
        }
        content += "[IIR_X]\na\\1\\val=" + text.toLatin1() + '\n';
        QFile settings(settingsPath());
        QVERIFY(settings.open(QIODevice::WriteOnly));
        settings.write(content);
        settings.close();

        for (int bpm = 0; bpm < 2; ++bpm) {
            double values[6] = {-1, -1, -1, -1, -1, -1};
            file.readBeamOffTh(&values[0], bpm);
            file.readROI(&values[1], &values[2], &values[3], &values[4], &values[5], bpm);
            for (const double value : values)
                QCOMPARE(value, 0.0);
            for (const double value :
                 {file.readScaleX(bpm), file.readScaleY(bpm), file.readOffsetX(bpm), file.readOffsetY(bpm)})
                QCOMPARE(value, 0.0);
        }
        for (const PidGroup& group : pidGroups)
            QCOMPARE(readPid(group), Ten{});
        for (int filter = 0; filter < 4; ++filter) {
            int type = -1;
            double low = -1;
            double high = 0;
            file.readPositionFilter(filter / 2, filter % 2, &type, &low, &high);
            QCOMPARE(low, 0.0);
            QCOMPARE(high, 0.0);
        }
        Ten coefficients[6];
        file.readIIR(coefficients[0].data(), coefficients[1].data(), coefficients[2].data(), coefficients[3].data(),
                     coefficients[4].data(), coefficients[5].data());
        QCOMPARE(coefficients[0], Ten{});
    }

    void valuesKeepTheirFullPrecision()
    {
        file.writeScaleX(0, 0.1 + 0.2);
        QCOMPARE(file.readScaleX(0), 0.1 + 0.2);
        file.writeOffsetX(1, -1.7976931348623157e308);
        QCOMPARE(file.readOffsetX(1), -1.7976931348623157e308);
    }

    void pathInAMissingFolderReadsAsEmptyUntilAWriteMakesIt()
    {
        const QTemporaryDir folder;
        scratch_settings::setPath(folder.filePath(QStringLiteral("KORALINK/config_koralink.ini")));
        compareWithEmptyFile();
        file.writeScaleX(0, 4.5);
        QCOMPARE(file.readScaleX(0), 4.5);
    }

    void directoryInTheFilesPlaceReadsAsEmptyAndLosesWrites()
    {
        const QTemporaryDir folder;
        scratch_settings::setPath(folder.path());
        compareWithEmptyFile();
        writeOneOfEach();
        compareWithEmptyFile();
        QVERIFY(QDir(folder.path()).isEmpty());
    }

    void pathBelowAFileReadsAsEmptyAndLosesWrites()
    {
        scratch_settings::setPath(QStringLiteral("/dev/null/config_koralink.ini"));
        compareWithEmptyFile();
        writeOneOfEach();
        compareWithEmptyFile();
    }

    void fullDiskLosesWritesAndKeepsTheOldFile()
    {
        const QTemporaryDir folder;
        scratch_settings::setPath(folder.filePath(QStringLiteral("config_koralink.ini")));
        file.writeScaleX(0, 3.5);
        const QByteArray before = contentOf(settingsPath());
        {
            const FullDisk disk;
            writeOneOfEach();
        }
        QCOMPARE(contentOf(settingsPath()), before);
    }

    void binaryGarbageReadsAsEmptyAndTakesWrites()
    {
        QByteArray garbage;
        for (int i = 0; i < 4096; ++i)
            garbage.append(char((i * 7919 + (i >> 3)) & 0xff));
        QFile garbled(settingsPath());
        QVERIFY(garbled.open(QIODevice::WriteOnly));
        garbled.write(garbage);
        garbled.close();
        compareWithEmptyFile();
        file.writeScaleX(0, 6.5);
        QCOMPARE(file.readScaleX(0), 6.5);
    }

private:
    static void bpmRows(const char* first, const char* second)
    {
        QTest::addColumn<int>("bpm");
        QTest::addColumn<QString>("group");
        QTest::newRow(first) << 0 << QString::fromLatin1(first);
        QTest::newRow(second) << 1 << QString::fromLatin1(second);
    }
};

QTEST_MAIN(ConfigFileTest)
#include "ConfigFileTest.moc"
