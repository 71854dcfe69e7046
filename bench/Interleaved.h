#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <ctime>
#include <functional>
#include <string>
#include <utility>
#include <vector>

/// Runs several ways of one job in turns within each iteration, so that all meet the same machine. The counters are
/// medians in milliseconds by name, and the ratio of the first way to each other one; the time of an iteration is that
/// of one round of all.
class Interleaved
{
public:
    /// @param clock  processor time of this thread by default, which a busy machine disturbs less than the clock on
    /// the wall; a job that other threads do needs another one
    explicit Interleaved(clockid_t clock = CLOCK_THREAD_CPUTIME_ID) : clock(clock) {}

    Interleaved& way(const std::string& name, std::function<void()> job)
    {
        ways.push_back({name, std::move(job), {}});
        return *this;
    }

    void run(benchmark::State& state)
    {
        for (Way& each : ways)
            each.job();
        for (auto iteration : state) {
            (void)iteration;
            double round = 0;
            for (Way& each : ways) {
                each.seconds.push_back(secondsOf(each.job));
                round += each.seconds.back();
            }
            state.SetIterationTime(round);
        }
        for (Way& each : ways)
            state.counters[each.name + "_ms"] = 1e3 * median(each.seconds);
        for (std::size_t other = 1; other < ways.size(); ++other)
            state.counters["per_" + ways[other].name] = median(ways[0].seconds) / median(ways[other].seconds);
    }

private:
    struct Way
    {
        std::string name;
        std::function<void()> job;
        std::vector<double> seconds;
    };

    double seconds() const
    {
        timespec time;
        clock_gettime(clock, &time);
        return double(time.tv_sec) + 1e-9 * double(time.tv_nsec);
    }
    double secondsOf(const std::function<void()>& job) const
    {
        const double start = seconds();
        job();
        return seconds() - start;
    }
    static double median(std::vector<double> values)
    {
        const auto middle = values.begin() + long(values.size() / 2);
        std::nth_element(values.begin(), middle, values.end());
        return *middle;
    }

    clockid_t clock;
    std::vector<Way> ways;
};
