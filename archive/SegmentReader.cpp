#include "archive/SegmentReader.h"

#include <algorithm>
#include <cmath>

namespace kora::archive {

namespace {

/// A file that claims more than this in one row of text is damaged.
constexpr std::size_t largestText = 1 << 24;
constexpr double highestRate = 1e7;

hdf5::Handle openFile(const std::string& path)
{
    hdf5::silence();
    const hid_t closed = H5Fopen(path.c_str(), H5F_ACC_RDONLY, H5P_DEFAULT);
    if (closed >= 0)
        return hdf5::Handle(closed, H5Fclose, path);
    // It is being written, or its writer was killed. What a writer changes meanwhile is read again for a millisecond at
    // most; by default the library tries for hours on a damaged file.
    constexpr unsigned attempts = 20;
    const hdf5::Handle access(H5Pcreate(H5P_FILE_ACCESS), H5Pclose, path);
    hdf5::check(H5Pset_metadata_read_attempts(access, attempts), path);
    return hdf5::Handle(H5Fopen(path.c_str(), H5F_ACC_RDONLY | H5F_ACC_SWMR_READ, access), H5Fclose, "open " + path);
}

std::string streamPath(int signal)
{
    return std::string(streamGroup) + '/' + signalTable[signal].name;
}

std::string overviewPath(int which, int signal, int field)
{
    return std::string(overviewGroups[which]) + '/' + signalTable[signal].name + '/' + stretchFields[field];
}

} // namespace

SegmentReader::SegmentReader(const std::string& path) : file(path), handle(openFile(path))
{
    const auto moment = momentOfIsoText(hdf5::readTextField(handle, "entry/start_time"));
    const hdf5::Handle stream(H5Gopen2(handle, streamGroup, H5P_DEFAULT), H5Gclose, streamGroup);
    hertz = hdf5::readNumber(stream, "rate");
    if (!moment || !(hertz >= 0) || hertz > highestRate)
        throw hdf5::Error(path + " is no recording");
    started = *moment;
    countSamples();
}

UtcNanoseconds SegmentReader::end() const
{
    const auto moment = momentOfIsoText(hdf5::readTextField(handle, "entry/end_time"));
    return moment ? *moment : started;
}

std::string SegmentReader::program() const
{
    return hdf5::readTextField(handle, "entry/program_name");
}

double SegmentReader::scale(int signal) const
{
    const hdf5::Handle dataset(H5Dopen2(handle, streamPath(signal).c_str(), H5P_DEFAULT), H5Dclose, streamPath(signal));
    return hdf5::readNumber(dataset, "scale");
}

std::int64_t SegmentReader::columnSamples(int signal)
{
    return std::int64_t(column(streamPath(signal)).rows());
}

std::int64_t SegmentReader::stretches(int overview, int signal)
{
    hsize_t common = column(overviewPath(overview, signal, 0)).rows();
    for (int field = 1; field < 4; ++field)
        common = std::min(common, column(overviewPath(overview, signal, field)).rows());
    return std::int64_t(common);
}

void SegmentReader::refresh()
{
    for (auto& entry : open)
        entry.second.refresh();
    countSamples();
}

void SegmentReader::countSamples()
{
    const hdf5::Column& time = column(std::string(streamGroup) + "/time");
    length = std::int64_t(time.rows());
    // Deflate makes a thousandth of a text at best: who claims more samples than that is damaged.
    constexpr hsize_t mostPerByte = 1100 / sizeof(double);
    if (time.rows() / mostPerByte > H5Dget_storage_size(time.id()))
        throw hdf5::Error(file + " claims more samples than it can hold");
}

std::vector<double> SegmentReader::times(std::int64_t first, std::int64_t number)
{
    std::vector<double> times(std::size_t(number), 0.0);
    column(std::string(streamGroup) + "/time").read(hsize_t(first), hsize_t(number), times.data(), H5T_NATIVE_DOUBLE);
    return times;
}

std::vector<double> SegmentReader::values(int signal, std::int64_t first, std::int64_t number)
{
    std::vector<double> values(std::size_t(number), 0.0);
    column(streamPath(signal)).read(hsize_t(first), hsize_t(number), values.data(), H5T_NATIVE_DOUBLE);
    return values;
}

std::vector<Stretch> SegmentReader::overview(int which, int signal, std::int64_t first, std::int64_t number)
{
    std::vector<Stretch> stretches(std::size_t(number), Stretch{});
    std::vector<double> values(std::size_t(number), 0.0);
    constexpr double Stretch::*members[] = {&Stretch::min, &Stretch::max, &Stretch::mean, &Stretch::deviation};
    for (int field = 0; field < 4; ++field) {
        column(overviewPath(which, signal, field))
            .read(hsize_t(first), hsize_t(number), values.data(), H5T_NATIVE_DOUBLE);
        for (std::size_t i = 0; i < values.size(); ++i)
            stretches[i].*members[field] = values[i];
    }
    return stretches;
}

std::int64_t SegmentReader::sampleAt(double seconds)
{
    std::int64_t first = 0;
    std::int64_t count = length;
    while (count > 0) {
        const std::int64_t half = count / 2;
        if (times(first + half, 1).front() < seconds) {
            first += half + 1;
            count -= half + 1;
        } else {
            count = half;
        }
    }
    return first;
}

std::vector<Gap> SegmentReader::gaps()
{
    const std::vector<double> index = doubles(std::string(gapsGroup) + "/index");
    const std::vector<double> seconds = doubles(std::string(gapsGroup) + "/seconds");
    std::vector<Gap> gaps;
    for (std::size_t i = 0; i < std::min(index.size(), seconds.size()); ++i)
        gaps.push_back({std::int64_t(index[i]), seconds[i]});
    return gaps;
}

std::vector<Event> SegmentReader::events()
{
    const std::vector<double> time = doubles(std::string(eventsGroup) + "/time");
    const std::vector<std::string> kind = texts(std::string(eventsGroup) + "/kind");
    const std::vector<std::string> text = texts(std::string(eventsGroup) + "/text");
    std::vector<Event> events;
    for (std::size_t i = 0; i < std::min({time.size(), kind.size(), text.size()}); ++i)
        events.push_back({time[i], kind[i], text[i]});
    return events;
}

std::vector<std::string> SegmentReader::settings()
{
    return texts(settingsField);
}

std::int64_t SegmentReader::statusRows()
{
    return std::int64_t(column(std::string(statusGroup) + "/time").rows());
}

hdf5::Column& SegmentReader::column(const std::string& path)
{
    const auto found = open.find(path);
    if (found != open.end())
        return found->second;
    return open.emplace(path, hdf5::Column::open(handle, path)).first->second;
}

std::vector<double> SegmentReader::doubles(const std::string& path)
{
    hdf5::Column& rows = column(path);
    std::vector<double> values(std::size_t(rows.rows()), 0.0);
    rows.read(0, rows.rows(), values.data(), H5T_NATIVE_DOUBLE);
    return values;
}

std::vector<std::string> SegmentReader::texts(const std::string& path)
{
    hdf5::Column& rows = column(path);
    const hdf5::Handle type(H5Dget_type(rows.id()), H5Tclose, path);
    const std::size_t bytes = H5Tget_size(type);
    if (H5Tget_class(type) != H5T_STRING || H5Tis_variable_str(type) > 0 || bytes == 0 || bytes > largestText)
        throw hdf5::Error(path + " holds no texts");
    std::string row(bytes, '\0');
    std::vector<std::string> texts;
    for (hsize_t i = 0; i < rows.rows(); ++i) {
        rows.read(i, 1, row.data(), type);
        texts.push_back(row.substr(0, row.find('\0')));
    }
    return texts;
}

} // namespace kora::archive
