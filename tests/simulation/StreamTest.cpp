#include "simulation/Faults.h"
#include "simulation/FixedStepClock.h"
#include "simulation/Installation.h"
#include "simulation/Rates.h"
#include "simulation/processor/DisplayStream.h"
#include "simulation/processor/Statistics.h"

#include <QTest>

#include <cmath>
#include <cstring>
#include <vector>

using namespace kora::simulation;

namespace {

/// Feeds a stream with the number of its step in pos1X.
struct NumberedStream
{
    DisplayStream stream;
    int step = 0;

    explicit NumberedStream(int hertz) : stream(hertz) {}
    void run(int steps)
    {
        for (int i = 0; i < steps; ++i) {
            stream.step([this](DisplayRecord& record) {
                record = DisplayRecord{};
                record.pos1X = step;
                record.funcGenRefA = float(step % 10);
                record.cur2[3] = 2.0 * step;
            });
            ++step;
        }
    }
    std::vector<DisplayRecord> newest(int count) const
    {
        std::vector<DisplayRecord> records(std::size_t(count), DisplayRecord{});
        stream.copyNewest(records.data(), count);
        return records;
    }
};

class TestClock final : public Clock
{
public:
    double seconds() const override { return now; }
    double now = 1000;
};

} // namespace

class StreamTest : public QObject
{
    Q_OBJECT

private slots:
    void recordsComeAtTheirRate_data()
    {
        QTest::addColumn<int>("hertz");
        for (const int hertz : {0, 1, 3, 999, 1000, 7777, 20000, 49999, 50000})
            QTest::addRow("%d Hz", hertz) << hertz;
    }

    void recordsComeAtTheirRate()
    {
        QFETCH(int, hertz);
        NumberedStream numbered(hertz);
        numbered.run(10 * physicsRate);
        QCOMPARE(numbered.stream.total(), std::int64_t(10) * hertz);
    }

    void unfilteredRecordIsThePresentStep()
    {
        NumberedStream numbered(1000);
        numbered.run(5000);
        const auto records = numbered.newest(3);
        QCOMPARE(records[0].pos1X, 4850.0);
        QCOMPARE(records[1].pos1X, 4900.0);
        QCOMPARE(records[2].pos1X, 4950.0);
    }

    void recordsStayOnTheGridOfTheLoops()
    {
        NumberedStream numbered(1000);
        numbered.run(123);
        QVERIFY(numbered.stream.setRate(10000, false));
        numbered.run(50);
        QCOMPARE(numbered.newest(2)[0].pos1X, 165.0);
        QCOMPARE(numbered.newest(2)[1].pos1X, 170.0);
        QCOMPARE(numbered.stream.sinceRateSet(), std::int64_t(10));
    }

    void filteredRecordIsTheMeanSinceTheLast()
    {
        NumberedStream numbered(1000);
        QVERIFY(numbered.stream.setRate(1000, true));
        numbered.run(5000);
        const auto records = numbered.newest(2);
        QCOMPARE(records[1].pos1X, (4901 + 4950) / 2.0);
        QCOMPARE(records[1].cur2[3], 4901.0 + 4950.0);
        QCOMPARE(records[1].funcGenRefA, 4.5f);
        QCOMPARE(records[0].pos1X, (4851 + 4900) / 2.0);
    }

    void filterChangesNothingAtTheFullRate()
    {
        NumberedStream numbered(50000);
        QVERIFY(numbered.stream.setRate(50000, true));
        numbered.run(100);
        QCOMPARE(numbered.newest(1)[0].pos1X, 99.0);
    }

    void ringKeepsTheNewestInOrder()
    {
        NumberedStream numbered(50000);
        numbered.run(40000);
        const auto records = numbered.newest(DisplayStream::largestBlock);
        for (std::size_t i = 0; i < records.size(); ++i)
            QCOMPARE(records[i].pos1X, double(40000 - int(records.size()) + int(i)));
    }

    void beforeEnoughExistTheOldestFillsUp()
    {
        NumberedStream numbered(50000);
        QCOMPARE(numbered.newest(2)[0].pos1X, 0.0);
        numbered.step = 7;
        numbered.run(2);
        const auto records = numbered.newest(4);
        QCOMPARE(records[0].pos1X, 7.0);
        QCOMPARE(records[1].pos1X, 7.0);
        QCOMPARE(records[2].pos1X, 7.0);
        QCOMPARE(records[3].pos1X, 8.0);
    }

    void settingTheRateStartsAStretchAndKeepsTheRing()
    {
        NumberedStream numbered(50000);
        numbered.run(100);
        QVERIFY(!numbered.stream.wasRateSet());
        QVERIFY(numbered.stream.setRate(50000, false));
        QCOMPARE(numbered.stream.sinceRateSet(), std::int64_t(0));
        QCOMPARE(numbered.newest(1)[0].pos1X, 99.0);
        numbered.run(3);
        QCOMPARE(numbered.stream.sinceRateSet(), std::int64_t(3));
        QVERIFY(!numbered.stream.setRate(50001, false));
        QVERIFY(!numbered.stream.setRate(-1, false));
        QCOMPARE(numbered.stream.sinceRateSet(), std::int64_t(3));
    }

    void statisticsOfASineAreExact()
    {
        Statistics statistics;
        statistics.start(10000);
        // 50 Hz passes the millisecond mean with sin(x)/x, 1000 Hz does not pass at all.
        for (int i = 0; i < 25000; ++i)
            statistics.add(3 + 0.5 * std::sin(2 * M_PI * 50 * i / 10000.0) +
                           0.2 * std::sin(2 * M_PI * 1000 * i / 10000.0));
        QVERIFY(std::fabs(statistics.mean() - 3) < 1e-12);
        QVERIFY(std::fabs(statistics.deviation() - std::sqrt(0.125 + 0.02)) < 1e-12);
        const double passed = std::sin(M_PI * 0.05) / (10 * std::sin(M_PI * 0.005));
        QVERIFY(std::fabs(statistics.filteredDeviation() - passed * std::sqrt(0.125)) < 1e-9);
    }

    void statisticsForgetWhatIsOlderThanASecond()
    {
        Statistics statistics;
        statistics.start(10000);
        QCOMPARE(statistics.mean(), 0.0);
        QCOMPARE(statistics.deviation(), 0.0);
        for (int i = 0; i < 10000; ++i)
            statistics.add(100);
        for (int i = 0; i < 5000; ++i)
            statistics.add(200);
        QCOMPARE(statistics.mean(), 150.0);
        QCOMPARE(statistics.deviation(), 50.0);
        for (int i = 0; i < 5000; ++i)
            statistics.add(200);
        QCOMPARE(statistics.mean(), 200.0);
        QCOMPARE(statistics.deviation(), 0.0);
    }

    void smallDeviationsOnLargeMeansKeepTheirDigits()
    {
        Statistics statistics;
        statistics.start(10000);
        for (int i = 0; i < 20000; ++i)
            statistics.add(1e6 + (i % 2 == 0 ? 1e-6 : -1e-6));
        QVERIFY(std::fabs(statistics.deviation() / 1e-6 - 1) < 1e-3);
    }

    void debtIsPaidExactly()
    {
        FixedStepClock debt(50000, 2);
        debt.start(10);
        QCOMPARE(debt.collect(10), std::int64_t(0));
        std::int64_t sum = 0;
        double now = 10;
        for (int i = 0; i < 1000; ++i) {
            now += i % 3 == 0 ? 0.0000137 : 0.0051234;
            sum += debt.collect(now);
        }
        QCOMPARE(sum, std::int64_t(std::floor((now - 10) * 50000)));
    }

    void debtIsBoundedAndTheRestForgiven()
    {
        FixedStepClock debt(50000, 2);
        debt.start(0);
        QCOMPARE(debt.collect(3600), std::int64_t(100000));
        QCOMPARE(debt.collect(3600), std::int64_t(0));
        QCOMPARE(debt.collect(3600.5), std::int64_t(25000));
        // A clock that steps back owes nothing.
        QCOMPARE(debt.collect(3000), std::int64_t(0));
    }

    void installationFollowsItsClock()
    {
        TestClock clock;
        Installation installation(clock, 1000);
        QCOMPARE(installation.time(), 0.0);
        clock.now += 0.5;
        QCOMPARE(installation.time(), 0.5);
        clock.now += 100;
        QCOMPARE(installation.time(), 2.5);
        installation.useDrivenClock();
        clock.now += 1;
        QCOMPARE(installation.time(), 2.5);
        installation.advance(0.75);
        QCOMPARE(installation.time(), 3.25);
        installation.useRealClock();
        clock.now += 0.25;
        QCOMPARE(installation.time(), 3.5);
    }

    void firstStatisticsAndFirstBlockAreFullOfBeam()
    {
        TestClock clock;
        Installation polled(clock, 1000);
        QVERIFY(polled.statistics().bpm[0].posXStd > 1e-4);
        Installation shown(clock, 1000);
        std::vector<DisplayRecord> records(largestBlockRecords, DisplayRecord{});
        QCOMPARE(shown.newestRecords(records.data(), largestBlockRecords), largestBlockRecords);
        QVERIFY(records.front().int1 > 1e-6);
        QVERIFY(std::memcmp(&records[0], &records[1], sizeof(DisplayRecord)) != 0);
    }

    void faultsAreCountedAndGarbageCoversEverySlot()
    {
        Faults faults;
        QVERIFY(!faults.takes("setOffset"));
        faults.failFunction("setOffset", 1);
        QVERIFY(!faults.takes("setPIDconf"));
        QVERIFY(faults.takes("setOffset"));
        QVERIFY(!faults.takes("setOffset"));
        QCOMPARE(faults.delivered(10), 10);
        faults.truncateBlocks(3);
        QCOMPARE(faults.delivered(10), 7);
        QCOMPARE(faults.delivered(2), 0);
        std::vector<DisplayRecord> records(7, DisplayRecord{});
        faults.spoil(records.data(), 7);
        QCOMPARE(records[0].pos1X, 0.0);
        faults.setGarbage(true);
        faults.spoil(records.data(), 7);
        int notNumbers = 0;
        for (const DisplayRecord& record : records)
            notNumbers += std::isnan(record.yHf);
        QCOMPARE(notNumbers, 1);
    }
};

QTEST_APPLESS_MAIN(StreamTest)
#include "StreamTest.moc"
