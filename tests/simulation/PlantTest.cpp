#include "simulation/Plant.h"
#include "simulation/PowerOn.h"
#include "simulation/Rates.h"

#include <QTest>

#include <cmath>
#include <complex>
#include <functional>
#include <vector>

using namespace kora::simulation;

namespace {

std::vector<DisplayRecord> newest(const Plant& plant, int count)
{
    std::vector<DisplayRecord> records(std::size_t(count), DisplayRecord{});
    plant.stream().copyNewest(records.data(), count);
    return records;
}

double meanOf(const std::vector<DisplayRecord>& records, double DisplayRecord::*field)
{
    double sum = 0;
    for (const DisplayRecord& record : records)
        sum += record.*field;
    return sum / double(records.size());
}

/// RMS of position X of BPM1 between 0.1 and 10 Hz, micrometres, over the newest 8192 records at 1000 Hz.
double slowMotion(const Plant& plant)
{
    const auto records = newest(plant, 8192);
    const double mean = meanOf(records, &DisplayRecord::pos1X);
    double power = 0;
    for (int bin = 1; bin * 1000.0 / 8192 < 10; ++bin) {
        std::complex<double> sum;
        for (std::size_t i = 0; i < records.size(); ++i)
            sum += (records[i].pos1X - mean) * std::polar(1.0, -2 * M_PI * bin * double(i) / 8192);
        power += 2 * std::norm(sum / 8192.0);
    }
    return powerOn::scale * std::sqrt(power);
}

/// All that can be seen of a plant, byte by byte.
QByteArray look(const Plant& plant)
{
    QByteArray seen;
    const auto add = [&seen](const auto& what) { seen.append(reinterpret_cast<const char*>(&what), int(sizeof what)); };
    for (const DisplayRecord& record : newest(plant, DisplayStream::largestBlock))
        add(record);
    add(plant.statistics());
    add(plant.beamAtMonitor());
    for (int amplifier = 0; amplifier < 2; ++amplifier) {
        add(plant.amplifierStatus(amplifier));
        add(plant.currentRecord(amplifier));
    }
    return seen;
}

void runSeconds(Plant& plant, double seconds)
{
    plant.run(std::llround(seconds * physicsRate));
}

void drive(Plant& plant, double x, double xFine, double y = powerOn::restVolts, double yFine = powerOn::restVolts)
{
    const double volts[4] = {x, xFine, y, yFine};
    plant.outputs().write(volts);
}

void quiet(Plant& plant)
{
    plant.beam().quiet();
    plant.amplifier(0).setNoise(0);
    plant.amplifier(1).setNoise(0);
}

/// Position of BPM1 as it is read, micrometres, on a beam that is driven off its axis.
PositionReading readAt(Plant& plant, double xMicrometres, double yMicrometres)
{
    plant.outputs().setSource(OutputUnit::sourceDirect);
    drive(plant, powerOn::restVolts + xMicrometres / powerOn::actuators[0].gain, powerOn::restVolts,
          powerOn::restVolts + yMicrometres / powerOn::actuators[2].gain);
    runSeconds(plant, 0.1);
    const DisplayRecord record = newest(plant, 1).front();
    return {record.pos1X * powerOn::scale, record.pos1Y * powerOn::scale, record.int1};
}

} // namespace

Q_DECLARE_METATYPE(std::function<void(Plant&)>)

class PlantTest : public QObject
{
    Q_OBJECT

private slots:
    void powerOnShowsABeamline()
    {
        Plant plant(1000);
        runSeconds(plant, 12);
        const auto records = newest(plant, 10000);
        for (const double DisplayRecord::*position :
             {&DisplayRecord::pos1X, &DisplayRecord::pos1Y, &DisplayRecord::pos2X, &DisplayRecord::pos2Y}) {
            double largest = 0;
            for (const DisplayRecord& record : records)
                largest = std::max(largest, std::fabs(record.*position) * powerOn::scale);
            QVERIFY(largest > 3);
            QVERIFY(largest < 30);
        }
        for (int channel = 0; channel < 4; ++channel) {
            QVERIFY(records.back().cur1[channel] > 0.8e-6);
            QVERIFY(records.back().cur2[channel] < 1.2e-6);
            QCOMPARE(records.back().dac[channel], powerOn::restVolts);
        }
        QVERIFY(std::fabs(records.back().int1 / 4e-6 - 1) < 0.02);
        QCOMPARE(records.back().xLf, records.back().pos1X);
        QCOMPARE(records.back().funcGenRefB, 0.0f);
        QCOMPARE(int(plant.loops().status()), int(PidStatusOff));
    }

    void longRunsComputeWhatSingleStepsDoToTheBit_data()
    {
        QTest::addColumn<std::function<void(Plant&)>>("change");
        const auto row = [](const char* name, std::function<void(Plant&)> change) { QTest::newRow(name) << change; };
        row("power-on", [](Plant&) {});
        row("all loops", [](Plant& plant) {
            plant.loops().setConfiguration(7);
            plant.loops().enable(true);
        });
        row("kick", [](Plant& plant) { plant.beam().kick(20, -7); });
        row("odd number of lines", [](Plant& plant) { plant.beam().setVibration(6, {77, 3, 4}); });
        row("line that comes back", [](Plant& plant) {
            plant.beam().setVibration(5, {99.8, 0, 0});
            plant.run(5003);
            plant.beam().setVibration(5, {99.8, 1, 1});
        });
        row("empty port", [](Plant& plant) { plant.ports().plug(1, 0); });
        row("encoder box", [](Plant& plant) { plant.ports().plug(0, 0x2300); });
        row("no output unit", [](Plant& plant) { plant.ports().plug(2, 0); });
        row("automatic range", [](Plant& plant) {
            plant.amplifier(0).setNoise(2e-8);
            plant.amplifier(0).setRange(CurrentAmplifier::automaticRange);
            plant.outputs().setSource(OutputUnit::sourceDirect);
            drive(plant, powerOn::tuningPeak + 1.1, powerOn::tuningPeak);
        });
        row("filtered stream", [](Plant& plant) { plant.stream().setRate(5000, true); });
        row("rate beside the loops'", [](Plant& plant) { plant.stream().setRate(7777, false); });
        row("standing stream", [](Plant& plant) { plant.stream().setRate(0, true); });
        row("generator", [](Plant& plant) {
            const float volts[4] = {1, 1, 1, 1};
            plant.generator().configure(volts, volts, 33);
            plant.generator().enable(3);
        });
        row("rising bias", [](Plant& plant) {
            plant.amplifier(1).highVoltage().setTarget(30);
            plant.amplifier(1).highVoltage().enable(true);
        });
        row("moved outputs", [](Plant& plant) {
            plant.outputs().setSource(OutputUnit::sourceDirect);
            drive(plant, 5.1, 4.8, 5, 6);
        });
    }

    void longRunsComputeWhatSingleStepsDoToTheBit()
    {
        QFETCH(std::function<void(Plant&)>, change);
        Plant once(1000);
        Plant bySteps(1000);
        for (Plant* plant : {&once, &bySteps}) {
            plant->run(5001);
            change(*plant);
        }
        once.run(60002);
        for (int i = 0; i < 60002; ++i)
            bySteps.run(1);
        QVERIFY(look(once) == look(bySteps));
        for (Plant* plant : {&once, &bySteps}) {
            plant->outputs().setSource(OutputUnit::sourceDirect);
            drive(*plant, 5.2, 4.9);
        }
        once.run(777);
        for (int i = 0; i < 111; ++i)
            bySteps.run(7);
        QVERIFY(look(once) == look(bySteps));
    }

    void loopsBringTheBeamToRest_data()
    {
        QTest::addColumn<int>("configuration");
        QTest::newRow("low-frequency loops") << 2;
        QTest::newRow("all loops") << 7;
    }

    void loopsBringTheBeamToRest()
    {
        QFETCH(int, configuration);
        Plant plant(1000);
        runSeconds(plant, 12);
        const BPMStats open = plant.statistics();
        const double openMotion = slowMotion(plant);
        plant.loops().setConfiguration(configuration);
        plant.loops().enable(true);
        runSeconds(plant, 10);
        const BPMStats closed = plant.statistics();
        QCOMPARE(int(plant.loops().status()), int(PidStatusOn));
        QVERIFY(closed.bpm[0].posXStd <= open.bpm[0].posXStd / 5);
        QVERIFY(closed.bpm[0].posYStd <= open.bpm[0].posYStd / 5);
        QVERIFY(slowMotion(plant) <= openMotion / 10);
        QVERIFY(std::fabs(closed.bpm[0].posXMean * powerOn::scale) < 0.05);
    }

    void meanFollowsTheSetpoint()
    {
        Plant plant(1000);
        plant.loops().enable(true);
        plant.loops().controller(0).setSetpoint(5);
        plant.loops().controller(2).setSetpoint(-3);
        runSeconds(plant, 3);
        const BPMStats stats = plant.statistics();
        QVERIFY(std::fabs(stats.bpm[0].posXMean * powerOn::scale - 5) < 0.2);
        QVERIFY(std::fabs(stats.bpm[0].posYMean * powerOn::scale + 3) < 0.2);
    }

    void beamOffHoldsAndTheReturnResumes()
    {
        Plant plant(1000);
        plant.interlock().enable(2, true);
        plant.interlock().enable(0, true);
        plant.loops().enable(true);
        runSeconds(plant, 1);
        plant.beam().setOn(false);
        runSeconds(plant, 0.01);
        QCOMPARE(int(plant.loops().status()), int(PidStatusBeamOff));
        const double held = plant.outputs().volts()[0];
        runSeconds(plant, 1);
        QCOMPARE(plant.outputs().volts()[0], held);
        plant.beam().setOn(true);
        runSeconds(plant, 0.01);
        QCOMPARE(int(plant.loops().status()), int(PidStatusOn));
    }

    void kickOutOfTheRegionIsAFault()
    {
        Plant plant(1000);
        plant.interlock().enable(0, true);
        plant.loops().enable(true);
        runSeconds(plant, 1);
        plant.beam().kick(20, 0);
        runSeconds(plant, 0.1);
        QCOMPARE(int(plant.loops().status()), int(PidStatusOn));
        plant.beam().kick(80, 0);
        runSeconds(plant, 0.01);
        QCOMPARE(int(plant.loops().status()), int(PidStatusOutOfRoc));
    }

    void demodulationRecoversTheActuator()
    {
        const double amplitude = 1;
        std::vector<double> weak;
        Plant plant(1000);
        for (int i = 0; i < 20; ++i) {
            const double hertz = std::pow(500, i / 19.0);
            // Rate, wait and block of the frequency analysis.
            plant.stream().setRate(hertz >= 10 ? 10000 : 1000, false);
            float amplitudes[4] = {float(amplitude), 0, 0, 0};
            float offsets[4] = {float(powerOn::restVolts), 0, 0, 0};
            plant.generator().configure(amplitudes, offsets, float(hertz));
            plant.generator().enable(2);
            runSeconds(plant, hertz >= 10 ? std::max(10 / hertz + 1, 1.4337) : 14.337);
            auto records = newest(plant, largestBlockRecords);
            records.pop_back();
            plant.generator().enable(0);
            const double mean = meanOf(records, &DisplayRecord::xLf);
            double inPhase = 0;
            double quadrature = 0;
            for (const DisplayRecord& record : records) {
                const double position = (record.xLf - mean) * powerOn::scale;
                inPhase += position * double(record.funcGenRefA) / double(records.size());
                quadrature += position * double(record.funcGenRefB) / double(records.size());
            }
            const std::complex<double> measured = std::complex<double>(inPhase, quadrature) / amplitude;
            const std::complex<double> expected = Actuator::response(powerOn::actuators[0], hertz);
            const double magnitudeError = std::fabs(std::abs(measured) / std::abs(expected) - 1);
            const double phaseError = std::fabs(std::arg(measured / expected)) * 180 / M_PI;
            if (magnitudeError > 0.03 || phaseError > 3)
                qWarning("%g Hz: magnitude off by %.2f %%, phase by %.2f degrees", hertz, 100 * magnitudeError,
                         phaseError);
            QVERIFY(magnitudeError <= 0.03);
            QVERIFY(phaseError <= 3);
        }
    }

    void stepOfAnOutputMovesTheBeamByItsGain()
    {
        Plant plant(50000);
        quiet(plant);
        plant.outputs().setSource(OutputUnit::sourceDirect);
        const double step = 0.1;
        for (int output = 0; output < 4; ++output) {
            drive(plant, 5, 5, 5, 5);
            runSeconds(plant, 0.2);
            double volts[4] = {5, 5, 5, 5};
            volts[output] += step;
            plant.outputs().write(volts);
            runSeconds(plant, 0.2);
            const BeamSample beam = plant.beamAtMonitor();
            const double moved = output < 2 ? beam.x : beam.y;
            QVERIFY(std::fabs(moved - step * powerOn::actuators[output].gain) < 1e-6);
            const DisplayRecord record = newest(plant, 1).front();
            const double raw = output < 2 ? record.pos1X : record.pos1Y;
            QVERIFY(std::fabs(raw * powerOn::scale / moved - 1) < 0.002);
            const double second = output < 2 ? record.pos2X : record.pos2Y;
            QVERIFY(std::fabs(second * powerOn::scale / moved - powerOn::lever[1]) < 0.004);
        }
    }

    void scanFindsThePeakOfTheIntensity_data()
    {
        QTest::addColumn<int>("output");
        QTest::newRow("output 0") << 0;
        QTest::newRow("output 1") << 1;
    }

    void scanFindsThePeakOfTheIntensity()
    {
        QFETCH(int, output);
        Plant plant(1000);
        plant.outputs().setSource(OutputUnit::sourceDirect);
        double best = 0;
        double bestVolts = 0;
        double atEnd = 0;
        const int points = 64;
        for (int i = 0; i < points; ++i) {
            double volts[4] = {5, 5, 0, 0};
            volts[output] = 4 + 2.0 * i / points;
            plant.outputs().write(volts);
            runSeconds(plant, i == 0 ? 1 : 0.01);
            const CurrentRecord currents = plant.currentRecord(0);
            atEnd = currents.amps[0] + currents.amps[1] + currents.amps[2] + currents.amps[3];
            if (atEnd > best) {
                best = atEnd;
                bestVolts = volts[output];
            }
        }
        QVERIFY(std::fabs(bestVolts - powerOn::tuningPeak) <= 2.0 / points);
        QVERIFY(atEnd < 0.2 * best);
    }

    void exchangedChannelsAreSeen()
    {
        Plant plant(50000);
        quiet(plant);
        const PositionReading right = readAt(plant, 40, 0);
        QVERIFY(std::fabs(right.x - 40) < 0.3);
        QVERIFY(std::fabs(right.y) < 0.1);
        plant.monitor(0).crossbar().connect(1, 0, 2, 3);
        const PositionReading wrong = readAt(plant, 40, 0);
        // With half the motion d = 0.04 the shares are 0.25 + d + d^2, 0.25 - d + d^2 and 0.25 - d^2.
        QVERIFY(std::fabs(wrong.x - 500 * (0.04 - 2 * 0.0016)) < 0.2);
        QVERIFY(std::fabs(wrong.y - 500 * (0.04 + 2 * 0.0016)) < 0.2);
        plant.monitor(0).crossbar().connect(0, 3, 2, 1);
        QVERIFY(std::fabs(readAt(plant, 40, 0).x + 40) < 0.3);
    }

    void wrongOrientationTurnsThePicture()
    {
        Plant plant(50000);
        quiet(plant);
        plant.monitor(0).setOrientation(0);
        const PositionReading turned = readAt(plant, 40, 0);
        QVERIFY(std::fabs(turned.x - 40) < 0.3);
        QVERIFY(std::fabs(turned.y + 40) < 0.3);
    }

    void tooSmallRangeHidesThePosition()
    {
        Plant plant(50000);
        quiet(plant);
        plant.amplifier(0).setRange(1);
        const PositionReading clipped = readAt(plant, 40, 20);
        QCOMPARE(clipped.x, 0.0);
        QCOMPARE(clipped.y, 0.0);
        QVERIFY(std::fabs(clipped.intensity - 4e-7) < 1e-12);
    }

    void offsetAndScaleActOnTheReadingAndTheLoops()
    {
        Plant plant(1000);
        quiet(plant);
        plant.monitor(0).setOffset(10, 0);
        QVERIFY(std::fabs(readAt(plant, 0, 0).x - 10) < 1e-6);
        plant.outputs().setSource(OutputUnit::sourceLoops);
        plant.loops().enable(true);
        runSeconds(plant, 2);
        // The loop brings the shown position to zero, and so the beam to the other side.
        QVERIFY(std::fabs(plant.beamAtMonitor().x + 10) < 0.1);
    }

    void lowPassHidesFastMotionFromItsLoopAlone()
    {
        Plant plant(1000);
        quiet(plant);
        plant.beam().setVibration(0, {80, 10, 0});
        plant.loops().filter(0).bypass(false);
        runSeconds(plant, 3);
        double path = 0;
        double position = 0;
        for (const DisplayRecord& record : newest(plant, 1000)) {
            path = std::max(path, std::fabs(record.xLf) * powerOn::scale);
            position = std::max(position, std::fabs(record.pos1X) * powerOn::scale);
        }
        QVERIFY(position > 9.5);
        QVERIFY(path < 0.1);
    }

    void highVoltageRaisesTheCurrents()
    {
        Plant plant(1000);
        quiet(plant);
        runSeconds(plant, 0.1);
        const double before = newest(plant, 1).front().int1;
        plant.amplifier(0).highVoltage().setTarget(500);
        plant.amplifier(0).highVoltage().enable(true);
        runSeconds(plant, 6);
        const DisplayRecord record = newest(plant, 1).front();
        QVERIFY(std::fabs(record.int1 / before - (1 - 0.2 * std::exp(-500 / 120.0)) / 0.8) < 1e-6);
        QVERIFY(std::fabs(record.int2 / before - 1) < 1e-6);
    }

    void encoderBoxServesAsMonitorAndSlowsTheLoops()
    {
        Plant plant(1000);
        quiet(plant);
        plant.ports().plug(0, 0x2300);
        const PositionReading reading = readAt(plant, 25, -10);
        QVERIFY(std::fabs(reading.x - 25) < 1e-4);
        QVERIFY(std::fabs(reading.y + 10) < 1e-4);
        QCOMPARE(reading.intensity, 0.0);
        QCOMPARE(newest(plant, 1).front().cur1[0], 0.0);
        // The windows of the loops are counted at 5 kHz: the output moves every second millisecond.
        plant.stream().setRate(50000, false);
        plant.outputs().setSource(OutputUnit::sourceLoops);
        plant.interlock().enable(2, true);
        plant.beam().setVibration(0, {20, 10, 10});
        plant.loops().enable(true);
        runSeconds(plant, 0.2);
        int moves = 0;
        const auto records = newest(plant, 5000);
        for (std::size_t i = 1; i < records.size(); ++i)
            moves += records[i].dac[0] != records[i - 1].dac[0];
        QVERIFY(std::abs(moves - 50) <= 1);
        QCOMPARE(int(plant.loops().status()), int(PidStatusOn));
    }

    void emptyPortDeliversNothing()
    {
        Plant plant(1000);
        plant.ports().plug(1, 0);
        runSeconds(plant, 1.5);
        const DisplayRecord record = newest(plant, 1).front();
        QCOMPARE(record.pos2X, 0.0);
        QCOMPARE(record.int2, 0.0);
        QCOMPARE(record.cur2[2], 0.0);
        QCOMPARE(plant.statistics().bpm[1].posXStd, 0.0);
        QVERIFY(record.int1 > 1e-6);
    }

    void unpluggedOutputUnitLeavesTheActuatorsWithoutVoltage()
    {
        Plant plant(1000);
        plant.ports().plug(2, 0);
        runSeconds(plant, 0.1);
        QCOMPARE(newest(plant, 1).front().dac[3], 0.0);
        QVERIFY(plant.beamAtMonitor().x < -250);
    }
};

QTEST_APPLESS_MAIN(PlantTest)
#include "PlantTest.moc"
