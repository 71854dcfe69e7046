#include "simulation/beam/Beam.h"
#include "simulation/PowerOn.h"
#include "simulation/Rates.h"
#include "simulation/beam/Actuator.h"
#include "simulation/beam/NormalNoise.h"
#include "simulation/detectors/QuadrantDetector.h"

#include <QTest>

#include <cmath>
#include <complex>
#include <vector>

using namespace kora::simulation;

namespace {

struct Moments
{
    double mean = 0;
    double deviation = 0;
    double kurtosis = 0;
};

Moments momentsOf(const std::vector<double>& values)
{
    Moments result;
    for (const double value : values)
        result.mean += value / double(values.size());
    double fourth = 0;
    double second = 0;
    for (const double value : values) {
        const double square = (value - result.mean) * (value - result.mean);
        second += square / double(values.size());
        fourth += square * square / double(values.size());
    }
    result.deviation = std::sqrt(second);
    result.kurtosis = fourth / (second * second);
    return result;
}

bool isNear(double value, double expected, double tolerance)
{
    if (std::fabs(value - expected) <= tolerance)
        return true;
    qWarning("%.12g is not %.12g +- %g", value, expected, tolerance);
    return false;
}

/// Unit-gain step response of the second-order system from tables (Ogata, eq. 5-12).
double stepResponse(const ActuatorModel& model, double seconds)
{
    const double w0 = 2 * M_PI * model.resonance;
    const double root = std::sqrt(1 - model.damping * model.damping);
    const double w = w0 * root;
    return 1 - std::exp(-model.damping * w0 * seconds) / root * std::sin(w * seconds + std::acos(model.damping));
}

} // namespace

class BeamTest : public QObject
{
    Q_OBJECT

private slots:
    void noiseIsNormalAndWhite()
    {
        NormalNoise noise(42);
        std::vector<double> values(400000);
        for (double& value : values)
            value = noise.next();
        const Moments moments = momentsOf(values);
        QVERIFY(isNear(moments.mean, 0, 0.008));
        QVERIFY(isNear(moments.deviation, 1, 0.006));
        QVERIFY(isNear(moments.kurtosis, 3, 0.05));
        int beyondTwo = 0;
        for (const double value : values)
            beyondTwo += std::fabs(value) > 2;
        QVERIFY(isNear(double(beyondTwo) / double(values.size()), std::erfc(M_SQRT2), 0.0015));
        for (const std::size_t lag : {std::size_t(1), std::size_t(2), std::size_t(5)}) {
            double product = 0;
            for (std::size_t i = lag; i < values.size(); ++i)
                product += values[i] * values[i - lag] / double(values.size());
            QVERIFY(isNear(product, 0, 0.008));
        }
    }

    void seedsGiveDifferentNoise()
    {
        NormalNoise one(1);
        NormalNoise same(1);
        NormalNoise other(2);
        bool differs = false;
        for (int i = 0; i < 100; ++i) {
            const double value = one.next();
            QCOMPARE(same.next(), value);
            differs = differs || other.next() != value;
        }
        QVERIFY(differs);
    }

    void oscillatorKeepsAmplitudeAndPhase()
    {
        Oscillator oscillator;
        oscillator.setFrequency(49.9, physicsRate);
        const int steps = 5000000;
        for (int i = 0; i < steps; ++i)
            oscillator.step();
        QVERIFY(isNear(std::hypot(oscillator.sine(), oscillator.cosine()), 1, 1e-12));
        QVERIFY(isNear(oscillator.sine(), std::sin(2 * M_PI * std::fmod(49.9 * steps / physicsRate, 1.0)), 1e-8));
    }

    void quietBeamStandsOnTheAxis()
    {
        Beam beam(1);
        for (int i = 0; i < 1000; ++i)
            beam.next();
        beam.quiet();
        for (int i = 0; i < 1000; ++i) {
            const BeamSample sample = beam.next();
            QCOMPARE(sample.x, 0.0);
            QCOMPARE(sample.y, 0.0);
            QCOMPARE(sample.flux, 1.0);
        }
    }

    void beamOffHasNoFlux()
    {
        Beam beam(1);
        beam.setOn(false);
        QCOMPARE(beam.next().flux, 0.0);
        beam.setOn(true);
        QVERIFY(beam.next().flux > 0.9);
    }

    void kickDecaysExponentially()
    {
        Beam beam(1);
        beam.quiet();
        beam.kick(100, -40);
        QVERIFY(isNear(beam.next().x, 100, 0.01));
        for (int i = 1; i < physicsRate / 2; ++i)
            beam.next();
        const BeamSample later = beam.next();
        QVERIFY(isNear(later.x, 100 * std::exp(-1), 0.01));
        QVERIFY(isNear(later.y, -40 * std::exp(-1), 0.01));
    }

    void vibrationLineHasItsAmplitudeAndFrequency()
    {
        Beam beam(1);
        beam.quiet();
        beam.setVibration(3, {20, 2, 0.5});
        std::complex<double> lineX;
        std::complex<double> lineY;
        for (int i = 0; i < physicsRate; ++i) {
            const BeamSample sample = beam.next();
            const auto turn = std::polar(2.0 / physicsRate, -2 * M_PI * 20 * i / physicsRate);
            lineX += sample.x * turn;
            lineY += sample.y * turn;
        }
        QVERIFY(isNear(std::abs(lineX), 2, 1e-6));
        QVERIFY(isNear(std::abs(lineY), 0.5, 1e-6));
        beam.setVibration(8, {20, 2, 0.5});
        beam.setVibration(-1, {20, 2, 0.5});
    }

    void driftIsPeriodic()
    {
        Beam beam(1);
        beam.quiet();
        beam.setDrift(7, 2, 0);
        double largest = 0;
        for (int i = 0; i < 2 * physicsRate; ++i)
            largest = std::max(largest, beam.next().x);
        QVERIFY(isNear(largest, 7, 1e-4));
    }

    void randomWalkHasItsDeviationAndReturns()
    {
        Beam beam(5);
        beam.quiet();
        beam.setDrift(0, 10, 3);
        std::vector<double> values;
        // Four hundred time constants of two seconds.
        for (std::int64_t i = 0; i < std::int64_t(800) * physicsRate; ++i) {
            const double x = beam.next().x;
            if (i % 5000 == 0)
                values.push_back(x);
        }
        QVERIFY(isNear(momentsOf(values).deviation, 3, 0.3));
        QVERIFY(isNear(momentsOf(values).mean, 0, 0.6));
    }

    void beamNoiseHasItsDeviation()
    {
        Beam beam(3);
        beam.quiet();
        beam.setNoise(0.5);
        std::vector<double> values(100000);
        for (double& value : values)
            value = beam.next().y;
        QVERIFY(isNear(momentsOf(values).deviation, 0.5, 0.005));
    }

    void actuatorFollowsTheClosedFormOfAStep_data()
    {
        QTest::addColumn<int>("output");
        for (int output = 0; output < 4; ++output)
            QTest::addRow("output %d", output) << output;
    }

    void actuatorFollowsTheClosedFormOfAStep()
    {
        QFETCH(int, output);
        const ActuatorModel& model = powerOn::actuators[output];
        Actuator actuator(model, 5);
        QCOMPARE(actuator.displacement(), 0.0);
        for (int i = 1; i <= 2000; ++i) {
            actuator.step(5.1);
            const double seconds = i * physicsPeriod - model.deadTime;
            const double expected = seconds > 0 ? 0.1 * model.gain * stepResponse(model, seconds) : 0;
            if (!isNear(actuator.displacement(), expected, 1e-9 * model.gain))
                QFAIL(qPrintable(QStringLiteral("at step %1").arg(i)));
        }
    }

    void actuatorStopsAtTheEndOfItsTravel()
    {
        const ActuatorModel& model = powerOn::actuators[2];
        const Actuator resting(model, 0);
        QCOMPARE(resting.displacement(), -model.travel);
        QCOMPARE(Actuator(model, 12).displacement(), model.travel);
        // What the stops hold back is no memory: where the mechanics would stand still tunes and returns.
        QCOMPARE(resting.settledVolts(), 0.0);
        QCOMPARE(Actuator(model, 4).displacement(), -model.gain);
    }

    void actuatorFollowsTheClosedFormOfASine_data()
    {
        QTest::addColumn<double>("hertz");
        for (const double hertz : {1.0, 50.0, 290.0, 500.0, 1500.0})
            QTest::addRow("%g Hz", hertz) << hertz;
    }

    void actuatorFollowsTheClosedFormOfASine()
    {
        QFETCH(double, hertz);
        const ActuatorModel& model = powerOn::actuators[0];
        Actuator actuator(model, model.neutral);
        const auto turn = [hertz](int step) { return std::polar(1.0, 2 * M_PI * hertz * step * physicsPeriod); };
        std::complex<double> response;
        for (int i = 0; i < 2 * physicsRate; ++i) {
            if (i >= physicsRate)
                response += actuator.displacement() * std::conj(turn(i)) * (2.0 / physicsRate);
            actuator.step(model.neutral + turn(i).real());
        }
        const std::complex<double> expected = Actuator::response(model, hertz);
        QVERIFY(isNear(std::abs(response) / std::abs(expected), 1, 0.003));
        QVERIFY(isNear(std::arg(response / expected), 0, 0.003));
    }

    void sharesFollowTheErrorFunctionAcrossAGap()
    {
        const double sigma = 100;
        const QuadrantDetector turned(0, sigma);
        for (double x = -300; x <= 300; x += 37) {
            const FourValues shares = turned.shares(x, 0);
            // Right half: top and right.
            QVERIFY(isNear(shares[Top] + shares[Right], 0.5 * (1 + std::erf(x / (sigma * M_SQRT2))), 1e-12));
            const FourValues vertical = turned.shares(0, x);
            QVERIFY(isNear(vertical[Top] + vertical[Left], 0.5 * (1 + std::erf(x / (sigma * M_SQRT2))), 1e-12));
        }
    }

    void sharesAgreeWithIntegrationOverTheElectrodes_data()
    {
        QTest::addColumn<int>("orientation");
        QTest::newRow("45 degrees") << 0;
        QTest::newRow("90 degrees") << 1;
    }

    void sharesAgreeWithIntegrationOverTheElectrodes()
    {
        QFETCH(int, orientation);
        const double sigma = 50;
        const double x0 = 20;
        const double y0 = -35;
        FourValues sums = {};
        const double step = 1;
        for (double x = -300.5; x < 300; x += step)
            for (double y = -300.25; y < 300; y += step) {
                const double square = (x - x0) * (x - x0) + (y - y0) * (y - y0);
                const double density = std::exp(-square / (2 * sigma * sigma)) / (2 * M_PI * sigma * sigma);
                std::size_t electrode = 0;
                if (orientation == 1)
                    electrode = std::fabs(x) > std::fabs(y) ? (x > 0 ? Right : Left) : (y > 0 ? Top : Bottom);
                else
                    electrode = x > 0 ? (y > 0 ? Top : Right) : (y > 0 ? Left : Bottom);
                sums[electrode] += density * step * step;
            }
        const FourValues shares = QuadrantDetector(orientation, sigma).shares(x0, y0);
        for (std::size_t i = 0; i < 4; ++i)
            QVERIFY(isNear(shares[i], sums[i], 0.003));
        QVERIFY(isNear(shares[0] + shares[1] + shares[2] + shares[3], 1, 1e-12));
    }

    void scaleIsTheSlopeAtTheAxis()
    {
        const double sigma = 80;
        const FourValues straight = QuadrantDetector(1, sigma).shares(0.1, 0);
        QVERIFY(isNear((straight[Right] - straight[Left]) * QuadrantDetector::scale(1, sigma), 0.1, 1e-6));
        const FourValues turned = QuadrantDetector(0, sigma).shares(0, 0.1);
        QVERIFY(
            isNear((turned[Top] + turned[Left] - turned[Right] - turned[Bottom]) * QuadrantDetector::scale(0, sigma),
                   0.1, 1e-6));
        QVERIFY(isNear(QuadrantDetector::scale(powerOn::orientation, powerOn::beamSigma), powerOn::scale, 1e-9));
    }
};

QTEST_APPLESS_MAIN(BeamTest)
#include "BeamTest.moc"
