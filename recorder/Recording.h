#pragma once

#include "archive/KeptTimes.h"
#include "archive/SegmentWriter.h"
#include "recorder/BeamWatch.h"
#include "recorder/Clock.h"
#include "recorder/PieceQueue.h"
#include "recorder/Ring.h"
#include "recorder/SettingsText.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace kora::recorder {

struct RecordingOptions
{
    std::string folder;
    RingLimits ring;
    bool compress = false;
    double postMortemSeconds = 60;
    std::string settingsPath;
    std::string version;
};

/// Turns pieces of the stream, status and events into segments in a folder. It lives through a folder that goes, a disk
/// that is full and files that cannot be written: what is lost meanwhile becomes a gap, and recording goes on. One
/// thread, which owns HDF5.
class Recording
{
public:
    /// @param tell called with one line for each event
    Recording(const Clock& clock, const RecordingOptions& options, std::function<void(const std::string&)> tell);
    ~Recording();

    /// Repairs what a killed recorder has left behind in the folder. @return repaired files
    int repairFolder();
    void take(const StreamPiece& piece, const DisplayRecord* records);
    void takeStatus(const archive::StatusSample& sample);
    /// What is due once a second: new marks and settings, room on the disk, a segment of its own for a stream that
    /// brings nothing.
    void keepHouse();
    /// Hands on to readers what there is.
    void flush();
    /// Closes the segment whole.
    void finish();

    std::int64_t samples() const { return allSamples; }
    std::int64_t gaps() const { return allGaps; }
    int rate() const { return currentRate; }
    std::int64_t freeBytes() const { return ring.freeBytes(); }

private:
    /// When the first sample of a segment was taken, by both clocks.
    using Anchor = Moment;

    bool openSegment(const Anchor& start, int rate);
    void closeSegment();
    void abandonSegment(const std::string& why);
    static Anchor anchorByTheClock(const StreamPiece& piece, int remaining);
    /// @param remaining records of the piece from the one on that comes next
    bool needsANewSegment(const StreamPiece& piece, int remaining) const;
    Anchor anchorBehind(const StreamPiece& piece, int remaining);
    archive::UtcNanoseconds segmentEnd() const;
    int untilSegmentEnd(int number) const;
    void appendAll(const StreamPiece& piece, const DisplayRecord* records);
    void noteGap(double seconds);
    void addEvent(double time, const std::string& kind, const std::string& text);
    void addEventNow(const std::string& kind, const std::string& text);
    double timeNow() const;
    void readSettings();
    void readMarks();
    bool fileIsThere() const;
    double previousEndSeconds(archive::UtcNanoseconds now) const;

    const Clock& clock;
    RecordingOptions options;
    std::function<void(const std::string&)> tell;
    Ring ring;
    archive::KeptTimes kept;
    BeamWatch beam;
    SettingsText settings;
    std::unique_ptr<archive::SegmentWriter> segment;
    Anchor anchor = {};
    int currentRate = 0;
    bool started = false;
    bool diskIsFull = false;
    bool cannotWrite = false;
    /// Missing before the next sample that is written, s.
    double pendingGap = 0;
    /// Records of the present piece that are not yet in a segment.
    int unwritten = 0;
    int quietRounds = 0;
    /// Length of the segment when it was handed on to readers last.
    double flushedLength = 0;
    std::optional<archive::StatusSample> lastStatus;
    std::vector<std::pair<std::string, std::string>> pendingEvents;
    std::size_t knownMarks = 0;
    std::int64_t allSamples = 0;
    std::int64_t allGaps = 0;
};

} // namespace kora::recorder
