#include "tools/FormatG6.h"

#include <QtTest>

#include <cmath>
#include <cstring>
#include <random>

namespace {

QByteArray numberText(double value)
{
    return QByteArray::number(value, 'g', 6);
}

QByteArray sixDigits(double value)
{
    char text[formatG6Room];
    return QByteArray(text, int(formatG6(text, value) - text));
}

} // namespace

class FormatG6Test : public QObject
{
    Q_OBJECT

private slots:
    void sixDigitsAreThoseOfQt_data()
    {
        QTest::addColumn<double>("value");
        for (double value : {0.0,
                             -0.0,
                             1.0,
                             -1.0,
                             0.5,
                             123456.0,
                             100000.0,
                             1e6,
                             999999.0,
                             999999.4,
                             999999.5,
                             999999.6,
                             1234567.0,
                             1000005.0,
                             1000015.0,
                             0.0001,
                             0.00001,
                             0.000099999949,
                             0.00009999995,
                             0.000123456789,
                             1e-17,
                             1.2e-17,
                             9.99e-17,
                             1e-16,
                             1.0000005e-16,
                             1e20,
                             1.0000005,
                             2.0000015,
                             0.1,
                             0.2,
                             0.3,
                             2e-5,
                             9.999,
                             1e22,
                             1e23,
                             1e-300,
                             5e-324,
                             1.7976931348623157e308,
                             2.2250738585072014e-308,
                             1e15,
                             1e16,
                             99999.95,
                             99999.949999,
                             1.5e-9,
                             4.2e-7,
                             32768.5,
                             524288.5})
            QTest::newRow(qPrintable(QString::number(value, 'g', 17))) << value;
        QTest::newRow("nan") << std::nan("");
        QTest::newRow("inf") << double(INFINITY);
        QTest::newRow("-inf") << -double(INFINITY);
    }
    void sixDigitsAreThoseOfQt()
    {
        QFETCH(double, value);
        QCOMPARE(sixDigits(value), numberText(value));
        QCOMPARE(sixDigits(-value), numberText(-value));
    }

    void sixDigitsAreThoseOfQtForRandomNumbers()
    {
        std::mt19937_64 random(20210317);
        std::uniform_real_distribution<double> exponent(-20, 22);
        std::uniform_real_distribution<double> mantissa(-10, 10);
        std::uniform_int_distribution<int> whole(-20000000, 20000000);
        for (int i = 0; i < 300000; ++i) {
            double anyBits;
            const std::uint64_t bits = random();
            std::memcpy(&anyBits, &bits, sizeof anyBits);
            // Halves and short decimals are where the ties are.
            for (double value : {anyBits, mantissa(random) * std::pow(10, std::floor(exponent(random))),
                                 whole(random) / 2.0, whole(random) / 1e7, std::ldexp(whole(random), -9)}) {
                if (sixDigits(value) != numberText(value))
                    QCOMPARE(sixDigits(value), numberText(value));
            }
        }
    }
};

QTEST_APPLESS_MAIN(FormatG6Test)
#include "FormatG6Test.moc"
