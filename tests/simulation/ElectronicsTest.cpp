#include "simulation/Rates.h"
#include "simulation/detectors/CurrentAmplifier.h"
#include "simulation/outputs/FunctionGenerator.h"
#include "simulation/outputs/OutputUnit.h"
#include "simulation/processor/PositionMonitor.h"
#include "simulation/processor/SfpPorts.h"

#include <QTest>

#include <cmath>
#include <limits>

using namespace kora::simulation;

namespace {

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

} // namespace

class ElectronicsTest : public QObject
{
    Q_OBJECT

private slots:
    void rangeClipsAtFullScale()
    {
        CurrentAmplifier amplifier(1);
        amplifier.setNoise(0);
        const FourValues large = {2e-4, -2e-4, 1e-6, 0};
        QCOMPARE(amplifier.measure(large)[0], 100e-6);
        QCOMPARE(amplifier.amps()[1], -100e-6);
        QCOMPARE(amplifier.amps()[2], 0.8e-6);
        QVERIFY(amplifier.setRange(1));
        QCOMPARE(amplifier.measure(large)[2], 100e-9);
        QCOMPARE(amplifier.amps()[3], 0.0);
        QVERIFY(!amplifier.setRange(3));
        QCOMPARE(amplifier.rangeInUse(), 1);
    }

    void automaticRangeFollowsTheCurrent()
    {
        CurrentAmplifier amplifier(1);
        QVERIFY(amplifier.setRange(CurrentAmplifier::automaticRange));
        amplifier.measure({1e-9, 1e-9, 1e-9, 1e-9});
        QCOMPARE(amplifier.rangeInUse(), 1);
        amplifier.measure({1e-6, 1e-9, 1e-9, 1e-9});
        QCOMPARE(amplifier.rangeInUse(), 0);
        // Between the two levels nothing changes.
        amplifier.measure({90e-9, 1e-9, 1e-9, 1e-9});
        QCOMPARE(amplifier.rangeInUse(), 0);
        amplifier.measure({10e-9, 1e-9, 1e-9, 1e-9});
        QCOMPARE(amplifier.rangeInUse(), 1);
    }

    void smallRangeIsQuieter()
    {
        CurrentAmplifier amplifier(1);
        double squares[2] = {0, 0};
        for (int range = 0; range < 2; ++range) {
            amplifier.setRange(range);
            for (int i = 0; i < 20000; ++i) {
                const double current = amplifier.measure({0, 0, 0, 0})[0];
                squares[range] += current * current / 20000;
            }
        }
        QVERIFY(std::fabs(std::sqrt(squares[0]) - 1e-10) < 3e-12);
        QVERIFY(std::fabs(std::sqrt(squares[1]) / std::sqrt(squares[0]) - CurrentAmplifier::quietRangeNoise) < 0.003);
    }

    void biasRampsAtItsSlewRate()
    {
        HighVoltage bias;
        bias.setTarget(300);
        bias.advance(1);
        QCOMPARE(bias.volts(), 0.0);
        QCOMPARE(int(bias.state()), int(HighVoltageState::Off));
        bias.enable(true);
        QCOMPARE(int(bias.state()), int(HighVoltageState::Rising));
        bias.advance(1);
        QCOMPARE(bias.volts(), 100.0);
        // 100 V over 1 GOhm, and 10 nF charged with 100 V/s.
        QCOMPARE(bias.microamps(), 0.1 + 1);
        bias.advance(10);
        QCOMPARE(bias.volts(), 300.0);
        QCOMPARE(int(bias.state()), int(HighVoltageState::On));
        QCOMPARE(bias.microamps(), 0.3);
        bias.setTarget(250);
        QCOMPARE(int(bias.state()), int(HighVoltageState::Falling));
        // The cable gives its charge back.
        QCOMPARE(bias.microamps(), 0.3 - 1);
        bias.advance(0.5);
        QCOMPARE(int(bias.state()), int(HighVoltageState::On));
        bias.enable(false);
        bias.advance(0.1);
        QCOMPARE(int(bias.state()), int(HighVoltageState::Falling));
        bias.advance(10);
        QCOMPARE(bias.volts(), 0.0);
        QCOMPARE(int(bias.state()), int(HighVoltageState::Off));
    }

    void biasCollectsMoreCharge()
    {
        CurrentAmplifier amplifier(1);
        QCOMPARE(amplifier.collection(), 0.8);
        amplifier.highVoltage().setTarget(120);
        amplifier.highVoltage().enable(true);
        amplifier.advanceBias(10);
        QCOMPARE(amplifier.collection(), 1 - 0.2 * std::exp(-1.0));
    }

    void positionIsDifferenceOverSum()
    {
        PositionMonitor monitor;
        FourValues amps;
        amps[Top] = 1;
        amps[Right] = 4;
        amps[Bottom] = 2;
        amps[Left] = 3;
        PositionReading reading = monitor.evaluate(amps);
        QCOMPARE(reading.x, 0.1);
        QCOMPARE(reading.y, -0.1);
        QCOMPARE(reading.intensity, 10.0);
        QVERIFY(monitor.setOrientation(0));
        reading = monitor.evaluate(amps);
        QCOMPARE(reading.x, 0.0);
        QCOMPARE(reading.y, -0.2);
        QVERIFY(!monitor.setOrientation(2));
    }

    void crossbarSortsTheChannels()
    {
        PositionMonitor monitor;
        // Channels 1 to 4 carry left, bottom, right, top.
        QVERIFY(monitor.crossbar().connect(3, 2, 1, 0));
        const PositionReading reading = monitor.evaluate({3, 2, 4, 1});
        QCOMPARE(reading.x, 0.1);
        QCOMPARE(reading.y, -0.1);
        // The same channel twice is taken as it stands.
        QVERIFY(monitor.crossbar().connect(0, 1, 0, 1));
        QCOMPARE(monitor.evaluate({1, 3, 9, 9}).intensity, 8.0);
        QVERIFY(!monitor.crossbar().connect(0, 1, 2, 4));
        QVERIFY(!monitor.crossbar().connect(-1, 1, 2, 3));
        QCOMPARE(monitor.evaluate({1, 3, 9, 9}).intensity, 8.0);
    }

    void offsetIsAddedInMicrometres()
    {
        PositionMonitor monitor;
        QVERIFY(monitor.setScale(200, 400));
        QVERIFY(monitor.setOffset(10, -10));
        const PositionReading reading = monitor.evaluate({1, 1, 1, 1});
        QCOMPARE(reading.x * 200, 10.0);
        QCOMPARE(reading.y * 400, -10.0);
        // A new scale keeps the offset's micrometres.
        QVERIFY(monitor.setScale(100, 400));
        QCOMPARE(monitor.evaluate({1, 1, 1, 1}).x * 100, 10.0);
        QVERIFY(monitor.setScale(0, 0));
        QCOMPARE(monitor.evaluate({1, 1, 1, 1}).x, 0.0);
        QVERIFY(!monitor.setScale(notANumber, 1));
        QVERIFY(!monitor.setOffset(1, std::numeric_limits<double>::infinity()));
    }

    void positionSaturatesAndNeedsABeam()
    {
        PositionMonitor monitor;
        const PositionReading dark = monitor.evaluate({1e-10, -3e-10, 1e-10, 0});
        QCOMPARE(dark.x, 0.0);
        QCOMPARE(dark.y, 0.0);
        // Noise with a small positive sum.
        QCOMPARE(monitor.evaluate({0, 5e-10, 0, -4e-10}).x, 1.0);
        QCOMPARE(monitor.evaluate({0, -4e-10, 0, 5e-10}).x, -1.0);
    }

    void generatorDrivesItsOutputWithHalfThePeakToPeak()
    {
        FunctionGenerator generator;
        float amplitudes[4] = {0, 0.5f, 0, 0};
        float offsets[4] = {0, 4, 0, 0};
        QVERIFY(generator.configure(amplitudes, offsets, 100));
        QCOMPARE(generator.referenceB(), 0.0f);
        QVERIFY(generator.enable(3));
        QVERIFY(generator.isRunningOn(1));
        QVERIFY(!generator.isRunningOn(0));
        double lowest = 9;
        double highest = 0;
        for (int i = 0; i < physicsRate / 100; ++i) {
            const double phase = 2 * M_PI * 100 * i * physicsPeriod;
            QVERIFY(std::fabs(generator.volts() - (4 + 0.25 * std::sin(phase))) < 1e-9);
            QVERIFY(std::fabs(double(generator.referenceA()) - 4 * std::sin(phase)) < 1e-6);
            QVERIFY(std::fabs(double(generator.referenceB()) - 4 * std::cos(phase)) < 1e-6);
            lowest = std::min(lowest, generator.volts());
            highest = std::max(highest, generator.volts());
            generator.step();
        }
        QVERIFY(std::fabs(highest - lowest - 0.5) < 1e-4);
        QVERIFY(generator.enable(0));
        QVERIFY(!generator.isRunningOn(1));
        QCOMPARE(generator.referenceA(), 0.0f);
        QVERIFY(!generator.enable(1));
        QVERIFY(!generator.enable(6));
    }

    void generatorStartsAtPhaseZero()
    {
        FunctionGenerator generator;
        float amplitudes[4] = {1, 1, 1, 1};
        float offsets[4] = {};
        generator.configure(amplitudes, offsets, 77);
        generator.enable(2);
        for (int i = 0; i < 1234; ++i)
            generator.step();
        generator.enable(0);
        generator.enable(2);
        QCOMPARE(generator.volts(), 0.0);
    }

    void outputsComeFromLoopsRegisterOrGenerator()
    {
        OutputUnit outputs(5);
        FeedbackLoops loops;
        FunctionGenerator generator;
        const int selection[4] = {2, 3, 0, 1};
        QVERIFY(loops.setOutputs(selection));
        for (int loop = 0; loop < 4; ++loop)
            loops.controller(loop).setOffset(loop + 1);
        const double direct[4] = {7, notANumber, 8, 20};
        outputs.write(direct);
        outputs.update(loops, generator);
        QCOMPARE(outputs.volts()[2], 1.0);
        QCOMPARE(outputs.volts()[3], 2.0);
        QCOMPARE(outputs.volts()[0], 3.0);
        QCOMPARE(outputs.volts()[1], 4.0);
        QVERIFY(outputs.setSource(OutputUnit::sourceDirect));
        outputs.update(loops, generator);
        QCOMPARE(outputs.volts()[0], 7.0);
        QCOMPARE(outputs.volts()[1], 5.0);
        QCOMPARE(outputs.volts()[3], 12.0);
        float amplitudes[4] = {};
        float offsets[4] = {9, 0, 0, 0};
        generator.configure(amplitudes, offsets, 1);
        generator.enable(2);
        outputs.update(loops, generator);
        QCOMPARE(outputs.volts()[0], 9.0);
        QCOMPARE(outputs.volts()[2], 8.0);
        QVERIFY(!outputs.setSource(2));
        outputs.updateUnplugged();
        QCOMPARE(outputs.volts()[0], 0.0);
    }

    void outputWithoutALoopKeepsItsVoltage()
    {
        OutputUnit outputs(5);
        FeedbackLoops loops;
        const int selection[4] = {0, 0, 0, 0};
        QVERIFY(loops.setOutputs(selection));
        for (int loop = 0; loop < 4; ++loop)
            loops.controller(loop).setOffset(1);
        outputs.update(loops, FunctionGenerator());
        QCOMPARE(outputs.volts()[0], 1.0);
        QCOMPARE(outputs.volts()[1], 5.0);
    }

    void portsKnowTheirModules()
    {
        SfpPorts ports;
        QVERIFY(ports.plug(0, 0x2104));
        QVERIFY(ports.plug(3, 0x2300));
        QVERIFY(!ports.plug(4, 0x2300));
        QVERIFY(ports.holds(0, SfpPorts::AmplifierClass));
        QVERIFY(!ports.holds(1, SfpPorts::AmplifierClass));
        QVERIFY(ports.holdsAnywhere(SfpPorts::EncoderClass));
        QVERIFY(!ports.holdsAnywhere(SfpPorts::OutputClass));
        QCOMPARE(ports.biasLimit(0), 4000.0);
        QCOMPARE(ports.biasSign(0), -1.0);
        QCOMPARE(ports.biasLimit(1), 0.0);
        QVERIFY(ports.plug(0, 0x2101));
        QCOMPARE(ports.biasLimit(0), 500.0);
        QCOMPARE(ports.biasSign(0), 1.0);
        QVERIFY(ports.plug(0, 0));
        QCOMPARE(int(ports.info(0).serialNumber), 0);
    }
};

QTEST_APPLESS_MAIN(ElectronicsTest)
#include "ElectronicsTest.moc"
