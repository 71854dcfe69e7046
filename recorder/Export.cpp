#include "recorder/Commands.h"

#include "archive/SegmentReader.h"
#include "recorder/Clock.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <functional>
#include <memory>
#include <numeric>

namespace kora::recorder {

using archive::SegmentReader;
using archive::UtcNanoseconds;

namespace {

/// Rows that are held in memory at a time.
constexpr std::int64_t blockRows = 16384;

bool endsWith(const std::string& text, const std::string& ending)
{
    return text.size() > ending.size() && text.compare(text.size() - ending.size(), ending.size(), ending) == 0;
}

/// A table with a time axis in columns, written block by block.
class Table
{
public:
    virtual ~Table() = default;
    virtual void append(const std::vector<std::vector<double>>& columns) = 0;
    /// @return false when not all could be written
    virtual bool finish() = 0;
};

class CsvTable final : public Table
{
public:
    CsvTable(const std::string& path, const std::vector<std::string>& titles) : file(std::fopen(path.c_str(), "we"))
    {
        for (std::size_t i = 0; i < titles.size(); ++i)
            text += (i == 0 ? "" : ",") + titles[i];
        text += '\n';
    }
    ~CsvTable() override
    {
        if (file)
            std::fclose(file);
    }
    CsvTable(const CsvTable&) = delete;
    CsvTable& operator=(const CsvTable&) = delete;

    void append(const std::vector<std::vector<double>>& columns) override
    {
        char digits[32];
        for (std::size_t row = 0; row < columns.front().size(); ++row) {
            for (std::size_t column = 0; column < columns.size(); ++column) {
                // The shortest text that reads back as the same number.
                const auto end = std::to_chars(digits, digits + sizeof digits, columns[column][row]).ptr;
                if (column > 0)
                    text += ',';
                text.append(digits, end);
            }
            text += '\n';
        }
        writeText();
    }
    bool finish() override
    {
        writeText();
        const bool closed = file && std::fclose(file) == 0;
        file = nullptr;
        return whole && closed;
    }

private:
    void writeText()
    {
        whole = whole && file && std::fwrite(text.data(), 1, text.size(), file) == text.size();
        text.clear();
    }

    std::FILE* file;
    std::string text;
    bool whole = true;
};

class Hdf5Table final : public Table
{
public:
    Hdf5Table(const std::string& path, const std::vector<std::string>& titles, UtcNanoseconds start,
              const std::vector<std::string>& units)
        : file(H5Fcreate(path.c_str(), H5F_ACC_TRUNC, H5P_DEFAULT, H5P_DEFAULT), H5Fclose, "create " + path)
    {
        using namespace archive;
        hdf5::writeText(file, "NX_class", "NXroot");
        hdf5::writeText(file, "default", "entry");
        const hdf5::Handle entry = hdf5::createGroup(file, "entry", "NXentry");
        hdf5::writeText(entry, "default", "stream");
        hdf5::createTextField(entry, "start_time", momentBytes, isoText(start));
        const hdf5::Handle stream = hdf5::createGroup(entry, "stream", "NXdata");
        hdf5::writeText(stream, "signal", titles[1]);
        hdf5::writeText(stream, "axes", "time");
        for (std::size_t i = 0; i < titles.size(); ++i) {
            columns.push_back(
                hdf5::Column::create(stream, titles[i], {H5T_NATIVE_DOUBLE, {}, hsize_t(blockRows), 0, false, 1}));
            hdf5::writeText(columns.back().id(), "units", units[i]);
        }
    }

    void append(const std::vector<std::vector<double>>& values) override
    {
        for (std::size_t i = 0; i < columns.size(); ++i)
            columns[i].append(values[i].data(), values[i].size(), H5T_NATIVE_DOUBLE);
    }
    bool finish() override
    {
        columns.clear();
        return file.reset();
    }

private:
    archive::hdf5::Handle file;
    std::vector<archive::hdf5::Column> columns;
};

/// The part of a segment that lies in a stretch of time.
struct Part
{
    std::int64_t first;
    std::int64_t end;
};

class Exporter
{
public:
    Exporter(const ExportOptions& options, UtcNanoseconds from, UtcNanoseconds to)
        : options(options), from(from), to(to), signals(options.signals)
    {
        if (signals.empty()) {
            signals.resize(archive::signalCount);
            std::iota(signals.begin(), signals.end(), 0);
        }
        titles.push_back("time");
        units.push_back("s");
        for (const int signal : signals)
            addTitles(signal);
    }

    bool run(const std::vector<archive::SegmentFile>& files)
    {
        for (const archive::SegmentFile& file : files) {
            SegmentReader reader(file.path);
            if (reader.start() < to && reader.end() > from)
                exportSegment(reader);
        }
        return rows > 0 && table->finish();
    }
    std::int64_t writtenRows() const { return rows; }

private:
    void addTitles(int signal)
    {
        const std::string name = signalTable[signal].name;
        const std::string unit = archive::recordedUnit(signalTable[signal]);
        if (options.factor == 1) {
            titles.push_back(name);
            units.push_back(unit);
            return;
        }
        for (const char* field : {"mean", "min", "max", "std"}) {
            titles.push_back(name + '_' + field);
            units.push_back(unit);
        }
    }

    void exportSegment(SegmentReader& reader)
    {
        const Part samples = {reader.sampleAt(archive::secondsOf(from - reader.start())),
                              reader.sampleAt(archive::secondsOf(to - reader.start()))};
        const int factor = options.factor;
        const Part part = {(samples.first + factor - 1) / factor, (samples.end + factor - 1) / factor};
        for (std::int64_t first = part.first; first < part.end; first += blockRows)
            exportRows(reader, first, std::min(blockRows, part.end - first));
    }

    void exportRows(SegmentReader& reader, std::int64_t first, std::int64_t number)
    {
        std::vector<std::vector<double>> columns(1);
        if (options.factor == 1) {
            columns[0] = reader.times(first, number);
            for (const int signal : signals)
                columns.push_back(reader.values(signal, first, number));
        } else {
            const int which = options.factor == archive::overviewFactors[0] ? 0 : 1;
            for (const int signal : signals)
                number = std::min(number, reader.stretches(which, signal) - first);
            if (number <= 0)
                return;
            for (std::int64_t row = first; row < first + number; ++row)
                columns[0].push_back(reader.times(row * options.factor, 1).front());
            for (const int signal : signals)
                addStretches(columns, reader.overview(which, signal, first, number));
        }
        if (!table)
            begin(reader.start() + archive::nanosecondsOf(columns[0].front()));
        const double shift = archive::secondsOf(reader.start() - begun);
        for (double& time : columns[0])
            time += shift;
        table->append(columns);
        rows += std::int64_t(columns[0].size());
    }

    static void addStretches(std::vector<std::vector<double>>& columns, const std::vector<archive::Stretch>& stretches)
    {
        using archive::Stretch;
        for (const auto member : {&Stretch::mean, &Stretch::min, &Stretch::max, &Stretch::deviation}) {
            columns.emplace_back();
            for (const Stretch& stretch : stretches)
                columns.back().push_back(stretch.*member);
        }
    }

    /// Times count from the first row.
    void begin(UtcNanoseconds start)
    {
        begun = start;
        if (endsWith(options.file, ".csv"))
            table = std::make_unique<CsvTable>(options.file, titles);
        else
            table = std::make_unique<Hdf5Table>(options.file, titles, start, units);
    }

    const ExportOptions& options;
    UtcNanoseconds from;
    UtcNanoseconds to;
    std::vector<int> signals;
    std::vector<std::string> titles;
    std::vector<std::string> units;
    std::unique_ptr<Table> table;
    UtcNanoseconds begun = 0;
    std::int64_t rows = 0;
};

UtcNanoseconds momentOf(const std::string& text, const char* option, UtcNanoseconds now)
{
    const auto moment = archive::momentOfUserText(text, now);
    if (!moment)
        throw UsageError(std::string(option) + " cannot be \"" + text + '"');
    return *moment;
}

} // namespace

int exportStretch(const Options& options)
{
    ExportOptions wanted = options.exported;
    wanted.file = options.words.front();
    if (!endsWith(wanted.file, ".csv") && !endsWith(wanted.file, ".h5"))
        throw UsageError("export writes files that end in .h5 or .csv, not \"" + wanted.file + '"');
    const UtcNanoseconds now = SystemClock().now().wall;
    const UtcNanoseconds from = momentOf(wanted.from, "--from", now);
    const UtcNanoseconds to = momentOf(wanted.to, "--to", now);
    if (from >= to)
        throw UsageError("--from does not lie before --to");
    try {
        archive::hdf5::silence();
        Exporter exporter(wanted, from, to);
        const bool written = exporter.run(archive::segmentsIn(options.recording.folder));
        if (written) {
            std::printf("%lld rows\n", static_cast<long long>(exporter.writtenRows()));
            return 0;
        }
        std::fprintf(stderr, "kora-recorder: %s\n",
                     exporter.writtenRows() == 0 ? "nothing was recorded in this time"
                                                 : ("cannot write " + wanted.file).c_str());
    } catch (const archive::hdf5::Error& error) {
        std::fprintf(stderr, "kora-recorder: %s\n", error.what());
    }
    return 1;
}

} // namespace kora::recorder
