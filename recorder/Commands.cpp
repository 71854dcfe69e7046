#include "recorder/Commands.h"

#include "archive/KeptTimes.h"
#include "archive/SegmentCheck.h"
#include "archive/SegmentReader.h"
#include "recorder/Clock.h"

#include <cmath>
#include <cstdio>

namespace kora::recorder {

using archive::localText;
using archive::nanosecondsOf;
using archive::secondsOf;
using archive::SegmentFile;
using archive::SegmentReader;

namespace {

constexpr double mebibyte = 1024 * 1024;
constexpr int failed = 1;

void complain(const std::string& text)
{
    std::fprintf(stderr, "kora-recorder: %s\n", text.c_str());
}

void showEvents(SegmentReader& reader, const char* indent)
{
    for (const archive::Event& event : reader.events())
        std::printf("%s%s  %-13s  %s\n", indent, localText(reader.start() + nanosecondsOf(event.time)).c_str(),
                    event.kind.c_str(), event.text.c_str());
}

void showLine(const SegmentFile& file, bool isKept)
{
    SegmentReader reader(file.path);
    std::printf("%s  %8.3f s  %6.0f Hz  %9lld samples  %zu gaps  %7.1f MB%s\n", localText(reader.start()).c_str(),
                secondsOf(reader.end() - reader.start()), reader.rate(), static_cast<long long>(reader.samples()),
                reader.gaps().size(), double(file.bytes) / mebibyte, isKept ? "  kept" : "");
    showEvents(reader, "    ");
}

void showSegment(const std::string& path)
{
    SegmentReader reader(path);
    std::printf("%s\n", path.c_str());
    std::printf("  from      %s (%s)\n", localText(reader.start()).c_str(), archive::isoText(reader.start()).c_str());
    std::printf("  to        %s\n", localText(reader.end()).c_str());
    std::printf("  written   by %s\n", reader.program().c_str());
    std::printf("  rate      %.0f Hz\n", reader.rate());
    std::printf("  samples   %lld of %d signals\n", static_cast<long long>(reader.samples()), archive::signalCount);
    std::printf("  status    %lld rows\n", static_cast<long long>(reader.statusRows()));
    std::printf("  settings  %zu\n", reader.settings().size());
    for (const archive::Gap& gap : reader.gaps())
        std::printf("  gap       %.6f s before sample %lld\n", gap.seconds, static_cast<long long>(gap.index));
    showEvents(reader, "  ");
}

} // namespace

int listRecordings(const Options& options)
{
    const std::vector<SegmentFile> files = archive::segmentsIn(options.recording.folder);
    const std::vector<bool> kept = keptSegments(files, options.recording.folder, options.recording.ring.segmentSeconds);
    int status = 0;
    for (std::size_t i = 0; i < files.size(); ++i) {
        try {
            showLine(files[i], kept[i]);
        } catch (const archive::hdf5::Error& error) {
            complain(error.what());
            status = failed;
        }
    }
    for (const archive::KeptTime& time : archive::KeptTimes(options.recording.folder).all())
        std::printf("kept for good: %s +- %.0f s  %s: %s\n", localText(time.moment).c_str(), time.seconds,
                    time.kind.c_str(), time.text.c_str());
    return status;
}

int showSegments(const Options& options)
{
    int status = 0;
    for (const std::string& path : options.words) {
        try {
            showSegment(path);
        } catch (const archive::hdf5::Error& error) {
            complain(error.what());
            status = failed;
        }
    }
    return status;
}

int verifySegments(const Options& options)
{
    std::vector<std::string> paths = options.words;
    if (paths.empty()) {
        for (const SegmentFile& file : archive::segmentsIn(options.recording.folder))
            paths.push_back(file.path);
    }
    int damaged = 0;
    for (const std::string& path : paths) {
        const std::vector<std::string> complaints = archive::checkSegment(path);
        for (const std::string& complaint : complaints)
            std::printf("%s: %s\n", path.c_str(), complaint.c_str());
        damaged += !complaints.empty();
    }
    std::printf("%zu segments, %d damaged\n", paths.size(), damaged);
    return damaged > 0 ? failed : 0;
}

int markNow(const Options& options)
{
    const RecordingOptions& recording = options.recording;
    if (archive::KeptTimes(recording.folder)
            .add({SystemClock().now().wall, recording.postMortemSeconds, "mark", options.words.front()}))
        return 0;
    complain("cannot write into " + recording.folder);
    return failed;
}

int forgetKept(const Options& options)
{
    const std::string& which = options.words.front();
    const auto moment = archive::momentOfUserText(which, SystemClock().now().wall);
    if (which != "all" && !moment)
        throw UsageError("forget wants a time or \"all\", not \"" + which + '"');
    const int forgotten = archive::KeptTimes(options.recording.folder).removeIf([&](const archive::KeptTime& time) {
        return which == "all" || (time.from() <= *moment && *moment <= time.to());
    });
    if (forgotten < 0) {
        complain("cannot write into " + options.recording.folder);
        return failed;
    }
    std::printf("%d forgotten\n", forgotten);
    return forgotten > 0 ? 0 : failed;
}

} // namespace kora::recorder
