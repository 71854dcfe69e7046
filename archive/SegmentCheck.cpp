#include "archive/SegmentCheck.h"

#include "archive/SegmentReader.h"
#include "archive/SegmentRepair.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace kora::archive {

namespace {

constexpr std::int64_t blockSamples = overviewFactors[1];
/// Rounding of a time computed in one step against the same in two, s.
constexpr double timeTolerance = 1e-6;

bool isSame(double a, double b)
{
    return std::memcmp(&a, &b, sizeof a) == 0 || (std::isnan(a) && std::isnan(b)) ||
           std::fabs(a - b) <= 1e-9 * std::max(std::fabs(a), std::fabs(b));
}

bool isSame(const Stretch& a, const Stretch& b)
{
    // A deviation carries the rounding of the mean, which depends on the parts that the samples were added in.
    const double rounding = 1e-12 * std::max(std::fabs(a.min), std::fabs(a.max));
    const bool sameDeviation = isSame(a.deviation, b.deviation) || std::fabs(a.deviation - b.deviation) <= rounding;
    return isSame(a.min, b.min) && isSame(a.max, b.max) && isSame(a.mean, b.mean) && sameDeviation;
}

class Check
{
public:
    explicit Check(const std::string& path) : reader(path) {}

    std::vector<std::string> run()
    {
        for (int signal = 0; signal < signalCount; ++signal)
            checkSignal(signal);
        checkTimes();
        for (const Event& event : reader.events()) {
            if (!std::isfinite(event.time))
                complain("an event has no time");
        }
        return complaints;
    }

private:
    void complain(const std::string& sentence) { complaints.push_back(sentence); }

    void checkSignal(int signal)
    {
        const std::string name = signalTable[signal].name;
        if (reader.columnSamples(signal) != reader.samples()) {
            complain(name + " has " + std::to_string(reader.columnSamples(signal)) + " samples, the axis " +
                     std::to_string(reader.samples()));
            return;
        }
        OverviewBuilder builder;
        for (std::int64_t first = 0; first < reader.samples(); first += blockSamples) {
            const std::int64_t number = std::min(blockSamples, reader.samples() - first);
            builder.add(reader.values(signal, first, number).data(), int(number));
        }
        builder.finish();
        for (int overview = 0; overview < overviewCount; ++overview)
            checkOverview(signal, overview, builder.finished(overview));
    }

    void checkOverview(int signal, int overview, const OverviewBuilder::Finished& expected)
    {
        const std::string name = std::string(overviewGroups[overview]) + '/' + signalTable[signal].name;
        if (reader.stretches(overview, signal) != std::int64_t(expected.size())) {
            complain(name + " has " + std::to_string(reader.stretches(overview, signal)) + " values instead of " +
                     std::to_string(expected.size()));
            return;
        }
        const std::vector<Stretch> stored = reader.overview(overview, signal, 0, std::int64_t(expected.size()));
        for (std::size_t i = 0; i < expected.size(); ++i) {
            if (!isSame(stored[i], expected[i])) {
                complain(name + " is not that of the samples from value " + std::to_string(i) + " on");
                return;
            }
        }
    }

    void checkTimes()
    {
        const std::vector<Gap> gaps = reader.gaps();
        std::size_t next = 0;
        double expected = 0;
        for (std::int64_t first = 0; first < reader.samples(); first += blockSamples) {
            const std::int64_t number = std::min(blockSamples, reader.samples() - first);
            const std::vector<double> times = reader.times(first, number);
            for (std::int64_t i = 0; i < number; ++i) {
                for (; next < gaps.size() && gaps[next].index == first + i; ++next)
                    expected += gaps[next].index > 0 ? gaps[next].seconds : 0;
                const double found = times[std::size_t(i)];
                if (!(std::fabs(found - expected) <= timeTolerance)) {
                    complain("sample " + std::to_string(first + i) + " is not at its time");
                    return;
                }
                expected = found + (reader.rate() > 0 ? 1 / reader.rate() : 0);
            }
        }
        if (next < gaps.size() && gaps[next].index != reader.samples())
            complain("a gap lies at no sample");
    }

    SegmentReader reader;
    std::vector<std::string> complaints;
};

} // namespace

std::vector<std::string> checkSegment(const std::string& path)
{
    std::vector<std::string> complaints;
    if (!opensPlainly(path))
        complaints.push_back("it was not closed, or is being written");
    try {
        for (const std::string& complaint : Check(path).run())
            complaints.push_back(complaint);
    } catch (const hdf5::Error& error) {
        complaints.push_back(error.what());
    }
    return complaints;
}

} // namespace kora::archive
