#include "tools/rocking/GridScan.h"

#include <QtTest>

#include <cmath>
#include <vector>

class GridScanTest : public QObject
{
    Q_OBJECT

private slots:
    void normalisedValuesReachFromZeroToOne()
    {
        std::vector<float> raw(grid_scan::points, 0.0f);
        std::vector<float> normalised(grid_scan::points, -1.0f);
        raw[17] = 4e-6f;
        raw[4095] = 1e-6f;
        grid_scan::normalise(raw.data(), normalised.data());
        QCOMPARE(normalised[0], 0.0f);
        QCOMPARE(normalised[17], 1.0f);
        QCOMPARE(normalised[4095], 0.25f);
    }

    void negativeCurrentsAreNormalisedToo()
    {
        std::vector<float> raw(grid_scan::points, -3.0f);
        std::vector<float> normalised(grid_scan::points);
        raw[64] = -5.0f;
        raw[65] = -4.0f;
        grid_scan::normalise(raw.data(), normalised.data());
        QCOMPARE(normalised[0], 1.0f);
        QCOMPARE(normalised[64], 0.0f);
        QCOMPARE(normalised[65], 0.5f);
    }

    void equalCurrentsAreNoNumbersAfterNormalisation()
    {
        const std::vector<float> raw(grid_scan::points, 2.0f);
        std::vector<float> normalised(grid_scan::points);
        grid_scan::normalise(raw.data(), normalised.data());
        QVERIFY(std::isnan(normalised[0]));
        QVERIFY(std::isnan(normalised[4095]));
    }
};

QTEST_APPLESS_MAIN(GridScanTest)
#include "GridScanTest.moc"
