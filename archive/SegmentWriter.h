#pragma once

#include "archive/Hdf5.h"
#include "archive/Overview.h"
#include "archive/RecordedSignals.h"
#include "archive/SegmentLayout.h"
#include "archive/StatusSample.h"

#include <string>
#include <vector>

namespace kora::archive {

/// What a segment file is made with.
struct SegmentPlan
{
    UtcNanoseconds start = 0; ///< moment of the first sample
    int rate = 0;             ///< records per second, 0 or more
    std::string program;      ///< name and version of who writes
    std::string version;
    double scales[scaleCount] = {}; ///< um, in the order of SignalScale
    std::string settings;           ///< text of the settings file
    double longestSeconds = 60;     ///< how long it may become, for the size of its parts
    bool compress = false;
};

/// Writes one segment: a NeXus file that others can read while it grows. Everything is made at the start, since nothing
/// can be added while readers are served. One thread; every failure is an hdf5::Error, after which the file can only be
/// abandoned.
class SegmentWriter
{
public:
    /// @param path of no file yet; it has this name once readers are served
    /// @throw hdf5::Error when it cannot be made
    SegmentWriter(const std::string& path, const SegmentPlan& plan);
    /// Closes the file as far as that can be done; close() tells whether it could.
    ~SegmentWriter();
    SegmentWriter(const SegmentWriter&) = delete;
    SegmentWriter& operator=(const SegmentWriter&) = delete;

    void append(const DisplayRecord* records, int number);
    /// Samples are missing between those before and those to come; before the first one it leaves the times alone,
    /// since the segment starts with its first sample.
    void addGap(double seconds);
    void addEvent(const Event& event);
    void addStatus(double time, const StatusSample& sample);
    /// @return false when the text has no room in this segment
    bool addSettings(double time, const std::string& text);
    /// Hands on to readers all that there is. With compression the newest samples wait until they fill a chunk, at most
    /// half a second.
    void flush();
    /// Finishes overviews and file. @throw hdf5::Error
    void close();

    std::int64_t samples() const { return taken; }
    /// Time of the next sample, s from the start.
    double length() const { return timeOf(taken); }
    UtcNanoseconds start() const { return plan.start; }
    const std::string& path() const { return file; }

private:
    struct SignalColumns
    {
        hdf5::Column samples;
        hdf5::Column overviews[overviewCount][4];
        OverviewBuilder builder;
        std::vector<char> waiting;
    };

    double timeOf(std::int64_t sample) const;
    void createFile();
    void createEntry();
    void createStream(hid_t entry);
    void createOverviews(hid_t entry);
    void createLog(hid_t entry);
    void createStatus(hid_t entry);
    void takeTile(const DisplayRecord* records, int number);
    void writeWaiting();
    void writeOverviews();
    void writeEnd();

    std::string file;
    SegmentPlan plan;
    int chunkSamples;
    std::size_t settingsBytes;
    hdf5::Handle handle;
    hdf5::Handle endField;
    SignalColumns columns[signalCount];
    hdf5::Column time;
    std::vector<double> waitingTimes;
    hdf5::Column gapIndex, gapSeconds;
    hdf5::Column eventTime, eventKind, eventText;
    hdf5::Column settingsText, settingsTime;
    hdf5::Column statusTime;
    std::vector<hdf5::Column> statusColumns;
    std::int64_t taken = 0;
    std::int64_t written = 0;
    /// Where the clock of the samples was set last: at the start, and behind each gap.
    std::int64_t anchorSample = 0;
    double anchorSeconds = 0;
};

} // namespace kora::archive
