#include "feedback/FilterDesign.h"

#include "feedback/ReferenceFilters.h"

#include <QtTest>

#include <cmath>
#include <limits>

namespace {

constexpr double Ts = 0.0001;
constexpr double required = 1e-9;
/// What the docstring promises for the coefficients.
constexpr double lowpassPromise = 1e-14;
constexpr double bandpassNumeratorPromise = 1e-12;
constexpr double bandpassDenominatorPromise = 1e-14;
const double minus3dB = std::sqrt(0.5);

struct Design
{
    arma::rowvec b;
    arma::rowvec a;

    double magnitude(double hertz) const
    {
        ReferenceFilter filter;
        for (arma::uword i = 0; i < 5; ++i) {
            filter.b[i] = b(i);
            filter.a[i] = a(i);
        }
        return double(filter.magnitude(hertz, Ts));
    }
};

Design lowpass(double fcut)
{
    Design design;
    butterLowpass(4, fcut, Ts, design.b, design.a);
    return design;
}

Design bandpass(double low, double high)
{
    Design design;
    butterBandpass(2, low, high, Ts, design.b, design.a);
    return design;
}

/// Largest relative deviation; coefficients that must be zero count absolutely.
double deviation(const arma::rowvec& designed, const std::array<long double, 5>& reference)
{
    double worst = 0;
    for (arma::uword i = 0; i < 5; ++i) {
        const long double expected = reference[i];
        const long double error = designed(i) - expected;
        worst = std::max(worst, double(std::fabs(expected == 0 ? error : error / expected)));
    }
    return worst;
}

QStringList printed(const arma::rowvec& values, char format, int digits)
{
    QStringList texts;
    for (const double value : values)
        texts.append(QString::number(value, format, digits));
    return texts;
}

QStringList words(const char* text)
{
    return QString::fromLatin1(text).split(QLatin1Char(' '));
}

bool isNear(double value, double expected, double tolerance)
{
    const bool near = std::fabs(value - expected) <= tolerance;
    if (!near)
        qWarning("%.17g is not %.17g within %g", value, expected, tolerance);
    return near;
}

} // namespace

class FilterDesignTest : public QObject
{
    Q_OBJECT

private slots:
    void lowpassAt100HzGivesTheTabulatedSet()
    {
        const Design design = lowpass(100.0);
        QCOMPARE(printed(design.b, 'e', 6), words("8.984861e-07 3.593945e-06 5.390917e-06 3.593945e-06 8.984861e-07"));
        QCOMPARE(printed(design.a, 'f', 9), words("1.000000000 -3.835825541 5.520819137 -3.533535219 0.848555999"));
    }

    void bandpassFrom10To100HzGivesTheTabulatedSet()
    {
        const Design design = bandpass(10.0, 100.0);
        QCOMPARE(printed(design.b, 'e', 6), words("7.685117e-04 0.000000e+00 -1.537023e-03 0.000000e+00 7.685117e-04"));
        QCOMPARE(printed(design.a, 'f', 9), words("1.000000000 -3.919294294 5.761761399 -3.765609267 0.923142312"));
    }

    void lowpassAgreesWithTheBiquadCascadeOverTheWholeBox()
    {
        double worst = 0;
        for (int tenths = 10; tenths <= 1000; ++tenths) {
            const Design design = lowpass(tenths / 10.0);
            const ReferenceFilter reference = referenceLowpass(tenths / 10.0L, Ts);
            QCOMPARE(design.a(0), 1.0);
            worst = std::max({worst, deviation(design.b, reference.b), deviation(design.a, reference.a)});
        }
        QVERIFY(isNear(worst, 0, required));
        QVERIFY(isNear(worst, 0, lowpassPromise));
    }

    void bandpassAgreesWithTheExpandedPolynomialOverTheWholeBoxes()
    {
        double worstB = 0;
        double worstA = 0;
        const auto compare = [&](int lowTenths, int highTenths) {
            const Design design = bandpass(lowTenths / 10.0, highTenths / 10.0);
            const ReferenceFilter reference = referenceBandpass(lowTenths / 10.0L, highTenths / 10.0L, Ts);
            worstB = std::max(worstB, deviation(design.b, reference.b));
            worstA = std::max(worstA, deviation(design.a, reference.a));
        };
        for (int low = 10; low <= 1000; low += 9) {
            for (int high = 100; high <= 2000; high += 7) {
                if (low != high)
                    compare(low, high);
            }
        }
        // The narrowest bands lose most, and so do the widest; the edges may also stand the wrong way round.
        for (int low = 100; low < 1000; ++low) {
            compare(low, low + 1);
            compare(low + 1, low);
            compare(low, 2000);
        }
        QVERIFY(isNear(std::max(worstA, worstB), 0, required));
        QVERIFY(isNear(worstB, 0, bandpassNumeratorPromise));
        QVERIFY(isNear(worstA, 0, bandpassDenominatorPromise));
    }

    void lowpassIsDown3dBAtTheCutoffAndFlatBelow()
    {
        for (int tenths = 10; tenths <= 1000; ++tenths) {
            const double fcut = tenths / 10.0;
            const Design design = lowpass(fcut);
            // At the lowest cut-offs the coefficients, as doubles, hold the gain no better than this: some
            // roundings of a over the sum of a, which equals the sum of b.
            const double tolerance = 1e-9 + 8 * std::numeric_limits<double>::epsilon() / arma::sum(design.b);
            QVERIFY(isNear(design.magnitude(0.0), 1.0, tolerance));
            QVERIFY(isNear(design.magnitude(fcut), minus3dB, tolerance));
            QVERIFY(isNear(design.magnitude(fcut / 10.0), 1.0, tolerance + 1e-7));
        }
    }

    void gainOfLowCutoffsKeepsTheStatedDigits_data()
    {
        QTest::addColumn<double>("fcut");
        QTest::addColumn<double>("error");
        QTest::newRow("1 Hz") << 1.0 << 1e-2;
        QTest::newRow("2 Hz") << 2.0 << 1e-3;
        QTest::newRow("5 Hz") << 5.0 << 1e-5;
        QTest::newRow("10 Hz") << 10.0 << 1e-7;
        QTest::newRow("20 Hz") << 20.0 << 1e-8;
    }
    void gainOfLowCutoffsKeepsTheStatedDigits()
    {
        QFETCH(double, fcut);
        QFETCH(double, error);
        QVERIFY(isNear(lowpass(fcut).magnitude(0.0), 1.0, error));
    }

    void bandpassIsDown3dBAtBothEdgesAndOneInBetween()
    {
        for (const double low : {1.0, 5.0, 10.0, 33.3, 90.0}) {
            for (const double high : {100.0, 120.5, 200.0}) {
                const Design design = bandpass(low, high);
                const double mean =
                    std::atan(std::sqrt(std::tan(M_PI * low * Ts) * std::tan(M_PI * high * Ts))) / (M_PI * Ts);
                QVERIFY(isNear(design.magnitude(mean), 1.0, 1e-4));
                QVERIFY(isNear(design.magnitude(low), minus3dB, 1e-5));
                QVERIFY(isNear(design.magnitude(high), minus3dB, 1e-5));
                QVERIFY(isNear(design.magnitude(0.0), 0.0, 1e-9));
                QVERIFY(isNear(design.magnitude(0.5 / Ts), 0.0, 1e-9));
            }
        }
    }

    void equalEdgesGiveANumeratorOfZeros()
    {
        const Design design = bandpass(50.0, 50.0);
        QVERIFY(arma::all(design.b == 0.0));
        QVERIFY(design.a.is_finite());
        QCOMPARE(design.a(0), 1.0);
    }

    void swappedEdgesAreDesignedWithoutComplaint()
    {
        const Design design = bandpass(80.0, 40.0);
        const ReferenceFilter reference = referenceBandpass(80.0L, 40.0L, Ts);
        QVERIFY(isNear(deviation(design.b, reference.b), 0, required));
        QVERIFY(isNear(deviation(design.a, reference.a), 0, required));
    }

    /// (s + 3) / (s + 1)(s + 2): one zero, two poles.
    void bilinearTransformMapsZerosAndPoles()
    {
        constexpr double period = 0.1;
        arma::rowvec b;
        arma::rowvec a;
        bilinearTransform({1.0, 3.0}, {1.0, 3.0, 2.0}, b, a, period);
        const double zero = (1 - 0.15) / (1 + 0.15);
        const double slowPole = (1 - 0.05) / (1 + 0.05);
        const double fastPole = (1 - 0.1) / (1 + 0.1);
        QCOMPARE(b.n_elem, arma::uword(3));
        QCOMPARE(a.n_elem, arma::uword(3));
        QVERIFY(isNear(a(1), -slowPole - fastPole, 1e-14));
        QVERIFY(isNear(a(2), slowPole * fastPole, 1e-14));
        QVERIFY(isNear(b(1) / b(0), 1 - zero, 1e-14));
        QVERIFY(isNear(b(2) / b(0), -zero, 1e-14));
        const double gain = 3.0 * (1 + 2 / (3 * period)) / ((1 + 2 / period) * (1 + 2 / (2 * period)));
        QVERIFY(isNear(b(0), gain, 1e-14));
    }
};

QTEST_APPLESS_MAIN(FilterDesignTest)
#include "FilterDesignTest.moc"
