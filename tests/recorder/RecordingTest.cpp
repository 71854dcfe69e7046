#include "CountingStream.h"

#include "archive/SegmentCheck.h"
#include "archive/SegmentReader.h"
#include "recorder/Recording.h"
#include "recorder/StatusReader.h"
#include "recorder/StreamFollower.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using namespace kora::recorder;
using kora::archive::SegmentReader;

/// Follower and recording on a stream of numbered records, by a clock that the test sets.
class RecordingTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<CountingStream> stream;
    std::unique_ptr<QTemporaryDir> folder;
    std::unique_ptr<PieceQueue> queue;
    std::unique_ptr<Recording> recording;
    std::unique_ptr<StreamFollower> follower;
    StatusReader status;

    QString settingsPath() const { return folder->filePath(QStringLiteral("settings.ini")); }
    void writeSettings(const char* text)
    {
        QFile file(settingsPath());
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(text);
    }
    void makeRecording()
    {
        RecordingOptions options;
        options.folder = folder->path().toStdString();
        options.settingsPath = settingsPath().toStdString();
        options.version = "test";
        recording = std::make_unique<Recording>(*stream, options, [](const std::string&) {});
    }
    void takeAll()
    {
        StreamPiece piece;
        std::vector<DisplayRecord> records;
        while (queue->pop(piece, records))
            recording->take(piece, records.data());
    }
    /// Lets time pass in steps of a poll.
    void pass(double seconds, double step = 0.1)
    {
        for (int i = 0; i < int(std::lround(seconds / step)); ++i) {
            stream->pass(step);
            follower->poll();
            takeAll();
        }
    }
    std::vector<kora::archive::SegmentFile> files() const
    {
        return kora::archive::segmentsIn(folder->path().toStdString());
    }
    /// Numbers of the recorded records of all segments, one behind another.
    std::vector<double> numbers() const
    {
        std::vector<double> all;
        for (const auto& file : files()) {
            SegmentReader reader(file.path);
            const auto part = reader.values(kora::archive::signalNamed("pos1X"), 0, reader.samples());
            all.insert(all.end(), part.begin(), part.end());
        }
        return all;
    }
    QStringList events(const char* kind) const
    {
        QStringList texts;
        for (const auto& file : files()) {
            for (const auto& event : SegmentReader(file.path).events()) {
                if (event.kind == kind)
                    texts.append(QString::fromStdString(event.text));
            }
        }
        return texts;
    }
    void verifyWhole(const std::vector<double>& recorded, double first, double last)
    {
        QCOMPARE(recorded.front(), first);
        QCOMPARE(recorded.back(), last);
        QCOMPARE(double(recorded.size()), last - first + 1);
        for (std::size_t i = 1; i < recorded.size(); ++i)
            QCOMPARE(recorded[i], recorded[i - 1] + 1);
    }
    void verifySound()
    {
        for (const auto& file : files()) {
            for (const std::string& complaint : kora::archive::checkSegment(file.path))
                QFAIL(complaint.c_str());
        }
    }

private slots:
    void init()
    {
        stream = std::make_unique<CountingStream>();
        folder = std::make_unique<QTemporaryDir>();
        writeSettings("[BPM1]\nScale_X=100\n[ROCandROI]\nBeamOffTh=0.5\n");
        queue = std::make_unique<PieceQueue>();
        follower = std::make_unique<StreamFollower>(*stream, *queue);
        makeRecording();
        follower->poll();
        takeAll();
    }
    void cleanup()
    {
        recording.reset();
        follower.reset();
        stream.reset();
    }

    void windowsThatOverlapAreJoinedToEveryRecordOnce()
    {
        for (const double step : {0.001, 0.013, 0.25, 1.0, 14.0})
            pass(10 * step, step);
        recording->finish();
        verifyWhole(numbers(), 0, double(stream->newest()));
        QCOMPARE(recording->gaps(), 0);
        verifySound();
    }

    void aSegmentEndsWhereTheMinuteDoes()
    {
        pass(150, 0.25);
        recording->finish();
        const auto found = files();
        // Begun 1000 s after a full minute, at 21:21:40.
        QCOMPARE(found.size(), std::size_t(4));
        const int expected[] = {20 * 1000, 60 * 1000, 60 * 1000, 10 * 1000 + 1};
        for (std::size_t i = 0; i < found.size(); ++i)
            QCOMPARE(SegmentReader(found[i].path).samples(), std::int64_t(expected[i]));
        QVERIFY(found[1].path.find("kora_2026-11-21T212200Z.h5") != std::string::npos);
    }

    void whatIsMissedIsAGapOfItsLength()
    {
        pass(2);
        stream->pass(20);
        pass(1);
        recording->finish();
        QCOMPARE(recording->gaps(), 1);
        std::int64_t samples = 0;
        double gapSeconds = 0;
        for (const auto& file : files()) {
            SegmentReader reader(file.path);
            samples += reader.samples();
            for (const auto& gap : reader.gaps())
                gapSeconds += gap.seconds;
        }
        // The largest window reaches 14.336 s back.
        QVERIFY(std::fabs(gapSeconds - (20 + 0.1 - 14.336)) < 0.01);
        QCOMPARE(samples, stream->newest() + 1 - std::int64_t(std::lround(gapSeconds * 1000)));
        QCOMPARE(events("gap").size(), 1);
        verifySound();
    }

    void aGapWithinASegmentMovesTheTimesBehindIt()
    {
        pass(1);
        stream->pass(16);
        pass(1);
        recording->finish();
        QCOMPARE(files().size(), std::size_t(1));
        SegmentReader reader(files()[0].path);
        QCOMPARE(reader.gaps().size(), std::size_t(1));
        QCOMPARE(reader.gaps()[0].index, std::int64_t(1001));
        const auto times = reader.times(0, reader.samples());
        QVERIFY(std::fabs(times[1001] - times[1000] - 0.001 - reader.gaps()[0].seconds) < 1e-9);
        QVERIFY(std::fabs(times.back() - 18) < 0.01);
        verifySound();
    }

    void anotherRateBeginsASegment()
    {
        pass(2);
        stream->setRate(5000);
        pass(2);
        recording->finish();
        const auto found = files();
        QCOMPARE(found.size(), std::size_t(2));
        QCOMPARE(SegmentReader(found[0].path).rate(), 1000.0);
        QCOMPARE(SegmentReader(found[1].path).rate(), 5000.0);
        QCOMPARE(events("stream"), QStringList(QStringLiteral("rate 5000 Hz")));
        verifyWhole(numbers(), 0, double(stream->newest()));
        QCOMPARE(recording->gaps(), 0);
    }

    void aStreamThatStandsStillIsNeitherAGapNorAFlood()
    {
        pass(2);
        const long stoodAt = stream->newest();
        stream->setRate(0);
        pass(100);
        stream->setRate(1000);
        pass(1);
        recording->finish();
        QCOMPARE(recording->gaps(), 0);
        QCOMPARE(events("gap").size(), 0);
        QCOMPARE(events("stream").count(QStringLiteral("the stream stands still")), 1);
        verifyWhole(numbers(), 0, double(stoodAt + 1000));
    }

    void aStreamThatCannotBeReadIsToldOnceAndGoesOn()
    {
        pass(2);
        koralink_double::fail("getBuffer");
        pass(3);
        koralink_double::fail("getBuffer", 0);
        pass(2);
        recording->finish();
        QCOMPARE(events("stream"), QStringList({QStringLiteral("the stream cannot be read"),
                                                QStringLiteral("the stream can be read again")}));
        verifyWhole(numbers(), 0, double(stream->newest()));
    }

    void aWallClockThatIsSetBackLosesNothing()
    {
        pass(25, 0.25);
        stream->setWallClockBy(-3600);
        pass(70, 0.25);
        recording->finish();
        QCOMPARE(recording->gaps(), 0);
        QCOMPARE(events("clock"), QStringList(QStringLiteral("the wall clock was set by -3600.000 s")));
        std::int64_t samples = 0;
        for (const auto& file : files())
            samples += SegmentReader(file.path).samples();
        QCOMPARE(samples, std::int64_t(stream->newest() + 1));
        verifySound();
    }

    void statusChangesAreEventsAndAFaultIsKept()
    {
        koralink_double::answers().pidStatus = PidStatusOn;
        recording->takeStatus(status.read());
        koralink_double::answers().pidStatus = PidStatusOutOfRoc;
        koralink_double::answers().pidConf = 7;
        koralink_double::answers().setpoints[2] = 12.5;
        koralink_double::answers().bpmSel[1] = 1;
        koralink_double::answers().outputMux = 0;
        koralink_double::fail("getPIDoutSel");
        pass(1);
        recording->takeStatus(status.read());
        recording->finish();
        QCOMPARE(events("fault"), QStringList(QStringLiteral("FAULT: Out of ROC")));
        QCOMPARE(events("configuration"), QStringList(QStringLiteral("code 0 -> 7")));
        QCOMPARE(events("set-point"), QStringList(QStringLiteral("Ylf 0 -> 12.5 um")));
        QCOMPARE(events("selector"),
                 QStringList({QStringLiteral("Xhf BPM 1 -> 2"), QStringLiteral("outputs by hand")}));
        QCOMPARE(events("reading"), QStringList(QStringLiteral("outputs of the loops cannot be read")));
        const auto kept = kora::archive::KeptTimes(folder->path().toStdString()).all();
        QCOMPARE(kept.size(), std::size_t(1));
        QCOMPARE(kept[0].kind, std::string("fault"));
        QVERIFY(std::llabs(kept[0].moment - stream->now().wall) < 1000000);
    }

    void newSettingsAreKeptAndNewScalesBeginASegment()
    {
        pass(1);
        writeSettings("[BPM1]\nScale_X=100\n[ROCandROI]\nBeamOffTh=0.7\n");
        recording->keepHouse();
        pass(1);
        recording->flush();
        QCOMPARE(files().size(), std::size_t(1));
        QCOMPARE(SegmentReader(files()[0].path).settings().size(), std::size_t(2));
        writeSettings("[BPM1]\nScale_X=250\n");
        recording->keepHouse();
        pass(1);
        recording->finish();
        QCOMPARE(files().size(), std::size_t(2));
        const int signal = kora::archive::signalNamed("pos1X");
        QCOMPARE(SegmentReader(files()[0].path).scale(signal), 100.0);
        QCOMPARE(SegmentReader(files()[1].path).scale(signal), 250.0);
        verifyWhole(numbers(), 0, double(stream->newest()));
    }

    void nothingButReadingFunctionsIsCalled()
    {
        pass(2);
        recording->takeStatus(status.read());
        recording->keepHouse();
        recording->finish();
        QCOMPARE(koralink_double::commands().size(), std::size_t(0));
        const QStringList allowed = {
            QStringLiteral("getBuffer"),      QStringLiteral("getDisplayFreq"), QStringLiteral("getPIDstatus"),
            QStringLiteral("getPIDconf"),     QStringLiteral("getSetpoint"),    QStringLiteral("getPIDoutSel"),
            QStringLiteral("getBPMselector"), QStringLiteral("getOutputMux"),   QStringLiteral("getROCenable"),
            QStringLiteral("getBPMStats"),    QStringLiteral("getSFPinfo"),     QStringLiteral("open"),
            QStringLiteral("ioctl"),          QStringLiteral("close")};
        for (const koralink_double::Call& call : koralink_double::calls())
            QVERIFY2(allowed.contains(QString::fromStdString(call.name)), call.name.c_str());
        // Device files are opened for reading alone.
        for (const std::string& opened : koralink_double::callsOf("open"))
            QVERIFY2(opened.find(", 0)") != std::string::npos, opened.c_str());
    }

    void theOldestSegmentsGoButKeptOnesStay()
    {
        pass(185, 0.25);
        recording->finish();
        const std::string path = folder->path().toStdString();
        const auto before = files();
        QCOMPARE(before.size(), std::size_t(4));
        kora::archive::KeptTimes(path).add({before[1].start + kora::archive::nanosecondsOf(5), 1, "mark", "here"});
        RingLimits limits;
        limits.limitBytes = 1;
        QCOMPARE(Ring(path, limits).makeRoom(before[3].path, stream->now().wall), 2);
        QCOMPARE(files().size(), std::size_t(2));
        QCOMPARE(files()[0].path, before[1].path);
        QCOMPARE(files()[1].path, before[3].path);
    }
};

QTEST_APPLESS_MAIN(RecordingTest)
#include "RecordingTest.moc"
