#include "FreshInstallation.h"
#include "PortDevices.h"
#include "hardware/koralink.h"
#include "simulation/PowerOn.h"
#include "simulation/console/Commands.h"
#include "simulation/console/Scenario.h"
#include "stream/DeviceRecords.h"
#include "stream/DisplayRecord.h"

#include <QTest>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <vector>

using namespace kora::simulation;

namespace {

/// Where the simulated beam stands between the two interlock limits, A.
constexpr double intensity = 0.8 * powerOn::totalCurrent;

/// Two seconds of the stream.
std::vector<DisplayRecord> newestRecords()
{
    std::vector<DisplayRecord> records(2000);
    const int count = getBuffer(records.data(), int(records.size()));
    records.resize(std::size_t(std::max(count, 0)));
    return records;
}

double meanOf(const std::vector<DisplayRecord>& records, int slot)
{
    double sum = 0;
    for (const DisplayRecord& record : records)
        sum += slotValue(record, slot);
    return sum / double(records.size());
}

/// Correlation of two signals, 1 if they move together, -1 if they move against each other.
double correlation(const std::vector<DisplayRecord>& records, int slot, int otherSlot)
{
    const double mean = meanOf(records, slot);
    const double otherMean = meanOf(records, otherSlot);
    double both = 0;
    double squares = 0;
    double otherSquares = 0;
    for (const DisplayRecord& record : records) {
        const double x = slotValue(record, slot) - mean;
        const double y = slotValue(record, otherSlot) - otherMean;
        both += x * y;
        squares += x * x;
        otherSquares += y * y;
    }
    return both / std::sqrt(squares * otherSquares);
}

/// Bias voltage of the second amplifier as its device file tells it, V; NaN when there is none.
double secondBias()
{
    const int fd = open(amplifierDevicePath[1], O_RDONLY);
    AmplifierStatus status;
    const bool told = fd >= 0 && ioctl(fd, requestAmplifierStatus, &status) == 0;
    close(fd);
    return told ? double(status.highVoltageVolts()) : std::nan("");
}

} // namespace

/// What the remarks in the delivered scenarios promise, seen on library and device files.
class DeliveredScenariosTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        control = freshInstallation();
        QVERIFY(control);
    }

    void cablingIsInOrderBeforeAndAfter_data()
    {
        QTest::addColumn<double>("time");
        for (const double time : {30.0, 210.0, 390.0, 570.0, 750.0, 930.0, 1110.0, 1290.0})
            QTest::addRow("%g s", time) << time;
    }
    void cablingIsInOrderBeforeAndAfter()
    {
        QFETCH(double, time);
        play("cabling-mistakes", time);
        const auto records = newestRecords();
        QVERIFY(std::fabs(meanOf(records, SlotInt1) / intensity - 1) < 0.02);
        QVERIFY(std::fabs(meanOf(records, SlotInt2) / intensity - 1) < 0.02);
        QVERIFY(std::fabs(meanOf(records, SlotPos2X)) * powerOn::scale < 20);
        QVERIFY(correlation(records, SlotPos1X, SlotPos2X) > 0.99);
        QVERIFY(std::fabs(correlation(records, SlotPos1X, SlotPos1Y)) < 0.9);
        for (int port = 0; port < 4; ++port)
            QCOMPARE(deviceIn(port), powerOn::devices[std::size_t(port)]);
    }

    void topAndRightCrossedMakeTheCloudADiagonalLine()
    {
        play("cabling-mistakes", 2 * 60);
        const auto records = newestRecords();
        QVERIFY(correlation(records, SlotPos1X, SlotPos1Y) > 0.99);
        QVERIFY(std::fabs(correlation(records, SlotPos2X, SlotPos2Y)) < 0.9);
    }

    void crossbarPutsTopAndRightInOrder()
    {
        play("cabling-mistakes", 2 * 60);
        QCOMPARE(setCrossBar(0, 1, 0, 2, 3), 0);
        control->advance(3);
        const auto records = newestRecords();
        QVERIFY(std::fabs(correlation(records, SlotPos1X, SlotPos1Y)) < 0.9);
        QVERIFY(correlation(records, SlotPos1X, SlotPos2X) > 0.99);
    }

    void looseCableShowsTheBeamFarToTheRight()
    {
        play("cabling-mistakes", 5 * 60);
        const auto records = newestRecords();
        QVERIFY(std::fabs(meanOf(records, SlotCur2 + 3)) < 1e-10);
        QVERIFY(std::fabs(meanOf(records, SlotInt2) / (0.75 * intensity) - 1) < 0.05);
        QVERIFY(std::fabs(meanOf(records, SlotPos2X) * powerOn::scale - 165) < 15);
    }

    void leftAndRightCrossedMoveAgainstTheOtherMonitor()
    {
        play("cabling-mistakes", 8 * 60);
        const auto records = newestRecords();
        QVERIFY(correlation(records, SlotPos1X, SlotPos2X) < -0.99);
        QVERIFY(correlation(records, SlotPos1Y, SlotPos2Y) > 0.99);
    }

    void withoutOutputUnitNoBeamPasses()
    {
        play("cabling-mistakes", 11 * 60);
        const auto records = newestRecords();
        for (int output = 0; output < 4; ++output)
            QCOMPARE(meanOf(records, SlotDac + output), 0.0);
        QVERIFY(std::fabs(meanOf(records, SlotInt1)) < 1e-9);
        const auto [left, right] =
            std::minmax_element(records.begin(), records.end(),
                                [](const DisplayRecord& a, const DisplayRecord& b) { return a.pos1X < b.pos1X; });
        QVERIFY((right->pos1X - left->pos1X) * powerOn::scale > 500);
        QCOMPARE(deviceIn(2), std::uint16_t(0));
    }

    void outputUnitInTheWrongPortWorks()
    {
        play("cabling-mistakes", 14 * 60);
        const auto records = newestRecords();
        QVERIFY(std::fabs(meanOf(records, SlotInt1) / intensity - 1) < 0.02);
        QCOMPARE(meanOf(records, SlotDac), powerOn::restVolts);
        QCOMPARE(deviceIn(2), std::uint16_t(0));
        QCOMPARE(deviceIn(3), std::uint16_t(0x2200));
    }

    void exchangedAmplifierReadsItsBiasNegative()
    {
        play("cabling-mistakes", 17 * 60);
        QCOMPARE(deviceIn(1), std::uint16_t(0x2102));
        QCOMPARE(ionbarHVSetVoltage(1, 100), 0);
        QCOMPARE(ionbarHVenable(1, 1), 0);
        control->advance(3);
        QCOMPARE(secondBias(), -100.0);
    }

    void missingAmplifierDeliversNothing()
    {
        play("cabling-mistakes", 20 * 60);
        const auto records = newestRecords();
        for (int channel = 0; channel < 4; ++channel)
            QCOMPARE(meanOf(records, SlotCur1 + channel), 0.0);
        QVERIFY(std::fabs(meanOf(records, SlotInt2) / intensity - 1) < 0.02);
        QCOMPARE(deviceIn(0), std::uint16_t(0));
        QCOMPARE(open(amplifierDevicePath[0], O_RDONLY), -1);
    }

    void feedbackHoldsWithoutBeamGoesOnWithItAndStopsFarOff()
    {
        QCOMPARE(setROCenable(1, 1, 1, 0, 0, 0), 0);
        QCOMPARE(setFBenable(1), 0);
        play("beam-dump-and-recovery", 50);
        QCOMPARE(getPIDstatus(), PidStatusOn);
        play("beam-dump-and-recovery", 70, 50);
        QCOMPARE(getPIDstatus(), PidStatusBeamOff);
        const double held = control->outputVolts(0);
        play("beam-dump-and-recovery", 170, 70);
        QCOMPARE(control->outputVolts(0), held);
        QCOMPARE(getPIDstatus(), PidStatusBeamOff);
        play("beam-dump-and-recovery", 188, 170);
        QCOMPARE(getPIDstatus(), PidStatusOn);
        play("beam-dump-and-recovery", 200, 188);
        QCOMPARE(getPIDstatus(), PidStatusBeamOff);
        play("beam-dump-and-recovery", 270, 200);
        QCOMPARE(getPIDstatus(), PidStatusOutOfRoc);
        QCOMPARE(setFBenable(0), 0);
        QCOMPARE(setFBenable(1), 0);
        control->advance(5);
        QCOMPARE(getPIDstatus(), PidStatusOn);
        QVERIFY(std::fabs(meanOf(newestRecords(), SlotPos1X)) * powerOn::scale < 1);
    }

    void quietDayKeepsTheStandardDeviationDownUnderFeedback()
    {
        play("quiet-day", 1);
        control->advance(5);
        const double open = deviationOfX();
        QCOMPARE(setFBenable(1), 0);
        // Each change of the day, a minute later: the injections are over, the pump runs.
        double now = 1;
        for (const double time : {31 * 60.0, 61 * 60.0, 211 * 60.0, 301 * 60.0, 391 * 60.0, 481 * 60.0}) {
            play("quiet-day", time, now, 5);
            now = time;
            QCOMPARE(getPIDstatus(), PidStatusOn);
            QVERIFY2(deviationOfX() < 0.3 * open, qPrintable(QString::number(time)));
        }
    }

private:
    /// Performs the steps of a delivered scenario that lie between two times, with the waiting before,
    /// between and after them, none of it longer than a limit.
    void play(const char* name, double until, double from = -1, double longestWait = 3)
    {
        double now = std::max(from, 0.0);
        const auto wait = [&](double time) {
            control->advance(std::min(time - now, longestWait));
            now = time;
        };
        for (const Scenario::Step& step : Scenario::load(std::string(KORA_SCENARIOS "/") + name).steps) {
            if (step.time <= from || step.time > until)
                continue;
            wait(step.time);
            parseCommand(wordsOf(step.command))(*control);
        }
        wait(until);
    }

    /// Standard deviation of X at the first monitor, um.
    double deviationOfX() const
    {
        const auto records = newestRecords();
        const double mean = meanOf(records, SlotPos1X);
        double squares = 0;
        for (const DisplayRecord& record : records)
            squares += (record.pos1X - mean) * (record.pos1X - mean);
        return std::sqrt(squares / double(records.size())) * powerOn::scale;
    }

    SimulationControl* control = nullptr;
};

QTEST_GUILESS_MAIN(DeliveredScenariosTest)
#include "DeliveredScenariosTest.moc"
