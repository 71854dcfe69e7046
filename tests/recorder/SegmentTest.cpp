#include "archive/KeptTimes.h"
#include "archive/Overview.h"
#include "archive/SegmentCheck.h"
#include "archive/SegmentFolder.h"
#include "archive/SegmentReader.h"
#include "archive/SegmentRepair.h"
#include "archive/SegmentWriter.h"
#include "recorder/StreamJoin.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <cmath>
#include <random>

#include <sys/wait.h>
#include <unistd.h>

using namespace kora::archive;

namespace {

/// 2026-11-21T21:05:00.25Z
constexpr UtcNanoseconds began = 1795295100250000000;

DisplayRecord numbered(int number)
{
    DisplayRecord record = {};
    record.pos1X = number;
    record.pos2Y = std::sin(number);
    record.funcGenRefB = float(number) / 3;
    return record;
}

std::vector<DisplayRecord> numberedRecords(int first, int count)
{
    std::vector<DisplayRecord> records;
    for (int i = 0; i < count; ++i)
        records.push_back(numbered(first + i));
    return records;
}

SegmentPlan planOf(int rate)
{
    SegmentPlan plan;
    plan.start = began;
    plan.rate = rate;
    plan.program = "kora-recorder";
    plan.version = "test";
    plan.settings = "[BPM1]\n";
    return plan;
}

} // namespace

class SegmentTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir folder;
    int made = 0;

    std::string newPath() { return folder.filePath(QStringLiteral("%1.h5").arg(++made)).toStdString(); }

private slots:
    void momentsAreReadAsTheyAreWritten()
    {
        QCOMPARE(isoText(began), std::string("2026-11-21T21:05:00.250000Z"));
        QCOMPARE(*momentOfIsoText(isoText(began)), began);
        QCOMPARE(localText(began), std::string("2026-11-21 22:05:00.250"));
        const UtcNanoseconds now = began + nanosecondsOf(3600);
        QCOMPARE(*momentOfUserText("2026-11-21T22:05:00.25", now), began);
        QCOMPARE(*momentOfUserText("2026-11-21 22:05:00.25", now), began);
        QCOMPARE(*momentOfUserText("2026-11-21T21:05:00.25Z", now), began);
        QCOMPARE(*momentOfUserText("22:05:00.25", now), began);
        QCOMPARE(*momentOfUserText("-3600s", now), began);
        for (const char* wrong : {"", "now", "22", "-5", "2026-13-01T00:00", "2026-11-21T25:00", "90s", "22:61"})
            QVERIFY2(!momentOfUserText(wrong, now), wrong);
        QVERIFY(!momentOfIsoText("22:05:00Z"));
    }

    void segmentsAreNamedAfterTheirStartAndListedInTime()
    {
        QTemporaryDir names;
        const std::string path = names.path().toStdString();
        QCOMPARE(segmentName(began), std::string("kora_2026-11-21T210500Z.h5"));
        for (int i = 0; i < 11; ++i) {
            QFile file(QString::fromStdString(freeSegmentPath(path, began)));
            QVERIFY(file.open(QIODevice::WriteOnly));
        }
        QFile other(names.filePath(QStringLiteral("kora_2026-11-21T2105.h5")));
        QVERIFY(other.open(QIODevice::WriteOnly));
        const auto found = segmentsIn(path);
        QCOMPARE(found.size(), std::size_t(11));
        QVERIFY(found[0].path.find("T210500Z.h5") != std::string::npos);
        QVERIFY(found[1].path.find("T210500Z_2.h5") != std::string::npos);
        QVERIFY(found[10].path.find("T210500Z_11.h5") != std::string::npos);
        QCOMPARE(found[10].start, UtcNanoseconds(1795295100) * nanosecondsPerSecond);
    }

    void overviewsKeepSmallDeviationsOnLargeMeans()
    {
        std::vector<double> samples;
        for (int i = 0; i < 16384; ++i)
            samples.push_back(1e9 + (i % 2 ? 1.0 : -1.0));
        samples[5] = std::nan("");
        OverviewBuilder builder;
        builder.add(samples.data(), 100);
        builder.add(samples.data() + 100, 16284);
        QCOMPARE(builder.finished(0).size(), std::size_t(128));
        QCOMPARE(builder.finished(1).size(), std::size_t(1));
        const Stretch whole = builder.finished(1)[0];
        QCOMPARE(whole.min, 1e9 - 1);
        QCOMPARE(whole.max, 1e9 + 1);
        QVERIFY(std::fabs(whole.deviation - 1) < 1e-6);
        // NaN is no sample; a stretch without any has no figures.
        const double none[2] = {std::nan(""), std::nan("")};
        OverviewBuilder empty;
        empty.add(none, 2);
        empty.finish();
        QVERIFY(std::isnan(empty.finished(0)[0].min));
        QVERIFY(std::isnan(empty.finished(1)[0].mean));
    }

    void whatIsWrittenIsReadAlsoWhileItIsWritten_data()
    {
        QTest::addColumn<int>("rate");
        QTest::addColumn<bool>("compress");
        QTest::newRow("50 kHz") << 50000 << false;
        QTest::newRow("50 kHz, compressed") << 50000 << true;
        QTest::newRow("1 kHz, compressed") << 1000 << true;
        QTest::newRow("1 Hz, compressed") << 1 << true;
    }
    void whatIsWrittenIsReadAlsoWhileItIsWritten()
    {
        QFETCH(int, rate);
        QFETCH(bool, compress);
        const std::string path = newPath();
        SegmentPlan plan = planOf(rate);
        plan.compress = compress;
        plan.scales[int(SignalScale::Bpm2Y) - 1] = 250;
        SegmentWriter writer(path, plan);
        const int count = 40000;
        const auto records = numberedRecords(0, count);
        writer.append(records.data(), 30001);
        writer.flush();
        {
            SegmentReader reader(path);
            const std::int64_t seen = reader.samples();
            QVERIFY(seen <= 30001 && seen > 30001 - std::max(rate, 2) / 2);
            QCOMPARE(reader.values(signalNamed("pos1X"), seen - 1, 1)[0], double(seen - 1));
        }
        writer.append(records.data() + 30001, count - 30001);
        writer.addEvent({1.5, "mark", "here"});
        QVERIFY(writer.addSettings(2, "[BPM2]\n"));
        QVERIFY(!writer.addSettings(2, std::string(1 << 20, 'x')));
        writer.close();
        SegmentReader reader(path);
        QCOMPARE(reader.samples(), std::int64_t(count));
        QCOMPARE(reader.start(), began);
        QVERIFY(std::llabs(reader.end() - began - nanosecondsOf(double(count) / rate)) < 2000);
        QCOMPARE(reader.values(signalNamed("pos2Y"), 12345, 2)[1], std::sin(12346));
        QCOMPARE(reader.values(signalNamed("funcGenRefB"), 7, 1)[0], double(float(7) / 3));
        QCOMPARE(reader.scale(signalNamed("pos2Y")), 250.0);
        QCOMPARE(reader.settings()[1], std::string("[BPM2]\n"));
        QCOMPARE(reader.events()[0].text, std::string("here"));
        QCOMPARE(reader.sampleAt(reader.times(999, 1)[0]), std::int64_t(999));
        QCOMPARE(reader.sampleAt(1e9), std::int64_t(count));
        for (const std::string& complaint : checkSegment(path))
            QFAIL(complaint.c_str());
    }

    void aKilledWritersFileIsRepaired_data()
    {
        QTest::addColumn<bool>("compress");
        QTest::newRow("plain") << false;
        QTest::newRow("compressed") << true;
    }
    void aKilledWritersFileIsRepaired()
    {
        QFETCH(bool, compress);
        const std::string path = newPath();
        const pid_t child = ::fork();
        if (child == 0) {
            SegmentPlan plan = planOf(10000);
            plan.compress = compress;
            auto* writer = new SegmentWriter(path, plan);
            const auto records = numberedRecords(0, 25000);
            writer->append(records.data(), 20000);
            writer->addGap(2);
            writer->flush();
            writer->append(records.data() + 20000, 5000);
            ::_exit(0);
        }
        int status = 0;
        QCOMPARE(::waitpid(child, &status, 0), child);
        QCOMPARE(status, 0);
        QVERIFY(!opensPlainly(path));
        QVERIFY(!checkSegment(path).empty());
        QVERIFY(repairSegment(path));
        QVERIFY(opensPlainly(path));
        QVERIFY(!repairSegment(path));
        SegmentReader reader(path);
        QVERIFY(reader.samples() <= 20000 && reader.samples() > 15000);
        QCOMPARE(reader.values(signalNamed("pos1X"), reader.samples() - 1, 1)[0], double(reader.samples() - 1));
        for (const std::string& complaint : checkSegment(path))
            QFAIL(complaint.c_str());
    }

    void damagedFilesAreRefusedOrReadButNeverCrash()
    {
        const std::string path = newPath();
        {
            SegmentWriter writer(path, planOf(1000));
            writer.append(numberedRecords(0, 3000).data(), 3000);
            writer.addEvent({1, "mark", "here"});
        }
        QFile whole(QString::fromStdString(path));
        QVERIFY(whole.open(QIODevice::ReadOnly));
        const QByteArray bytes = whole.readAll();
        std::mt19937 dice(7);
        int refused = 0;
        for (int round = 0; round < 60; ++round) {
            QByteArray damaged = bytes;
            if (round % 3 == 0)
                damaged.truncate(int(dice() % unsigned(bytes.size())));
            for (int flip = 0; flip < 20 && !damaged.isEmpty(); ++flip) {
                // Headers stand at the start, where damage hurts.
                const unsigned reach =
                    round % 2 ? unsigned(damaged.size()) : std::min(unsigned(damaged.size()), 20000u);
                damaged[int(dice() % reach)] = char(dice());
            }
            const std::string other = newPath();
            QFile file(QString::fromStdString(other));
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write(damaged);
            file.close();
            refused += !checkSegment(other).empty();
        }
        QVERIFY(refused > 10);
        QVERIFY(!checkSegment("/nowhere/at/all.h5").empty());
    }

    void keptTimesAreAddedReadAndForgotten()
    {
        QTemporaryDir place;
        const KeptTimes times(place.path().toStdString());
        QVERIFY(times.add({began, 60, "mark", "a\tb\nc"}));
        QVERIFY(times.add({began + nanosecondsOf(500), 1.5, "fault", "out"}));
        QFile file(place.filePath(QStringLiteral("kora_kept.txt")));
        QVERIFY(file.open(QIODevice::Append));
        file.write("nonsense\n2026-11-21T21:05:00Z\tlong\tmark\tx\n");
        file.close();
        QCOMPARE(times.all().size(), std::size_t(2));
        QCOMPARE(times.all()[0].text, std::string("a b c"));
        QCOMPARE(times.all()[1].seconds, 1.5);
        QCOMPARE(times.removeIf([](const KeptTime& time) { return time.kind == "mark"; }), 1);
        QCOMPARE(times.all().size(), std::size_t(1));
        QVERIFY(!KeptTimes("/nowhere").add({began, 1, "mark", ""}));
    }

    void windowsAreJoinedByTheirBytes()
    {
        kora::recorder::StreamJoin join;
        const auto records = numberedRecords(0, 5000);
        QCOMPARE(join.fresh(records.data(), 10, 0), -1);
        join.follow(records.data(), 3000);
        QCOMPARE(join.fresh(records.data() + 2000, 3000, 0), 2000);
        QCOMPARE(join.fresh(records.data() + 2999, 2001, 0), 2000);
        QCOMPARE(join.fresh(records.data() + 3000, 2000, 0), -1);
        QCOMPARE(join.fresh(records.data(), 3000, 100), 0);
        // The newest known record alone is not enough where more is known.
        auto changed = records;
        changed[2500].int1 = 1;
        QCOMPARE(join.fresh(changed.data() + 2000, 3000, 2000), -1);
    }

    void theClockDecidesWhereTheBytesFitTwice()
    {
        kora::recorder::StreamJoin join;
        std::vector<DisplayRecord> periodic;
        for (int i = 0; i < 4000; ++i)
            periodic.push_back(numbered(i % 4));
        join.follow(periodic.data(), 2000);
        QCOMPARE(join.fresh(periodic.data() + 1000, 2000, 1001), 1000);
        QCOMPARE(join.fresh(periodic.data() + 1000, 2000, 13), 12);
        // Always the same record: nothing new, whatever the clock says.
        const std::vector<DisplayRecord> same(2000, numbered(3));
        join.follow(same.data(), 2000);
        QCOMPARE(join.fresh(same.data(), 2000, 250), 0);
    }
};

QTEST_APPLESS_MAIN(SegmentTest)
#include "SegmentTest.moc"
