#pragma once

#include "archive/Hdf5.h"
#include "archive/Overview.h"
#include "archive/RecordedSignals.h"
#include "archive/SegmentLayout.h"

#include <map>
#include <string>
#include <vector>

namespace kora::archive {

/// Reads one segment, also while it is written, and also one whose writer was killed. One thread; every failure is an
/// hdf5::Error.
class SegmentReader
{
public:
    /// @throw hdf5::Error when the file is no segment
    explicit SegmentReader(const std::string& path);

    const std::string& path() const { return file; }
    UtcNanoseconds start() const { return started; }
    UtcNanoseconds end() const;
    std::string program() const;
    /// Records per second; 0 for a stream that stood still.
    double rate() const { return hertz; }
    /// um, NaN for a signal without a scale
    double scale(int signal) const;
    /// Samples that every column has. Grows while the file is written, see refresh().
    std::int64_t samples() const { return length; }
    std::int64_t columnSamples(int signal);
    /// Values of an overview that every field of the signal has.
    std::int64_t stretches(int overview, int signal);

    void refresh();
    /// @param first, number within samples(); s from the start
    std::vector<double> times(std::int64_t first, std::int64_t number);
    /// The values of a signal, widened.
    std::vector<double> values(int signal, std::int64_t first, std::int64_t number);
    std::vector<Stretch> overview(int which, int signal, std::int64_t first, std::int64_t number);
    /// First sample at or behind a time in s from the start, at most samples().
    std::int64_t sampleAt(double seconds);

    std::vector<Gap> gaps();
    std::vector<Event> events();
    /// The texts of the settings file, the one that held at the start first.
    std::vector<std::string> settings();
    std::int64_t statusRows();

private:
    void countSamples();
    hdf5::Column& column(const std::string& path);
    std::vector<double> doubles(const std::string& path);
    std::vector<std::string> texts(const std::string& path);

    std::string file;
    hdf5::Handle handle;
    /// Columns that were opened, by their path.
    std::map<std::string, hdf5::Column> open;
    UtcNanoseconds started = 0;
    double hertz = 0;
    std::int64_t length = 0;
};

} // namespace kora::archive
