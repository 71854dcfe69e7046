#include "recorder/Recording.h"

#include "archive/SegmentReader.h"
#include "archive/SegmentRepair.h"
#include "recorder/StatusChanges.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>

#include <sys/stat.h>

namespace kora::recorder {

using archive::nanosecondsOf;
using archive::secondsOf;
using archive::UtcNanoseconds;

namespace {

/// Clock of the samples and system clock may drift so far apart before a new segment goes by the latter, s.
constexpr double tolerance = 0.1;
/// A step of the wall clock that is worth an event, s.
constexpr double clockStep = 1;

std::string inSeconds(double value)
{
    char text[48];
    std::snprintf(text, sizeof text, "%.3f s", value);
    return text;
}

} // namespace

Recording::Recording(const Clock& clock, const RecordingOptions& options, std::function<void(const std::string&)> tell)
    : clock(clock), options(options), tell(std::move(tell)), ring(options.folder, options.ring), kept(options.folder)
{
    settings = SettingsText::ofFile(options.settingsPath);
    beam.setThreshold(settings.number("ROCandROI", "BeamOffTh") * 1e-6);
    for (const archive::KeptTime& time : kept.all())
        knownMarks += time.kind == "mark";
}

Recording::~Recording()
{
    finish();
}

int Recording::repairFolder()
{
    archive::removeUnfinishedSegments(options.folder);
    int repaired = 0;
    for (const archive::SegmentFile& file : archive::segmentsIn(options.folder)) {
        try {
            repaired += archive::repairSegment(file.path);
        } catch (const archive::hdf5::Error& error) {
            tell("cannot repair " + file.path + ": " + error.what());
        }
    }
    return repaired;
}

double Recording::previousEndSeconds(UtcNanoseconds now) const
{
    const std::vector<archive::SegmentFile> files = archive::segmentsIn(options.folder);
    for (auto file = files.rbegin(); file != files.rend(); ++file) {
        try {
            return secondsOf(now - archive::SegmentReader(file->path).end());
        } catch (const archive::hdf5::Error&) {
            // Not even repaired: the one before tells.
            continue;
        }
    }
    return std::nan("");
}

UtcNanoseconds Recording::segmentEnd() const
{
    const UtcNanoseconds length = nanosecondsOf(options.ring.segmentSeconds);
    return (segment->start() / length + 1) * length;
}

int Recording::untilSegmentEnd(int number) const
{
    if (currentRate <= 0)
        return number;
    const double left = secondsOf(segmentEnd() - segment->start()) - segment->length();
    // A sample that lies on the end up to rounding belongs to the next segment.
    constexpr double rounding = 1e-3;
    return int(std::clamp(std::ceil(left * currentRate - rounding), 0.0, double(number)));
}

Recording::Anchor Recording::anchorByTheClock(const StreamPiece& piece, int remaining)
{
    const double age = piece.rate > 0 ? double(remaining - 1) / piece.rate : 0;
    return {piece.taken.monotonic - age, piece.taken.wall - nanosecondsOf(age)};
}

Recording::Anchor Recording::anchorBehind(const StreamPiece& piece, int remaining)
{
    const Anchor byTheClock = anchorByTheClock(piece, remaining);
    if (!segment || piece.startsAnew)
        return byTheClock;
    const double length = segment->length();
    const Anchor continued = {anchor.monotonic + length, segment->start() + nanosecondsOf(length)};
    const double drift = byTheClock.monotonic - continued.monotonic;
    const double step = secondsOf(byTheClock.wall - continued.wall) - drift;
    if (std::fabs(step) > clockStep)
        pendingEvents.push_back({"clock", "the wall clock was set by " + inSeconds(step)});
    return std::fabs(drift) > tolerance || std::fabs(step) > tolerance ? byTheClock : continued;
}

bool Recording::needsANewSegment(const StreamPiece& piece, int remaining) const
{
    if (!segment || untilSegmentEnd(remaining) == 0)
        return true;
    if (remaining == piece.records && piece.startsAnew)
        return true;
    // A segment that was opened for the status alone starts too early for these samples.
    const bool startsTooEarly = segment->samples() == 0 &&
                                std::fabs(anchorByTheClock(piece, remaining).monotonic - anchor.monotonic) > tolerance;
    const bool gapReachesItsEnd =
        pendingGap > 0 && pendingGap + segment->length() > secondsOf(segmentEnd() - segment->start());
    return startsTooEarly || gapReachesItsEnd;
}

void Recording::take(const StreamPiece& piece, const DisplayRecord* records)
{
    allGaps += piece.gapSeconds > 0;
    try {
        appendAll(piece, records);
    } catch (const archive::hdf5::Error& error) {
        abandonSegment(error.what());
        pendingGap += piece.rate > 0 ? double(unwritten) / piece.rate : 0;
    }
}

void Recording::appendAll(const StreamPiece& piece, const DisplayRecord* records)
{
    if (!piece.notice.empty() && !piece.startsAnew)
        addEventNow("stream", piece.notice);
    if (piece.records == 0)
        return;
    pendingGap += piece.gapSeconds;
    unwritten = piece.records;
    int first = 0;
    while (first < piece.records) {
        const int left = piece.records - first;
        if (needsANewSegment(piece, left)) {
            const Anchor start = anchorBehind(piece, left);
            if (first == 0 && piece.startsAnew && !piece.notice.empty())
                pendingEvents.push_back({"stream", piece.notice});
            closeSegment();
            if (!openSegment(start, piece.rate)) {
                pendingGap += piece.rate > 0 ? double(left) / piece.rate : 0;
                return;
            }
        }
        if (pendingGap > 0)
            noteGap(pendingGap);
        pendingGap = 0;
        const int number = std::max(untilSegmentEnd(left), 1);
        const double before = segment->length();
        beam.look(records + first, number, piece.rate, [&](bool isLost, std::int64_t index) {
            addEvent(before + double(index) / std::max(piece.rate, 1), "beam",
                     isLost ? "beam lost at BPM1" : "beam back at BPM1");
        });
        segment->append(records + first, number);
        allSamples += number;
        first += number;
        unwritten -= number;
    }
}

void Recording::noteGap(double seconds)
{
    segment->addGap(seconds);
    addEvent(segment->length(), "gap", inSeconds(seconds) + " are missing");
}

bool Recording::openSegment(const Anchor& start, int rate)
{
    if (diskIsFull)
        return false;
    archive::SegmentPlan plan;
    plan.start = start.wall;
    plan.rate = rate;
    plan.program = "kora-recorder";
    plan.version = options.version;
    plan.settings = settings.text();
    plan.longestSeconds = options.ring.segmentSeconds;
    plan.compress = options.compress;
    for (int scale = 0; scale < archive::scaleCount; ++scale)
        plan.scales[scale] = settings.scale(SignalScale(scale + 1));
    std::error_code ignored;
    std::filesystem::create_directories(options.folder, ignored);
    const double sinceTheLast = started ? 0 : previousEndSeconds(start.wall);
    ring.makeRoom({}, clock.now().wall);
    try {
        segment = std::make_unique<archive::SegmentWriter>(archive::freeSegmentPath(options.folder, start.wall), plan);
    } catch (const archive::hdf5::Error& error) {
        if (!cannotWrite)
            tell(std::string("cannot record: ") + error.what());
        cannotWrite = true;
        return false;
    }
    cannotWrite = false;
    anchor = start;
    currentRate = rate;
    flushedLength = 0;
    if (!started) {
        const bool follows = sinceTheLast > 0;
        pendingGap = follows ? sinceTheLast : 0;
        pendingEvents.push_back(
            {"start", follows ? "recording starts, " + inSeconds(sinceTheLast) + " after the end of the last segment"
                              : "recording starts"});
    }
    started = true;
    std::vector<std::pair<std::string, std::string>> events;
    events.swap(pendingEvents);
    for (const auto& event : events)
        addEvent(0, event.first, event.second);
    return true;
}

void Recording::closeSegment()
{
    if (!segment)
        return;
    const std::string path = segment->path();
    try {
        segment->close();
    } catch (const archive::hdf5::Error& error) {
        tell("cannot close " + path + ": " + error.what());
    }
    segment.reset();
}

void Recording::abandonSegment(const std::string& why)
{
    if (!segment)
        return;
    const std::string path = segment->path();
    const double length = segment->length();
    const double lost = fileIsThere() ? length - flushedLength : length;
    segment.reset();
    try {
        archive::repairSegment(path);
    } catch (const archive::hdf5::Error&) {
        // It stays as it is: the next start tries again.
    }
    pendingGap += std::max(lost, 0.0);
    pendingEvents.push_back({"disk", "a segment ended early: " + why});
    tell("a segment ended early: " + why);
}

void Recording::flush()
{
    if (!segment)
        return;
    try {
        segment->flush();
        flushedLength = segment->length();
    } catch (const archive::hdf5::Error& error) {
        abandonSegment(error.what());
    }
}

void Recording::finish()
{
    if (!segment)
        return;
    try {
        addEventNow("stop", "recording ends");
    } catch (const archive::hdf5::Error& error) {
        abandonSegment(error.what());
    }
    closeSegment();
}

double Recording::timeNow() const
{
    return clock.now().monotonic - anchor.monotonic;
}

void Recording::addEventNow(const std::string& kind, const std::string& text)
{
    if (segment)
        addEvent(timeNow(), kind, text);
    else
        pendingEvents.push_back({kind, text});
}

void Recording::addEvent(double time, const std::string& kind, const std::string& text)
{
    segment->addEvent({time, kind, text});
    tell(kind + ": " + text);
    const bool isGrave = kind == "fault" || (kind == "beam" && text.find("lost") != std::string::npos);
    if (isGrave)
        kept.add({segment->start() + nanosecondsOf(time), options.postMortemSeconds, kind, text});
}

void Recording::takeStatus(const archive::StatusSample& sample)
{
    try {
        if (lastStatus) {
            for (const Change& change : changesBetween(*lastStatus, sample))
                addEventNow(change.kind, change.text);
        }
        if (segment)
            segment->addStatus(timeNow(), sample);
    } catch (const archive::hdf5::Error& error) {
        abandonSegment(error.what());
    }
    lastStatus = sample;
}

void Recording::readSettings()
{
    const SettingsText now = SettingsText::ofFile(options.settingsPath);
    if (now == settings)
        return;
    bool scalesDiffer = false;
    for (int scale = 1; scale <= archive::scaleCount; ++scale)
        scalesDiffer = scalesDiffer || now.scale(SignalScale(scale)) != settings.scale(SignalScale(scale));
    settings = now;
    beam.setThreshold(settings.number("ROCandROI", "BeamOffTh") * 1e-6);
    addEventNow("settings", "the settings file has changed");
    if (!segment)
        return;
    if (!scalesDiffer && segment->addSettings(timeNow(), settings.text()))
        return;
    // The scale factors stand beside the columns and hold for a whole segment.
    const Anchor next = {anchor.monotonic + segment->length(), segment->start() + nanosecondsOf(segment->length())};
    closeSegment();
    openSegment(next, currentRate);
}

void Recording::readMarks()
{
    std::vector<archive::KeptTime> marks;
    for (const archive::KeptTime& time : kept.all()) {
        if (time.kind == "mark")
            marks.push_back(time);
    }
    for (std::size_t i = knownMarks; i < marks.size(); ++i) {
        if (segment)
            addEvent(secondsOf(marks[i].moment - segment->start()), "mark", marks[i].text);
    }
    knownMarks = marks.size();
}

bool Recording::fileIsThere() const
{
    struct stat status = {};
    return !segment || ::stat(segment->path().c_str(), &status) == 0;
}

void Recording::keepHouse()
{
    if (!fileIsThere())
        abandonSegment("its file is gone");
    const Moment now = clock.now();
    const std::int64_t reserved = ring.reservedBytes();
    if (ring.freeBytes() >= 0 && ring.freeBytes() < reserved)
        ring.makeRoom(segment ? segment->path() : std::string(), now.wall);
    const std::int64_t free = ring.freeBytes();
    const bool isFull = free >= 0 && free < reserved / 2;
    if (isFull && !diskIsFull) {
        tell("the disk is full");
        closeSegment();
        pendingEvents.push_back({"disk", "the disk was full"});
    }
    if (diskIsFull && !isFull)
        tell("there is room on the disk again");
    diskIsFull = isFull;
    try {
        readSettings();
        readMarks();
        const bool isOver = segment && segment->start() + nanosecondsOf(timeNow()) > segmentEnd() + nanosecondsOf(2);
        if (isOver)
            closeSegment();
        // A stream that brings nothing is waited for; then status and events get a segment without samples.
        quietRounds = segment ? 0 : quietRounds + 1;
        constexpr int patientRounds = 3;
        if (quietRounds >= patientRounds)
            openSegment(now, currentRate);
    } catch (const archive::hdf5::Error& error) {
        abandonSegment(error.what());
    }
}

} // namespace kora::recorder
