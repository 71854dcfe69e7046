#include "ConsoleRun.h"
#include "FreshInstallation.h"
#include "PortDevices.h"
#include "hardware/koralink.h"
#include "simulation/PowerOn.h"
#include "stream/DeviceRecords.h"
#include "stream/DisplayRecord.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <clocale>
#include <cmath>
#include <vector>

using namespace kora::simulation;

namespace {

double currentOf(int channel)
{
    DisplayRecord record;
    return getBuffer(&record, 1) == 1 ? record.cur1[channel] : -1;
}

/// Result of opening a device file: 0, or errno.
int opening(const char* path)
{
    const int fd = open(path, O_RDONLY);
    if (fd < 0)
        return errno;
    close(fd);
    return 0;
}

} // namespace

/// Every command of the real kora-sim on the installation of this process, seen on plant, library and devices.
class ConsoleCommandsTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        // The listener lives in programs that turn the decimal point into a comma.
        if (!std::setlocale(LC_ALL, "de_DE.UTF-8"))
            qInfo("no locale with a decimal comma is installed: tried with the one there is");
    }

    void init()
    {
        control = freshInstallation();
        QVERIFY(control);
    }

    void beamGoesOffAndOn()
    {
        tell({"beam", "off"});
        QCOMPARE(control->state().beamOn, false);
        control->advance(0.01);
        QCOMPARE(control->state().flux, 0.0);
        QVERIFY(currentOf(0) < 1e-8);
        tell({"beam", "on"});
        control->advance(0.01);
        QVERIFY(std::fabs(control->state().flux - 1) < 0.05);
        QVERIFY(currentOf(0) > 1e-7);
    }

    void kickDisplacesTheBeamAndDecays()
    {
        tell({"quiet"});
        tell({"kick", "-12.5", "+8"});
        control->advance(0.001);
        QVERIFY(std::fabs(control->beamPosition().x + 12.5) < 0.1);
        QVERIFY(std::fabs(control->beamPosition().y - 8) < 0.1);
        control->advance(0.5);
        QVERIFY(std::fabs(control->beamPosition().x + 12.5 * std::exp(-1)) < 0.1);
    }

    void driftMovesTheBeamByItsAmplitude()
    {
        tell({"quiet"});
        tell({"drift", "30", "4", "0"});
        QCOMPARE(control->state().driftPeriodS, 4.0);
        QVERIFY(std::fabs(largestX(4) - 30) < 0.1);
        tell({"drift", "off"});
        QCOMPARE(largestX(4), 0.0);
        QCOMPARE(control->state().driftPeriodS, 4.0);
    }

    void driftKeepsWhatIsNotSaid()
    {
        tell({"drift", "7"});
        QCOMPARE(control->state().driftMicrometres, 7.0);
        QCOMPARE(control->state().driftPeriodS, 10.0);
        QCOMPARE(control->state().walkMicrometres, 1.0);
        tell({"drift", "8", "20"});
        QCOMPARE(control->state().driftPeriodS, 20.0);
        QCOMPARE(control->state().walkMicrometres, 1.0);
        tell({"drift", "8", "20", "0.25"});
        QCOMPARE(control->state().walkMicrometres, 0.25);
    }

    void vibrationLineHasFrequencyAndAmplitude()
    {
        tell({"quiet"});
        tell({"vibration", "7", "40", "2.5"});
        QVERIFY(std::fabs(largestX(0.1) - 2.5) < 0.01);
        QCOMPARE(control->state().lines[7].frequencyHz, 40.0);
        QCOMPARE(control->state().lines[7].yMicrometres, 2.5);
        tell({"vibration", "7", "40", "2.5", "1.5"});
        QCOMPARE(control->state().lines[7].yMicrometres, 1.5);
        tell({"vibration", "7", "off"});
        QCOMPARE(largestX(0.1), 0.0);
    }

    void noiseOfBeamAndAmplifiers()
    {
        tell({"quiet"});
        tell({"noise", "3"});
        QCOMPARE(control->state().noiseMicrometres, 3.0);
        QCOMPARE(control->state().currentNoiseAmps, 0.0);
        QVERIFY(largestX(0.02) > 3);
        tell({"noise", "0", "2e-8"});
        QCOMPARE(largestX(0.02), 0.0);
        QCOMPARE(control->state().currentNoiseAmps, 2e-8);
    }

    void negativeZeroIsZero()
    {
        tell({"drift", "-0", "10", "-0"});
        tell({"vibration", "6", "12.5", "-0"});
        tell({"noise", "-0", "-0"});
        QVERIFY(!tell({"status"}).contains(QStringLiteral("-0 ")));
    }

    void quietStopsAllMotion()
    {
        tell({"quiet"});
        control->advance(1);
        QCOMPARE(control->beamPosition().x, 0.0);
        QCOMPARE(control->state().currentNoiseAmps, 0.0);
    }

    void portsTakeAndLoseDevices()
    {
        QCOMPARE(deviceIn(3), std::uint16_t(0));
        tell({"plug", "D", "2301"});
        QCOMPARE(deviceIn(3), std::uint16_t(0x2301));
        tell({"plug", "d", "0x2A0f"});
        QCOMPARE(deviceIn(3), std::uint16_t(0x2a0f));
        tell({"unplug", "D"});
        QCOMPARE(deviceIn(3), std::uint16_t(0));
        QCOMPARE(deviceIn(0), std::uint16_t(0x2101));
        tell({"unplug", "a"});
        QCOMPARE(deviceIn(0), std::uint16_t(0));
    }

    void crossedCablesSwapCurrents()
    {
        tell({"quiet"});
        tell({"kick", "100", "0"});
        control->advance(0.001);
        const double right = currentOf(1);
        const double left = currentOf(3);
        QVERIFY(right > left + 1e-7);
        tell({"cable", "1", "1", "4", "3", "2"});
        control->advance(0.001);
        QVERIFY(std::fabs(currentOf(1) - left) < 0.01 * left);
        QVERIFY(std::fabs(currentOf(3) - right) < 0.01 * right);
    }

    void looseCableCarriesNothing()
    {
        tell({"quiet"});
        tell({"cable", "1", "1", "2", "3", "0"});
        control->advance(0.001);
        QCOMPARE(currentOf(3), 0.0);
        QVERIFY(currentOf(2) > 1e-7);
        tell({"reset"});
        control->advance(0.001);
        QVERIFY(currentOf(3) > 1e-7);
    }

    void deviceFilesGoAndComeBack()
    {
        for (const char* path : {streamDevicePath, amplifierDevicePath[0], amplifierDevicePath[1], outputDevicePath}) {
            const QString name = QString::fromLatin1(path).section(QLatin1Char('/'), -1);
            QCOMPARE(opening(path), 0);
            tell({QStringLiteral("remove"), name});
            QCOMPARE(opening(path), ENOENT);
            tell({QStringLiteral("restore"), QString::fromLatin1(path)});
            QCOMPARE(opening(path), 0);
        }
    }

    void openDeviceFileAnswersThatItIsGone()
    {
        const int fd = open(amplifierDevicePath[0], O_RDONLY);
        AmplifierStatus status;
        QCOMPARE(ioctl(fd, requestAmplifierStatus, &status), 0);
        tell({"remove", "kora_ionbar0"});
        QCOMPARE(ioctl(fd, requestAmplifierStatus, &status), -1);
        QCOMPARE(errno, ENODEV);
        close(fd);
    }

    void functionFailsOnce()
    {
        tell({"fail", "setCtrlReset"});
        QCOMPARE(setCtrlReset(), -1);
        QCOMPARE(setCtrlReset(), 0);
        tell({"fail", "setCtrlReset", "once"});
        QCOMPARE(setCtrlReset(), -1);
        QCOMPARE(setCtrlReset(), 0);
    }

    void functionFailsAsOftenAsTold()
    {
        tell({"fail", "setFBenable", "3"});
        for (int i = 0; i < 3; ++i)
            QCOMPARE(setFBenable(0), -1);
        QCOMPARE(setFBenable(0), 0);
    }

    void functionFailsUntilTold()
    {
        tell({"fail", "setFBenable", "always"});
        for (int i = 0; i < 20; ++i)
            QCOMPARE(setFBenable(0), -1);
        QCOMPARE(setCtrlReset(), 0);
        tell({"fail", "setFBenable", "off"});
        QCOMPARE(setFBenable(0), 0);
    }

    void blocksComeShort()
    {
        std::vector<DisplayRecord> records(100);
        tell({"blocks", "short", "30"});
        QCOMPARE(getBuffer(records.data(), 100), 70);
        const int fd = open(streamDevicePath, O_RDONLY);
        QCOMPARE(read(fd, records.data(), 100 * sizeof(DisplayRecord)), ssize_t(70 * sizeof(DisplayRecord)));
        close(fd);
        tell({"blocks", "good"});
        QCOMPARE(getBuffer(records.data(), 100), 100);
    }

    void blocksHoldGarbage()
    {
        std::vector<DisplayRecord> records(10);
        tell({"blocks", "garbage"});
        QCOMPARE(getBuffer(records.data(), 10), 10);
        QVERIFY(std::isnan(records[0].dac[0]) || std::isnan(records[1].dac[0]) || !std::isfinite(records[0].pos1X) ||
                std::isnan(records[0].pos1X));
        tell({"blocks", "good"});
        QCOMPARE(getBuffer(records.data(), 10), 10);
        for (const DisplayRecord& record : records)
            QVERIFY(std::isfinite(record.pos1X) && std::isfinite(record.dac[0]));
    }

    void repairEndsAllFaults()
    {
        tell({"fail", "setFBenable", "always"});
        tell({"fail", "setCtrlReset", "5"});
        tell({"remove", "kora_anvolt0"});
        tell({"blocks", "short", "3"});
        tell({"blocks", "garbage"});
        tell({"repair"});
        const InstallationState state = control->state();
        QVERIFY(!state.isAnythingFailing());
        QVERIFY(state.devicePresent[3]);
        QCOMPARE(state.missingRecords, 0);
        QCOMPARE(state.garbageBlocks, false);
    }

    void resetSwitchesOffAndOn()
    {
        tell({"beam", "off"});
        tell({"unplug", "A"});
        control->advance(3);
        tell({"reset"});
        QCOMPARE(control->time(), 0.0);
        QCOMPARE(control->state().beamOn, true);
        QCOMPARE(deviceIn(0), powerOn::devices[0]);
    }

    void timeIsTold()
    {
        control->advance(12.5);
        QCOMPARE(tell({"time"}), QStringLiteral("12.5\n"));
    }

    void statusShowsWhatIsThere()
    {
        tell({"plug", "D", "2301"});
        tell({"remove", "kora_ionbar1"});
        tell({"fail", "setFBenable", "3"});
        tell({"fail", "getLock", "always"});
        tell({"blocks", "short", "7"});
        tell({"cable", "2", "0", "2", "3", "4"});
        const QString status = tell({"status"});
        for (const char* part :
             {"beam          on, flux ", "drift         5 um in 10 s, random walk 1 um RMS",
              "noise         0.02 um RMS, amplifiers 1e-10 A RMS", "vibration     0: 0.53 Hz, x 2 um, y 1.6 um",
              "5: 99.8 Hz, x 0.05 um", "feedback      off, configuration 2", "outputs       5 V, 5 V, 5 V, 5 V",
              "stream        1000 Hz, blocks lack 7 records", "SFP A         2101", "SFP D         2301",
              "BPM1 cables   top 1, right 2, bottom 3, left 4", "BPM2 cables   top loose, right 2",
              "/dev/kora_ionbar1 removed", "getLock until told", "setFBenable 3 times"})
            QVERIFY2(status.contains(QLatin1String(part)),
                     qPrintable(QLatin1String(part) + QStringLiteral(" in\n") + status));
    }

    void statusFollowsTheFeedback()
    {
        QCOMPARE(setFBenable(1), 0);
        control->advance(0.1);
        QVERIFY(tell({"status"}).contains(QStringLiteral("feedback      on, configuration 2")));
    }

    void statusAsJsonHasAllValues()
    {
        tell({"kick", "3", "4"});
        tell({"unplug", "C"});
        tell({"remove", "kora_anvolt0"});
        tell({"fail", "getLock", "always"});
        tell({"blocks", "garbage"});
        control->advance(1.5);
        QJsonParseError error;
        const QJsonObject status = QJsonDocument::fromJson(tell({"status", "--json"}).toUtf8(), &error).object();
        QCOMPARE(error.error, QJsonParseError::NoError);
        const InstallationState state = control->state();
        QCOMPARE(status[QStringLiteral("time_s")].toDouble(), 1.5);
        QCOMPARE(status[QStringLiteral("driven_clock")].toBool(), true);
        const QJsonObject beam = status[QStringLiteral("beam")].toObject();
        QCOMPARE(beam[QStringLiteral("x_um")].toDouble(), state.position.x);
        QCOMPARE(beam[QStringLiteral("y_um")].toDouble(), state.position.y);
        QCOMPARE(beam[QStringLiteral("flux")].toDouble(), state.flux);
        QCOMPARE(beam[QStringLiteral("on")].toBool(), true);
        QCOMPARE(beam[QStringLiteral("drift_um")].toDouble(), 5.0);
        const QJsonArray lines = beam[QStringLiteral("vibration")].toArray();
        QCOMPARE(lines.size(), 8);
        QCOMPARE(lines[1].toObject()[QStringLiteral("frequency_hz")].toDouble(), 3.1);
        QCOMPARE(status[QStringLiteral("current_noise_a")].toDouble(), 1e-10);
        QCOMPARE(status[QStringLiteral("outputs_v")].toArray().size(), 4);
        QCOMPARE(status[QStringLiteral("outputs_v")].toArray()[2].toDouble(), state.outputVolts[2]);
        const QJsonObject ports = status[QStringLiteral("ports")].toObject();
        QCOMPARE(ports[QStringLiteral("A")].toString(), QStringLiteral("2101"));
        QVERIFY(ports[QStringLiteral("C")].isNull());
        QCOMPARE(status[QStringLiteral("devices")].toObject()[QStringLiteral("/dev/kora_anvolt0")].toBool(true), false);
        QCOMPARE(status[QStringLiteral("devices")].toObject()[QStringLiteral("/dev/kora_ionbar0")].toBool(), true);
        QCOMPARE(status[QStringLiteral("failing")].toObject()[QStringLiteral("getLock")].toInt(), -1);
        const QJsonObject stream = status[QStringLiteral("stream")].toObject();
        QCOMPARE(stream[QStringLiteral("rate_hz")].toInt(), 1000);
        QCOMPARE(stream[QStringLiteral("garbage")].toBool(), true);
        QCOMPARE(stream[QStringLiteral("missing_records")].toInt(), 0);
        QCOMPARE(status[QStringLiteral("cables")].toArray()[1].toArray()[3].toInt(), 4);
    }

private:
    /// Gives a command that must succeed; returns what it printed.
    static QString tell(const QStringList& words)
    {
        const ConsoleRun run = runConsole(forThisInstallation(words));
        if (run.status != 0 || !run.error.isEmpty())
            QTest::qFail(run.described().constData(), __FILE__, __LINE__);
        return run.output;
    }

    static QString tell(std::initializer_list<const char*> words)
    {
        QStringList list;
        for (const char* word : words)
            list += QString::fromLatin1(word);
        return tell(list);
    }

    /// Largest displacement of the beam in x within the next seconds.
    double largestX(double seconds)
    {
        constexpr double step = 0.0005;
        double largest = 0;
        for (double time = 0; time < seconds; time += step) {
            control->advance(step);
            largest = std::max(largest, std::fabs(control->beamPosition().x));
        }
        return largest;
    }

    SimulationControl* control = nullptr;
};

QTEST_GUILESS_MAIN(ConsoleCommandsTest)
#include "ConsoleCommandsTest.moc"
