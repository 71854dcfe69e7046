#pragma once

#include <QtTest>

#include <cmath>
#include <limits>

/// Rows of the one column "number": what a record may hold that no instrument measures.
inline void addOddNumbers()
{
    QTest::addColumn<double>("number");
    QTest::newRow("NaN") << std::nan("");
    QTest::newRow("infinite") << HUGE_VAL;
    QTest::newRow("minus infinite") << -HUGE_VAL;
    QTest::newRow("denormal") << 5e-324;
    QTest::newRow("largest") << std::numeric_limits<double>::max();
}
