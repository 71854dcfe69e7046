#include "tour/Findings.h"

#include <QtTest>

#include <cmath>
#include <limits>

class FindingsTest : public QObject
{
    Q_OBJECT

private slots:
    void nothingFoundDoesNotHold() { QVERIFY(!Findings().allHold()); }

    void numberHoldsWithinItsTolerance_data()
    {
        QTest::addColumn<double>("measured");
        QTest::addColumn<bool>("holds");
        QTest::newRow("expected") << 5.0 << true;
        QTest::newRow("lower end") << 4.5 << true;
        QTest::newRow("upper end") << 5.5 << true;
        QTest::newRow("below") << 4.4 << false;
        QTest::newRow("above") << 5.6 << false;
        QTest::newRow("NaN") << std::nan("") << false;
        QTest::newRow("infinite") << std::numeric_limits<double>::infinity() << false;
    }
    void numberHoldsWithinItsTolerance()
    {
        QFETCH(double, measured);
        Findings findings;
        findings.near(QStringLiteral("peak"), QStringLiteral("V"), 5, 0.5, measured);
        QTEST(findings.allHold(), "holds");
    }

    void numberHoldsUpToItsLimit_data()
    {
        QTest::addColumn<double>("measured");
        QTest::addColumn<bool>("holds");
        QTest::newRow("limit") << 0.2 << true;
        QTest::newRow("below") << 0.1 << true;
        QTest::newRow("above") << 0.21 << false;
        QTest::newRow("NaN") << std::nan("") << false;
    }
    void numberHoldsUpToItsLimit()
    {
        QFETCH(double, measured);
        Findings findings;
        findings.atMost(QStringLiteral("spread"), QString(), 0.2, measured);
        QTEST(findings.allHold(), "holds");
    }

    void oneThatDoesNotHoldIsEnough()
    {
        Findings findings;
        findings.equal(QStringLiteral("status"), QStringLiteral("Feedback ON"), QStringLiteral("Feedback ON"));
        findings.holds(QStringLiteral("graphs move"), true);
        QVERIFY(findings.allHold());
        findings.equal(QStringLiteral("status"), QStringLiteral("Feedback ON"), QStringLiteral("Beam OFF"));
        QVERIFY(!findings.allHold());
    }

    void tableHasAHeadingForEachChapterAndCounts()
    {
        Findings findings;
        findings.beginChapter(QStringLiteral("Watch"));
        findings.near(QStringLiteral("output 1"), QStringLiteral("V"), 5, 0.1, 5.01);
        findings.holds(QStringLiteral("graphs move"), false);
        findings.beginChapter(QStringLiteral("Scan"));
        findings.atMost(QStringLiteral("error"), QStringLiteral("%"), 3, 1);
        QCOMPARE(findings.table(), QStringLiteral("\n"
                                                  "Watch\n"
                                                  "               expected     measured\n"
                                                  "  output 1     5 +- 0.1 V   5.01 V    holds\n"
                                                  "  graphs move  yes          no        DOES NOT HOLD\n"
                                                  "\n"
                                                  "Scan\n"
                                                  "               expected     measured\n"
                                                  "  error        at most 3 %  1 %       holds\n"
                                                  "\n"
                                                  "2 of 3 figures hold\n"));
    }
};

QTEST_GUILESS_MAIN(FindingsTest)
#include "FindingsTest.moc"
