#include "app/RandomFaults.h"

#include "app/Dice.h"
#include "hardware/SettingsPath.h"
#include "simulation/Operations.h"
#include "simulation/SimulationControl.h"
#include "stream/DeviceRecords.h"

#include <QDir>
#include <QFile>

using kora::simulation::operationNames;

namespace {

constexpr const char* devicePaths[] = {streamDevicePath, amplifierDevicePath[0], amplifierDevicePath[1],
                                       outputDevicePath};
constexpr std::uint16_t deviceCodes[] = {0, 0x2101, 0x2101, 0x2102, 0x2300, 0x2301, 0x2200, 0xffff};
constexpr int shortBlockRarity = 12;

void removeSettings()
{
    QDir(settingsPath()).removeRecursively();
    QFile::remove(settingsPath());
}

void writeSettings(const QByteArray& bytes)
{
    removeSettings();
    QFile file(settingsPath());
    if (file.open(QIODevice::WriteOnly))
        file.write(bytes);
}

} // namespace

QString RandomFaults::strike()
{
    switch (dice.below(7)) {
    case 0:
        return plugSomething();
    case 1:
        return loseDevice();
    case 2:
        return spoilSettings();
    case 3:
        return spoilStream();
    case 4:
    case 5:
        return failSomeFunction();
    default:
        return moveTheBeam();
    }
}

void RandomFaults::repair()
{
    for (const char* operation : operationNames)
        plant.failFunction(operation, 0);
    for (const char* path : devicePaths)
        plant.setDevicePresent(path, true);
    plant.truncateBlocks(0);
    plant.setGarbageBlocks(false);
    plant.setBeamOn(true);
    plant.plug(0, 0x2101);
    plant.plug(1, 0x2101);
    writeSettings(QByteArray());
    QFile::remove(settingsPath());
    QFile::copy(QStringLiteral(KORA_TRAINING_SETTINGS), settingsPath());
}

QString RandomFaults::plugSomething()
{
    const int port = dice.below(4);
    const std::uint16_t code = dice.pick(deviceCodes);
    plant.plug(port, code);
    return QStringLiteral("plug %1 into port %2").arg(code, 4, 16, QLatin1Char('0')).arg(port);
}

QString RandomFaults::moveTheBeam()
{
    switch (dice.below(4)) {
    case 0:
        plant.setBeamOn(dice.oneIn(2));
        return QStringLiteral("beam on or off");
    case 1:
        plant.setNoise(dice.fraction(), dice.fraction() * 1e-8);
        return QStringLiteral("noise");
    case 2:
        plant.setVibration(dice.below(8), dice.fraction() * 500, dice.fraction() * 20, 5);
        return QStringLiteral("vibration");
    default:
        plant.kick(dice.between(-2000, 2000), dice.between(-2000, 2000));
        return QStringLiteral("kick");
    }
}

QString RandomFaults::failSomeFunction()
{
    const char* operation = dice.pick(operationNames);
    const int times = dice.between(-1, 5);
    // A stream that fails until told otherwise would end one session after the other.
    const bool endsTheProgram = qstrcmp(operation, "getBuffer") == 0;
    plant.failFunction(operation, endsTheProgram ? int(dice.oneIn(shortBlockRarity)) : times);
    return QStringLiteral("fail %1 %2 times").arg(QLatin1String(operation)).arg(times);
}

QString RandomFaults::loseDevice()
{
    const char* path = dice.pick(devicePaths);
    const bool present = dice.oneIn(2);
    plant.setDevicePresent(path, present);
    return QLatin1String(path) + (present ? QStringLiteral(" appears") : QStringLiteral(" vanishes"));
}

QString RandomFaults::spoilSettings()
{
    switch (dice.below(5)) {
    case 0:
        removeSettings();
        return QStringLiteral("settings file vanishes");
    case 1: {
        QByteArray bytes(dice.between(0, 4000), '\0');
        for (char& byte : bytes)
            byte = char(dice.below(256));
        writeSettings(bytes);
        return QStringLiteral("settings file of garbage");
    }
    case 2:
        removeSettings();
        QDir().mkpath(settingsPath());
        return QStringLiteral("folder in place of the settings file");
    case 3:
        writeSettings("[BPM1]\nScale_X=nan\nScale_Y=1e999\nTop=-7\nRight=99999999999\n[Beamline]\nDAC_posXlf=-3\n"
                      "DAC_posXhf=77\n[PID_Xlf]\nFreq=0\nOffset=inf\n[PositionFilters]\nXlfFilter=900\n"
                      "XhfFcutLow=-1\n[ROCandROI]\nRoiX=nan\nRoc=-5\n");
        return QStringLiteral("settings beyond all limits");
    default:
        removeSettings();
        QFile::copy(QStringLiteral(KORA_TRAINING_SETTINGS), settingsPath());
        return QStringLiteral("settings of the training");
    }
}

QString RandomFaults::spoilStream()
{
    if (dice.oneIn(shortBlockRarity)) {
        plant.truncateBlocks(dice.between(1, 20000));
        return QStringLiteral("short blocks");
    }
    const bool garbage = dice.oneIn(2);
    plant.setGarbageBlocks(garbage);
    return garbage ? QStringLiteral("garbage blocks") : QStringLiteral("good blocks");
}
