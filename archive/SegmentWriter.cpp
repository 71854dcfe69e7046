#include "archive/SegmentWriter.h"

#include "archive/StatusFields.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <filesystem>

namespace kora::archive {

namespace {

/// Records that are turned into columns at once: few enough for the processor's nearest cache.
constexpr int tileRecords = 128;
constexpr int largestChunk = 16384;
/// Below this rate nothing is compressed: a chunk that is written again and again would leave its old forms in the
/// file, and there is little to gain.
constexpr int leastCompressedRate = 512;
constexpr int deflateLevel = 1;

int powerOfTwoUpTo(double samples, int lowest)
{
    int chunk = lowest;
    while (chunk * 2 <= samples && chunk < largestChunk)
        chunk *= 2;
    return chunk;
}

/// A plain chunk may be written again in its place while it fills. A compressed one is written once it is full, so that
/// it holds half a second at most.
int chunkFor(const SegmentPlan& plan)
{
    return plan.compress ? powerOfTwoUpTo(plan.rate / 2.0, leastCompressedRate / 2)
                         : powerOfTwoUpTo(plan.rate * std::min(plan.longestSeconds, 4.0), leastCompressedRate / 2);
}

int overviewChunk(const SegmentPlan& plan, int overview)
{
    constexpr int lowest = 16;
    constexpr int highest = 2048;
    const double values = plan.rate * plan.longestSeconds / overviewFactors[overview];
    return std::min(highest, powerOfTwoUpTo(values, lowest));
}

hid_t typeOf(FieldType type)
{
    switch (type) {
    case FieldType::Int32:
        return H5T_NATIVE_INT32;
    case FieldType::UInt32:
        return H5T_NATIVE_UINT32;
    case FieldType::Double:
        return H5T_NATIVE_DOUBLE;
    case FieldType::Byte:
        break;
    }
    return H5T_NATIVE_UCHAR;
}

hdf5::Column plainColumn(hid_t group, const char* name, hid_t type, hsize_t chunk,
                         const std::vector<hsize_t>& rowShape = {})
{
    return hdf5::Column::create(group, name, {type, rowShape, chunk, 0, false, 1});
}

std::vector<char> padded(const std::string& text, std::size_t bytes)
{
    std::vector<char> field(bytes, '\0');
    std::copy_n(text.begin(), std::min(text.size(), bytes), field.begin());
    return field;
}

void describe(hid_t object, const char* units, const char* longName)
{
    if (units[0] != '\0')
        hdf5::writeText(object, "units", units);
    hdf5::writeText(object, "long_name", longName);
}

} // namespace

SegmentWriter::SegmentWriter(const std::string& path, const SegmentPlan& wanted)
    : file(path), plan(wanted), chunkSamples(0), settingsBytes(std::max(leastSettingsBytes, 2 * wanted.settings.size()))
{
    plan.compress = plan.compress && plan.rate >= leastCompressedRate;
    chunkSamples = chunkFor(plan);
    hdf5::silence();
    createFile();
    createEntry();
    hdf5::check(H5Fstart_swmr_write(handle), "serve readers of " + file);
    addSettings(0, plan.settings);
    flush();
    std::error_code error;
    std::filesystem::rename(file + unfinishedEnding, file, error);
    if (error)
        throw hdf5::Error("name " + file + ": " + error.message());
}

SegmentWriter::~SegmentWriter()
{
    try {
        close();
    } catch (const hdf5::Error&) {
        // Who wants to know has called close().
        handle.reset();
    }
}

double SegmentWriter::timeOf(std::int64_t sample) const
{
    return plan.rate > 0 ? anchorSeconds + double(sample - anchorSample) / plan.rate : anchorSeconds;
}

void SegmentWriter::createFile()
{
    const hdf5::Handle access(H5Pcreate(H5P_FILE_ACCESS), H5Pclose, file);
    hdf5::check(H5Pset_libver_bounds(access, H5F_LIBVER_LATEST, H5F_LIBVER_LATEST), file);
    // Under another name while it is being made, since nobody can read it yet.
    const std::string unfinished = file + unfinishedEnding;
    handle =
        hdf5::Handle(H5Fcreate(unfinished.c_str(), H5F_ACC_TRUNC, H5P_DEFAULT, access), H5Fclose, "create " + file);
}

void SegmentWriter::createEntry()
{
    hdf5::writeText(handle, "NX_class", "NXroot");
    hdf5::writeText(handle, "default", "entry");
    const hdf5::Handle entry = hdf5::createGroup(handle, "entry", "NXentry");
    hdf5::writeText(entry, "default", "stream");
    hdf5::createTextField(entry, "start_time", momentBytes, isoText(plan.start));
    endField = hdf5::createTextField(entry, "end_time", momentBytes, isoText(plan.start));
    const std::string name = plan.program + " " + plan.version;
    const hdf5::Handle program =
        hdf5::createTextField(entry, "program_name", std::max<std::size_t>(name.size(), 1), name);
    hdf5::writeText(program, "version", plan.version);
    createStream(entry);
    createOverviews(entry);
    createLog(entry);
    createStatus(entry);
}

void SegmentWriter::createStream(hid_t entry)
{
    const hdf5::Handle stream = hdf5::createGroup(entry, "stream", "NXdata");
    hdf5::writeText(stream, "signal", defaultSignal);
    hdf5::writeText(stream, "axes", "time");
    hdf5::writeNumber(stream, "rate", plan.rate);
    const auto column = [&](const char* name, hid_t type) {
        constexpr int cachedChunks = 2;
        return hdf5::Column::create(
            stream, name,
            {type, {}, hsize_t(chunkSamples), plan.compress ? deflateLevel : 0, plan.compress, cachedChunks});
    };
    time = column("time", H5T_NATIVE_DOUBLE);
    describe(time.id(), "s", "Time");
    hdf5::writeText(time.id(), "start", isoText(plan.start));
    for (int i = 0; i < signalCount; ++i) {
        const StreamSignal& signal = signalTable[i];
        columns[i].samples = column(signal.name, isSinglePrecision(signal) ? H5T_NATIVE_FLOAT : H5T_NATIVE_DOUBLE);
        columns[i].waiting.reserve(std::size_t(chunkSamples) * bytesOf(signal));
        describe(columns[i].samples.id(), recordedUnit(signal).c_str(), signal.meaning);
        if (signal.scale != SignalScale::None)
            hdf5::writeNumber(columns[i].samples.id(), "scale", plan.scales[int(signal.scale) - 1]);
    }
    waitingTimes.reserve(std::size_t(chunkSamples));
}

void SegmentWriter::createOverviews(hid_t entry)
{
    for (int overview = 0; overview < overviewCount; ++overview) {
        const hdf5::Handle group = hdf5::createGroup(
            entry, std::string(overviewGroups[overview]).substr(std::strlen("entry/")), "NXcollection");
        hdf5::writeNumber(group, "samples", overviewFactors[overview]);
        const auto chunk = hsize_t(overviewChunk(plan, overview));
        for (int i = 0; i < signalCount; ++i) {
            const hdf5::Handle signal = hdf5::createGroup(group, signalTable[i].name, "NXcollection");
            for (int field = 0; field < 4; ++field)
                columns[i].overviews[overview][field] =
                    plainColumn(signal, stretchFields[field], H5T_NATIVE_DOUBLE, chunk);
        }
    }
}

void SegmentWriter::createLog(hid_t entry)
{
    constexpr hsize_t chunk = 64;
    const hdf5::Handle gaps = hdf5::createGroup(entry, "gaps", "NXcollection");
    gapIndex = plainColumn(gaps, "index", H5T_NATIVE_INT64, chunk);
    hdf5::writeText(gapIndex.id(), "long_name", "Sample before which others are missing");
    gapSeconds = plainColumn(gaps, "seconds", H5T_NATIVE_DOUBLE, chunk);
    describe(gapSeconds.id(), "s", "Length of the gap");
    const hdf5::Handle events = hdf5::createGroup(entry, "events", "NXcollection");
    eventTime = plainColumn(events, "time", H5T_NATIVE_DOUBLE, chunk);
    describe(eventTime.id(), "s", "Time from start_time");
    eventKind = plainColumn(events, "kind", hdf5::textType(kindBytes), chunk);
    eventText = plainColumn(events, "text", hdf5::textType(eventBytes), chunk);
    // One row for each text, mostly zeros at its end.
    settingsText =
        hdf5::Column::create(entry, "settings", {hdf5::textType(settingsBytes), {}, 1, deflateLevel, false, 1});
    settingsTime = plainColumn(entry, "settings_time", H5T_NATIVE_DOUBLE, chunk);
    describe(settingsTime.id(), "s", "When each of the settings was read, from start_time");
}

void SegmentWriter::createStatus(hid_t entry)
{
    constexpr hsize_t chunk = 64;
    const hdf5::Handle status = hdf5::createGroup(entry, "status", "NXlog");
    hdf5::writeText(status, "signal", statusFields[0].name);
    hdf5::writeText(status, "axes", "time");
    statusTime = plainColumn(status, "time", H5T_NATIVE_DOUBLE, chunk);
    describe(statusTime.id(), "s", "Time");
    hdf5::writeText(statusTime.id(), "start", isoText(plan.start));
    for (const StatusField& field : statusFields) {
        std::vector<hsize_t> shape;
        for (const int values : field.shape) {
            if (values > 0)
                shape.push_back(hsize_t(values));
        }
        statusColumns.push_back(plainColumn(status, field.name, typeOf(field.type), chunk, shape));
        describe(statusColumns.back().id(), field.units, field.longName);
    }
}

void SegmentWriter::append(const DisplayRecord* records, int number)
{
    while (number > 0) {
        const int room = chunkSamples - int(taken % chunkSamples);
        const int tile = std::min({number, tileRecords, room});
        takeTile(records, tile);
        records += tile;
        number -= tile;
        if (taken % chunkSamples == 0)
            writeWaiting();
    }
}

void SegmentWriter::takeTile(const DisplayRecord* records, int number)
{
    for (int i = 0; i < number; ++i)
        waitingTimes.push_back(timeOf(taken + i));
    double values[tileRecords];
    for (int i = 0; i < signalCount; ++i) {
        const StreamSignal& signal = signalTable[i];
        SignalColumns& column = columns[i];
        const std::size_t before = column.waiting.size();
        column.waiting.resize(before + std::size_t(number) * bytesOf(signal));
        char* place = column.waiting.data() + before;
        const char* source = reinterpret_cast<const char*>(records) + signal.place.offset;
        for (int record = 0; record < number; ++record) {
            std::memcpy(place, source, bytesOf(signal));
            values[record] = signal.rawValue(records[record]);
            place += bytesOf(signal);
            source += sizeof(DisplayRecord);
        }
        column.builder.add(values, number);
    }
    taken += number;
}

void SegmentWriter::writeWaiting()
{
    const auto number = hsize_t(taken - written);
    if (number == 0)
        return;
    for (int i = 0; i < signalCount; ++i) {
        columns[i].samples.append(columns[i].waiting.data(), number,
                                  isSinglePrecision(signalTable[i]) ? H5T_NATIVE_FLOAT : H5T_NATIVE_DOUBLE);
        columns[i].waiting.clear();
    }
    // Last, so that who goes by the length of the axis finds every signal that long.
    time.append(waitingTimes.data(), number, H5T_NATIVE_DOUBLE);
    waitingTimes.clear();
    written = taken;
}

void SegmentWriter::writeOverviews()
{
    std::vector<double> values;
    for (SignalColumns& column : columns) {
        for (int overview = 0; overview < overviewCount; ++overview) {
            OverviewBuilder::Finished& finished = column.builder.finished(overview);
            constexpr double Stretch::*members[] = {&Stretch::min, &Stretch::max, &Stretch::mean, &Stretch::deviation};
            for (int field = 0; field < 4 && !finished.empty(); ++field) {
                values.clear();
                for (const Stretch& stretch : finished)
                    values.push_back(stretch.*members[field]);
                column.overviews[overview][field].append(values.data(), values.size(), H5T_NATIVE_DOUBLE);
            }
            finished.clear();
        }
    }
}

void SegmentWriter::addGap(double seconds)
{
    const double length = timeOf(taken);
    gapIndex.append(&taken, 1, H5T_NATIVE_INT64);
    gapSeconds.append(&seconds, 1, H5T_NATIVE_DOUBLE);
    // What is missing before the first sample lies before the start.
    anchorSample = taken;
    anchorSeconds = taken > 0 ? length + seconds : 0;
}

void SegmentWriter::addEvent(const Event& event)
{
    eventTime.append(&event.time, 1, H5T_NATIVE_DOUBLE);
    eventKind.append(padded(event.kind, kindBytes).data(), 1, hdf5::textType(kindBytes));
    eventText.append(padded(event.text, eventBytes).data(), 1, hdf5::textType(eventBytes));
}

void SegmentWriter::addStatus(double seconds, const StatusSample& sample)
{
    const char* row = reinterpret_cast<const char*>(&sample);
    for (int i = 0; i < statusFieldCount; ++i)
        statusColumns[std::size_t(i)].append(row + statusFields[i].offset, 1, typeOf(statusFields[i].type));
    statusTime.append(&seconds, 1, H5T_NATIVE_DOUBLE);
}

bool SegmentWriter::addSettings(double seconds, const std::string& text)
{
    if (text.size() > settingsBytes)
        return false;
    settingsText.append(padded(text, settingsBytes).data(), 1, hdf5::textType(settingsBytes));
    settingsTime.append(&seconds, 1, H5T_NATIVE_DOUBLE);
    return true;
}

void SegmentWriter::writeEnd()
{
    hdf5::rewriteTextField(endField, momentBytes, isoText(plan.start + nanosecondsOf(timeOf(written))));
}

void SegmentWriter::flush()
{
    if (!plan.compress)
        writeWaiting();
    writeOverviews();
    writeEnd();
    hdf5::check(H5Fflush(handle, H5F_SCOPE_LOCAL), "write " + file);
}

void SegmentWriter::close()
{
    if (!handle.isOpen())
        return;
    writeWaiting();
    for (SignalColumns& column : columns)
        column.builder.finish();
    writeOverviews();
    writeEnd();
    hdf5::check(H5Fflush(handle, H5F_SCOPE_LOCAL), "write " + file);
    for (SignalColumns& column : columns)
        column = SignalColumns();
    for (hdf5::Column* column :
         {&time, &gapIndex, &gapSeconds, &eventTime, &eventKind, &eventText, &settingsText, &settingsTime, &statusTime})
        *column = hdf5::Column();
    statusColumns.clear();
    endField.reset();
    if (!handle.reset())
        throw hdf5::Error("close " + file);
}

} // namespace kora::archive
