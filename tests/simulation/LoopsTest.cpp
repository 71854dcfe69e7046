#include "simulation/PowerOn.h"
#include "simulation/Rates.h"
#include "simulation/processor/FeedbackLoops.h"

#include <QTest>

#include <cmath>
#include <complex>
#include <limits>
#include <vector>

using namespace kora::simulation;

namespace {

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

void load(PositionFilter& filter, const double (&coefficients)[2][5])
{
    for (int kind = 0; kind < 2; ++kind)
        for (int k = 0; k < 5; ++k)
            filter.write(kind, k, coefficients[kind][k]);
}

/// Gain at one frequency of a 10 kHz loop, measured with a sine.
double measuredGain(PositionFilter& filter, double hertz)
{
    const int settle = 20000;
    const int block = 20000;
    std::complex<double> sum;
    for (int i = 0; i < settle + block; ++i) {
        const double phase = 2 * M_PI * hertz * i / loopRate;
        const double out = filter.process(0.5 * std::sin(phase));
        if (i >= settle)
            sum += out * std::polar(4.0 / block, -phase);
    }
    return std::abs(sum);
}

/// Loops with readings and monitors around them.
struct Bench
{
    FeedbackLoops loops;
    PositionReading readings[2];
    PositionMonitor monitors[2];

    Bench()
    {
        monitors[0].setScale(100, 200);
        monitors[1].setScale(300, 400);
        for (int loop = 0; loop < 4; ++loop)
            loops.controller(loop).setGains({1, 0, 0, 0, 0, -100, 100, 1});
    }
    void tick(Interlock::Verdict verdict = Interlock::Verdict::Good) { loops.tick(readings, monitors, verdict, 1e-4); }
};

} // namespace

class LoopsTest : public QObject
{
    Q_OBJECT

private slots:
    void proportionalIntegralDerivativeByHand()
    {
        PidController pid;
        QVERIFY(pid.setGains({2, 10, 0.5, 0, 100, -100, 100, 3}));
        QVERIFY(pid.setOffset(1));
        QVERIFY(pid.setSetpoint(4));
        const double period = 0.1;
        // e = 1: P = 2, I = 10 * 1 * 0.1 = 1, no derivative yet.
        pid.sample(3, period);
        QCOMPARE(pid.output(), 3 * (2 + 1) + 1.0);
        // e = 3: P = 6, I = 4, D = 0.5 * 2 / 0.1 = 10.
        pid.sample(1, period);
        QCOMPARE(pid.output(), 3 * (6 + 4 + 10) + 1.0);
        // e = -1: P = -2, I = 3, D = 0.5 * -4 / 0.1 = -20.
        pid.sample(5, period);
        QCOMPARE(pid.output(), 3 * (-2 + 3 - 20) + 1.0);
        pid.reset();
        QCOMPARE(pid.output(), 1.0);
    }

    void windowIsAveragedBeforeTheLawActs()
    {
        PidController pid;
        pid.setGains({1, 1000, 0, 0, 100, -100, 100, 1});
        QVERIFY(pid.setWindow(4));
        for (const double position : {1.0, 2.0, 3.0}) {
            pid.sample(position, 1e-4);
            QCOMPARE(pid.output(), 0.0);
        }
        pid.sample(6, 1e-4);
        // Mean 3, e = -3, I over four samples.
        QCOMPARE(pid.output(), -3 - 1000 * 3 * 4e-4);
        QVERIFY(!pid.setWindow(0));
    }

    void smallErrorsCountAsNone()
    {
        PidController pid;
        pid.setGains({1, 1, 0, 0.5, 100, -100, 100, 1});
        pid.sample(0.49, 1);
        QCOMPARE(pid.output(), 0.0);
        pid.sample(-0.5, 1);
        QCOMPARE(pid.output(), 1.0);
    }

    void integralAndOutputAreLimited()
    {
        PidController pid;
        pid.setGains({0, 1, 0, 0, 2, -12, 12, 5});
        for (int i = 0; i < 10; ++i)
            pid.sample(-1, 1);
        QCOMPARE(pid.output(), 10.0);
        pid.sample(1, 1);
        QCOMPARE(pid.output(), 5.0);
        pid.setGains({100, 0, 0, 0, 2, -3, 4, 1});
        pid.sample(-1, 1);
        QCOMPARE(pid.output(), 4.0);
        pid.sample(1, 1);
        QCOMPARE(pid.output(), -3.0);
        // Limits the wrong way round: the upper one holds.
        pid.setGains({100, 0, 0, 0, 2, 4, -3, 1});
        QCOMPARE(pid.output(), -3.0);
    }

    void offsetActsAtOnceAlsoAtRest()
    {
        PidController pid;
        pid.setGains({1, 0, 0, 0, 0, -12, 12, 1});
        pid.setOffset(3);
        QCOMPARE(pid.output(), 3.0);
        QVERIFY(!pid.setOffset(notANumber));
        QVERIFY(!pid.setSetpoint(notANumber));
        QVERIFY(!pid.setGains({notANumber, 0, 0, 0, 0, 0, 0, 0}));
        QCOMPARE(pid.output(), 3.0);
    }

    void pauseGivesUpTheBegunWindow()
    {
        PidController pid;
        pid.setGains({1, 0, 1, 0, 0, -100, 100, 1});
        pid.setWindow(2);
        pid.sample(-10, 1);
        pid.pause();
        pid.sample(-1, 1);
        pid.sample(-3, 1);
        QCOMPARE(pid.output(), 2.0);
    }

    void theDerivativeStartsAfreshAfterAPause()
    {
        PidController pid;
        pid.setGains({1, 0, 1, 0, 0, -100, 100, 1});
        pid.sample(-1, 1);
        pid.pause();
        pid.sample(-3, 1);
        QCOMPARE(pid.output(), 3.0);
        // Without a pause the step of 2 um in 1 s counts.
        pid.sample(-5, 1);
        QCOMPARE(pid.output(), 5.0 + 2.0);
    }

    void theDerivativeStartsAfreshWhenTheBeamIsBack()
    {
        Bench bench;
        bench.loops.controller(0).setGains({1, 0, 1, 0, 0, -1e6, 1e6, 1});
        bench.loops.setConfiguration(0);
        bench.loops.enable(true);
        bench.readings[0].x = -0.01;
        bench.tick();
        bench.tick(Interlock::Verdict::BeamOff);
        bench.readings[0].x = -0.02;
        bench.tick();
        QCOMPARE(bench.loops.controller(0).output(), 2.0);
    }

    void filterFollowsItsDifferenceEquation()
    {
        const double b[5] = {0.3, -0.2, 0.1, 0.05, -0.4};
        const double f[5] = {0, 0.5, -0.3, 0.2, 0.1};
        PositionFilter filter;
        filter.bypass(false);
        for (int k = 0; k < 5; ++k) {
            filter.write(0, k, b[k]);
            filter.write(1, k, f[k]);
        }
        filter.commit();
        filter.process(0);
        std::vector<double> in(4, 0.0);
        std::vector<double> out(4, 0.0);
        for (int n = 4; n < 60; ++n) {
            in.push_back(std::sin(n * n));
            double y = b[0] * in[std::size_t(n)];
            for (int k = 1; k < 5; ++k)
                y += b[k] * in[std::size_t(n - k)] + f[k] * out[std::size_t(n - k)];
            out.push_back(y);
            QVERIFY(std::fabs(filter.process(in.back()) - y) < 1e-12);
        }
    }

    void powerOnFiltersHaveTheirCutOffs()
    {
        PositionFilter low;
        load(low, powerOn::lowPass);
        low.commit();
        low.bypass(false);
        QVERIFY(std::fabs(measuredGain(low, 10) - M_SQRT1_2) < 1e-3);
        QVERIFY(std::fabs(measuredGain(low, 1) - 1) < 1e-3);
        QVERIFY(measuredGain(low, 100) < 1.1e-4);
        PositionFilter band;
        load(band, powerOn::bandPass);
        band.commit();
        band.bypass(false);
        QVERIFY(std::fabs(measuredGain(band, 10) - M_SQRT1_2) < 1e-3);
        QVERIFY(std::fabs(measuredGain(band, 100) - M_SQRT1_2) < 1e-3);
        QVERIFY(std::fabs(measuredGain(band, std::sqrt(1000.0)) - 1) < 2e-3);
    }

    void writtenCoefficientsActFromTheCommitOn()
    {
        PositionFilter filter;
        filter.bypass(false);
        QCOMPARE(filter.process(0.5), 0.5);
        QVERIFY(filter.write(0, 0, 3));
        QCOMPARE(filter.process(0.5), 0.5);
        filter.commit();
        QCOMPARE(filter.process(0.5), 1.5);
        filter.bypass(true);
        QCOMPARE(filter.process(0.5), 0.5);
        QVERIFY(!filter.write(0, 5, 1));
        QVERIFY(!filter.write(2, 0, 1));
        QVERIFY(!filter.write(0, 0, notANumber));
    }

    void lowPassStartsAtRestOnThePresentPosition()
    {
        PositionFilter filter;
        load(filter, powerOn::lowPass);
        filter.commit();
        filter.bypass(false);
        for (int i = 0; i < 1000; ++i)
            QVERIFY(std::fabs(filter.process(0.02) - 0.02) < 1e-6);
    }

    void unstableCoefficientsSaturateAndAreForgotten()
    {
        PositionFilter filter;
        filter.bypass(false);
        for (int k = 0; k < 5; ++k) {
            filter.write(0, k, 1);
            filter.write(1, k, -(k + 1));
        }
        filter.commit();
        double largest = 0;
        for (int i = 0; i < 10000; ++i)
            largest = std::max(largest, std::fabs(filter.process(0.1 * std::sin(i))));
        QCOMPARE(largest, PositionFilter::saturation);
        load(filter, powerOn::lowPass);
        filter.commit();
        QVERIFY(std::fabs(filter.process(0.1) - 0.1) < 1e-5);
    }

    void startValuesOfTheFilterDesignPassEverything()
    {
        // Numerator 1 to 5 over the same denominator, as the program commits it before a first design.
        PositionFilter filter;
        filter.bypass(false);
        for (int k = 0; k < 5; ++k) {
            filter.write(0, k, k + 1);
            filter.write(1, k, -(k + 1));
        }
        filter.commit();
        for (int i = 0; i < 10000; ++i) {
            const double position = 0.1 * std::sin(i);
            QCOMPARE(filter.process(position), position);
        }
    }

    void interlockChecksWhatIsEnabled()
    {
        Interlock interlock;
        for (int check = 0; check < 6; ++check)
            QVERIFY(interlock.setLimits(check, 0, check % 3 == 2 ? 1e-6 : 0.1));
        const bool intensity[2] = {true, true};
        PositionReading readings[2] = {{0.2, -0.2, 2e-6}, {0.2, 0.2, 0}};
        QCOMPARE(int(interlock.judge(readings, intensity)), int(Interlock::Verdict::Good));
        for (const int check : {0, 1, 3, 4}) {
            interlock.enable(check, true);
            QCOMPARE(int(interlock.judge(readings, intensity)), int(Interlock::Verdict::OutOfRegion));
            interlock.enable(check, false);
        }
        interlock.enable(2, true);
        QCOMPARE(int(interlock.judge(readings, intensity)), int(Interlock::Verdict::Good));
        interlock.enable(5, true);
        interlock.enable(0, true);
        // Without a beam its position means nothing.
        QCOMPARE(int(interlock.judge(readings, intensity)), int(Interlock::Verdict::BeamOff));
        const bool encoder[2] = {true, false};
        QCOMPARE(int(interlock.judge(readings, encoder)), int(Interlock::Verdict::OutOfRegion));
        // Exactly on the limit is inside.
        readings[0].x = 0.1;
        QCOMPARE(int(interlock.judge(readings, encoder)), int(Interlock::Verdict::Good));
    }

    void statusFollowsBeamAndRegion()
    {
        Bench bench;
        bench.tick(Interlock::Verdict::OutOfRegion);
        QCOMPARE(int(bench.loops.status()), 0);
        bench.loops.enable(true);
        QCOMPARE(int(bench.loops.status()), 3);
        bench.tick(Interlock::Verdict::BeamOff);
        QCOMPARE(int(bench.loops.status()), 2);
        bench.tick();
        QCOMPARE(int(bench.loops.status()), 3);
        bench.tick(Interlock::Verdict::OutOfRegion);
        QCOMPARE(int(bench.loops.status()), 1);
        // A fault stays until the operator acts.
        bench.tick();
        QCOMPARE(int(bench.loops.status()), 1);
        bench.loops.enable(true);
        bench.tick();
        QCOMPARE(int(bench.loops.status()), 3);
        bench.tick(Interlock::Verdict::OutOfRegion);
        bench.loops.enable(false);
        QCOMPARE(int(bench.loops.status()), 0);
    }

    void beamOffHoldsTheOutputs()
    {
        Bench bench;
        bench.loops.setConfiguration(0);
        bench.loops.enable(true);
        bench.readings[0].x = -0.01;
        bench.tick();
        QCOMPARE(bench.loops.controller(0).output(), 1.0);
        bench.readings[0].x = 0.5;
        bench.tick(Interlock::Verdict::BeamOff);
        QCOMPARE(bench.loops.controller(0).output(), 1.0);
        bench.readings[0].x = -0.02;
        bench.tick();
        QCOMPARE(bench.loops.controller(0).output(), 2.0);
    }

    void configurationChoosesTheLoops_data()
    {
        QTest::addColumn<int>("code");
        QTest::addColumn<QByteArray>("running");
        const char* const rows[] = {
            "Xlf", "Xlf Xhf", "Xlf Ylf", "Xlf Yhf",     "Xlf Xhf Ylf", "Xlf Xhf Yhf", "Xlf Ylf Yhf", "Xlf Xhf Ylf Yhf",
            "Xhf", "Xhf Ylf", "Xhf Yhf", "Xhf Ylf Yhf", "Ylf",         "Ylf Yhf",     "Yhf",         ""};
        for (int code = 0; code <= 15; ++code)
            QTest::addRow("code %d", code) << code << QByteArray(rows[code]);
    }

    void configurationChoosesTheLoops()
    {
        QFETCH(int, code);
        QFETCH(QByteArray, running);
        Bench bench;
        QVERIFY(bench.loops.setConfiguration(code));
        QCOMPARE(bench.loops.configuration(), code);
        bench.loops.enable(true);
        bench.readings[0] = {-0.1, -0.1, 1};
        bench.tick();
        const char* const names[4] = {"Xlf", "Xhf", "Ylf", "Yhf"};
        for (int loop = 0; loop < 4; ++loop)
            QCOMPARE(bench.loops.controller(loop).output() != 0, running.contains(names[loop]));
    }

    void selectorsTakePositionAndScaleOfTheirBpm()
    {
        Bench bench;
        const int selectors[4] = {0, 1, 0, 1};
        QVERIFY(bench.loops.setSelectors(selectors));
        bench.loops.setConfiguration(7);
        bench.loops.enable(true);
        bench.readings[0] = {-0.01, -0.02, 1};
        bench.readings[1] = {-0.03, -0.04, 1};
        bench.tick();
        QCOMPARE(bench.loops.controller(0).output(), 1.0);
        QCOMPARE(bench.loops.controller(1).output(), 9.0);
        QCOMPARE(bench.loops.controller(2).output(), 4.0);
        QCOMPARE(bench.loops.controller(3).output(), 16.0);
        QCOMPARE(bench.loops.path(1), -0.03);
        const int wrong[4] = {0, 0, 0, 2};
        QVERIFY(!bench.loops.setSelectors(wrong));
        QVERIFY(!bench.loops.setConfiguration(16));
    }

    void stoppedLoopsKeepTheirOutputUntilReset()
    {
        Bench bench;
        bench.loops.setConfiguration(0);
        bench.loops.controller(0).setOffset(5);
        bench.loops.enable(true);
        bench.readings[0].x = -0.01;
        bench.tick();
        bench.loops.enable(false);
        bench.readings[0].x = 0;
        bench.tick();
        QCOMPARE(bench.loops.controller(0).output(), 6.0);
        bench.loops.resetControllers();
        QCOMPARE(bench.loops.controller(0).output(), 5.0);
    }
};

QTEST_APPLESS_MAIN(LoopsTest)
#include "LoopsTest.moc"
