#include "archive/SegmentRepair.h"

#include "archive/Hdf5.h"
#include "archive/Overview.h"
#include "archive/RecordedSignals.h"
#include "archive/SegmentLayout.h"

#include <algorithm>
#include <vector>

namespace kora::archive {

namespace {

/// Opens a file in spite of the mark that its writer has left, and takes the mark away. The two properties are those
/// that the library's own tool h5clear sets; they have no other name.
hdf5::Handle openInSpiteOfItsMark(const std::string& path)
{
    const hdf5::Handle access(H5Pcreate(H5P_FILE_ACCESS), H5Pclose, path);
    hdf5::check(H5Pset_libver_bounds(access, H5F_LIBVER_LATEST, H5F_LIBVER_LATEST), path);
    const hbool_t yes = true;
    hdf5::check(H5Pset(access, "clear_status_flags", &yes), path);
    hdf5::check(H5Pset(access, "skip_eof_check", &yes), path);
    hdf5::Handle file(H5Fopen(path.c_str(), H5F_ACC_RDWR, access), H5Fclose, "repair " + path);
    // The end of the file as the killed writer has noted it lies before what it has written.
    hdf5::check(H5Fincrement_filesize(file, 0), "repair " + path);
    return file;
}

std::string streamPath(const char* name)
{
    return std::string(streamGroup) + '/' + name;
}

/// Cuts all columns of a group to the length of the shortest. @return that length
hsize_t levelColumns(std::vector<hdf5::Column>& columns)
{
    hsize_t shortest = columns.front().rows();
    for (const hdf5::Column& column : columns)
        shortest = std::min(shortest, column.rows());
    for (hdf5::Column& column : columns) {
        if (column.rows() > shortest)
            column.resize(shortest);
    }
    return shortest;
}

std::vector<hdf5::Column> columnsOf(hid_t file, const std::vector<std::string>& paths)
{
    std::vector<hdf5::Column> columns;
    for (const std::string& path : paths)
        columns.push_back(hdf5::Column::open(file, path));
    return columns;
}

void completeOverviews(hid_t file, hdf5::Column& samples, const char* signal)
{
    OverviewBuilder builder;
    std::vector<double> block(overviewFactors[1]);
    for (hsize_t first = 0; first < samples.rows(); first += block.size()) {
        const hsize_t number = std::min(hsize_t(block.size()), samples.rows() - first);
        samples.read(first, number, block.data(), H5T_NATIVE_DOUBLE);
        builder.add(block.data(), int(number));
    }
    builder.finish();
    constexpr double Stretch::*members[] = {&Stretch::min, &Stretch::max, &Stretch::mean, &Stretch::deviation};
    for (int overview = 0; overview < overviewCount; ++overview) {
        const OverviewBuilder::Finished& stretches = builder.finished(overview);
        for (int field = 0; field < 4; ++field) {
            hdf5::Column column = hdf5::Column::open(file, std::string(overviewGroups[overview]) + '/' + signal + '/' +
                                                               stretchFields[field]);
            std::vector<double> values;
            for (const Stretch& stretch : stretches)
                values.push_back(stretch.*members[field]);
            column.resize(values.size());
            if (!values.empty())
                column.overwrite(0, values.data(), values.size(), H5T_NATIVE_DOUBLE);
        }
    }
}

/// Gaps behind the last sample concern samples that were lost.
void dropGapsBehind(hid_t file, std::int64_t samples)
{
    std::vector<hdf5::Column> gaps =
        columnsOf(file, {std::string(gapsGroup) + "/index", std::string(gapsGroup) + "/seconds"});
    hsize_t kept = levelColumns(gaps);
    std::vector<std::int64_t> index(kept);
    gaps[0].read(0, kept, index.data(), H5T_NATIVE_INT64);
    while (kept > 0 && index[kept - 1] >= samples)
        --kept;
    for (hdf5::Column& column : gaps)
        column.resize(kept);
}

void writeEnd(hid_t file, const hdf5::Column& time)
{
    const auto start = momentOfIsoText(hdf5::readTextField(file, "entry/start_time"));
    double last = 0;
    if (time.rows() > 0)
        time.read(time.rows() - 1, 1, &last, H5T_NATIVE_DOUBLE);
    const hdf5::Handle stream(H5Gopen2(file, streamGroup, H5P_DEFAULT), H5Gclose, streamGroup);
    const double rate = hdf5::readNumber(stream, "rate");
    const double length = time.rows() > 0 && rate > 0 ? last + 1 / rate : last;
    const hdf5::Handle field(H5Dopen2(file, "entry/end_time", H5P_DEFAULT), H5Dclose, "end_time");
    hdf5::rewriteTextField(field, momentBytes, isoText(start.value_or(0) + nanosecondsOf(length)));
}

void levelLog(hid_t file)
{
    for (const std::vector<std::string>& names :
         {std::vector<std::string>{std::string(eventsGroup) + "/time", std::string(eventsGroup) + "/kind",
                                   std::string(eventsGroup) + "/text"},
          {settingsField, settingsTimeField}}) {
        std::vector<hdf5::Column> columns = columnsOf(file, names);
        levelColumns(columns);
    }
}

void levelStatus(hid_t file)
{
    const hdf5::Handle group(H5Gopen2(file, statusGroup, H5P_DEFAULT), H5Gclose, statusGroup);
    std::vector<std::string> names;
    const auto collect = [](hid_t, const char* name, const H5L_info_t*, void* list) -> herr_t {
        static_cast<std::vector<std::string>*>(list)->push_back(std::string(statusGroup) + '/' + name);
        return 0;
    };
    hdf5::check(H5Literate(group, H5_INDEX_NAME, H5_ITER_NATIVE, nullptr, collect, &names), statusGroup);
    if (names.empty())
        return;
    std::vector<hdf5::Column> columns = columnsOf(file, names);
    levelColumns(columns);
}

} // namespace

bool opensPlainly(const std::string& path)
{
    hdf5::silence();
    const hid_t file = H5Fopen(path.c_str(), H5F_ACC_RDONLY, H5P_DEFAULT);
    return file >= 0 && H5Fclose(file) >= 0;
}

bool repairSegment(const std::string& path)
{
    if (opensPlainly(path))
        return false;
    // In two steps: only a file that was opened without the mark is read by the rules of an ordinary one.
    openInSpiteOfItsMark(path).reset();
    const hdf5::Handle file(H5Fopen(path.c_str(), H5F_ACC_RDWR, H5P_DEFAULT), H5Fclose, "repair " + path);
    std::vector<std::string> names = {streamPath("time")};
    for (const StreamSignal& signal : signalTable)
        names.push_back(streamPath(signal.name));
    std::vector<hdf5::Column> columns = columnsOf(file, names);
    const auto samples = std::int64_t(levelColumns(columns));
    for (int signal = 0; signal < signalCount; ++signal)
        completeOverviews(file, columns[std::size_t(signal) + 1], signalTable[signal].name);
    dropGapsBehind(file, samples);
    levelLog(file);
    levelStatus(file);
    writeEnd(file, columns.front());
    return true;
}

} // namespace kora::archive
