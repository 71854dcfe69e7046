// A served installation against an embedded one: bench/run bench_service.
//
// Five rounds, each with the same jobs on both forms; medians, with the range. Every program that is measured is a
// process of its own, this one again with a job to do.

#include "hardware/koralink.h"
#include "stream/DisplayRecord.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <functional>
#include <string>
#include <thread>
#include <unordered_map>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

constexpr int rounds = 5;
constexpr int calls = 10000;
constexpr int blocks = 200;
constexpr int programs = 8;
constexpr double loadSeconds = 4;

double secondsSince(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

double quantile(std::vector<double> values, double share)
{
    const auto place = values.begin() + long(share * double(values.size() - 1));
    std::nth_element(values.begin(), place, values.end());
    return *place;
}

std::vector<double> timesOf(int count, const std::function<void()>& job)
{
    std::vector<double> times;
    for (int i = 0; i < count; ++i) {
        const auto start = Clock::now();
        job();
        times.push_back(secondsSince(start));
    }
    return times;
}

/// One library call: its median and its 99th hundredth, us. The median of a block of 14336 records, us.
int measureCalls()
{
    double value = 0;
    const auto call = [&value] {
        if (getSetpoint(0, &value) != 0)
            std::exit(1);
    };
    std::vector<DisplayRecord> block(largestBlockRecords);
    const auto read = [&block] {
        if (getBuffer(block.data(), largestBlockRecords) != largestBlockRecords)
            std::exit(1);
    };
    timesOf(100, call);
    timesOf(3, read);
    const std::vector<double> callTimes = timesOf(calls, call);
    const std::vector<double> readTimes = timesOf(blocks, read);
    std::printf("%g %g %g\n", 1e6 * quantile(callTimes, 0.5), 1e6 * quantile(callTimes, 0.99),
                1e6 * quantile(readTimes, 0.5));
    return 0;
}

/// What an operator interface asks for, once a second for so many seconds.
int workAsAProgram(double seconds)
{
    std::vector<DisplayRecord> block(largestBlockRecords);
    for (const auto start = Clock::now(); secondsSince(start) < seconds;) {
        BPMStats statistics;
        std::uint16_t id = 0;
        for (int port = 0; port < 4; ++port)
            getSFPinfo(port, &id, nullptr, nullptr, nullptr);
        if (getBPMStats(&statistics) != 0 || getPIDstatus() < 0 || getBuffer(block.data(), 1024) != 1024)
            return 1;
        std::this_thread::sleep_for(std::chrono::seconds(1));
    }
    return 0;
}

/// Reads a window at the start of each second and writes a number for each record.
int followTheStream(int seconds)
{
    std::vector<DisplayRecord> block(largestBlockRecords);
    std::vector<std::uint64_t> marks(largestBlockRecords);
    for (int i = 0; i < seconds; ++i) {
        timespec now;
        clock_gettime(CLOCK_REALTIME, &now);
        std::this_thread::sleep_for(std::chrono::nanoseconds(1000000000 - now.tv_nsec));
        if (getBuffer(block.data(), largestBlockRecords) != largestBlockRecords)
            return 1;
        for (std::size_t record = 0; record < block.size(); ++record) {
            std::uint64_t mark = 14695981039346656037u;
            std::uint64_t words[sizeof(DisplayRecord) / 8];
            std::memcpy(words, &block[record], sizeof words);
            for (const std::uint64_t word : words)
                mark = (mark ^ word) * 1099511628211u;
            marks[record] = mark;
        }
        if (std::fwrite(marks.data(), sizeof marks[0], marks.size(), stdout) != marks.size())
            return 1;
        std::fflush(stdout);
    }
    return 0;
}

/// Runs this program again with a job, on its own installation or on the served one.
std::FILE* start(const std::string& job, const char* installation)
{
    char self[4096] = "";
    if (readlink("/proc/self/exe", self, sizeof self - 1) < 0)
        std::exit(1);
    return popen((std::string("KORA_SIMULATION=") + installation + ' ' + self + ' ' + job).c_str(), "r");
}

void require(bool good, const char* what)
{
    if (good)
        return;
    std::fprintf(stderr, "bench_service: %s\n", what);
    std::exit(1);
}

struct Figures
{
    double call, call99, block;
};

Figures measured(const char* installation)
{
    std::FILE* const pipe = start("calls", installation);
    Figures figures = {};
    const int read = std::fscanf(pipe, "%lf %lf %lf", &figures.call, &figures.call99, &figures.block);
    require(pclose(pipe) == 0 && read == 3, "a measured program failed");
    return figures;
}

/// Processor time of a process, s.
double processorTime(pid_t pid)
{
    clockid_t clock;
    timespec time = {};
    require(clock_getcpuclockid(pid, &clock) == 0 && clock_gettime(clock, &time) == 0, "no processor time");
    return double(time.tv_sec) + 1e-9 * double(time.tv_nsec);
}

/// Milliseconds a second that the service takes with so many programs.
double serviceLoad(pid_t service, int joined)
{
    std::vector<std::FILE*> pipes;
    for (int i = 0; i < joined; ++i)
        pipes.push_back(start("work " + std::to_string(loadSeconds + 1), "bench"));
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    const double before = processorTime(service);
    const auto started = Clock::now();
    std::this_thread::sleep_for(std::chrono::duration<double>(loadSeconds));
    const double load = 1e3 * (processorTime(service) - before) / secondsSince(started);
    for (std::FILE* const pipe : pipes)
        require(pclose(pipe) == 0, "a joined program failed");
    return load;
}

/// Records of one second's windows that two programs have both, and of these the ones that differ.
struct Overlap
{
    long common = 0;
    long different = 0;
};

void compare(const std::vector<std::uint64_t>& one, const std::vector<std::uint64_t>& other, Overlap& overlap)
{
    std::unordered_map<std::uint64_t, std::size_t> places;
    for (std::size_t i = 0; i < one.size(); ++i)
        places[one[i]] = i;
    // The first record of one that the other has, and from there side by side.
    for (std::size_t i = 0; i < other.size(); ++i) {
        const auto found = places.find(other[i]);
        if (found == places.end())
            continue;
        for (std::size_t j = 0; i + j < other.size() && found->second + j < one.size(); ++j) {
            ++overlap.common;
            overlap.different += other[i + j] != one[found->second + j];
        }
        return;
    }
}

void followTogether(int seconds)
{
    int hertz = 50000;
    require(setDisplayFreq(hertz, 0) == 0, "the rate cannot be set");
    std::this_thread::sleep_for(std::chrono::seconds(1));
    std::vector<std::FILE*> pipes;
    for (int i = 0; i < programs; ++i)
        pipes.push_back(start("follow " + std::to_string(seconds), "bench"));
    Overlap overlap;
    std::vector<std::uint64_t> first(largestBlockRecords);
    std::vector<std::uint64_t> other(largestBlockRecords);
    for (int second = 0; second < seconds; ++second)
        for (std::size_t i = 0; i < pipes.size(); ++i) {
            std::vector<std::uint64_t>& window = i == 0 ? first : other;
            require(std::fread(window.data(), sizeof window[0], window.size(), pipes[i]) == window.size(),
                    "a program came short");
            if (i > 0)
                compare(first, other, overlap);
        }
    for (std::FILE* const pipe : pipes)
        require(pclose(pipe) == 0, "a program came short");
    std::printf("%d programs, a window of %d records each second for %d s at %d Hz: no short count, "
                "%ld records in common with the first program, %ld different\n",
                programs, largestBlockRecords, seconds, hertz, overlap.common, overlap.different);
}

struct Row
{
    const char* name;
    double target;
    std::vector<double> values;

    void show() const
    {
        std::printf("%-58s %8.2f (%.2f to %.2f)  target %g\n", name, quantile(values, 0.5), quantile(values, 0),
                    quantile(values, 1), target);
    }
};

int compareForms(int followSeconds)
{
    char folder[] = "/tmp/kora-bench-XXXXXX";
    require(mkdtemp(folder) != nullptr, "no scratch folder");
    setenv("XDG_RUNTIME_DIR", folder, 1);
    const pid_t service = fork();
    if (service == 0) {
        execl(KORA_CONSOLE, KORA_CONSOLE, "serve", "--name", "bench", nullptr);
        _exit(127);
    }
    const std::string socket = std::string(folder) + "/kora-simulation/bench.served";
    for (int i = 0; i < 1000 && access(socket.c_str(), F_OK) != 0; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));

    Row rows[] = {{"one call, joined, median of 10000, us", 20, {}},
                  {"one call, joined, 99th of 100, us", 100, {}},
                  {"one call, embedded, median, us", 0, {}},
                  {"block of 14336 records, joined / embedded", 1.5, {}},
                  {"service without a program, ms of processor a second", 6, {}},
                  {"service with eight programs, ms of processor a second", 12, {}}};
    for (int round = 0; round < rounds; ++round) {
        const Figures joined = measured("bench");
        const Figures own = measured("own");
        const double values[] = {joined.call,
                                 joined.call99,
                                 own.call,
                                 joined.block / own.block,
                                 serviceLoad(service, 0),
                                 serviceLoad(service, programs)};
        for (std::size_t i = 0; i < std::size(values); ++i)
            rows[i].values.push_back(values[i]);
    }
    for (const Row& row : rows)
        row.show();
    setenv("KORA_SIMULATION", "bench", 1);
    followTogether(followSeconds);
    kill(service, SIGTERM);
    waitpid(service, nullptr, 0);
    rmdir((std::string(folder) + "/kora-simulation").c_str());
    rmdir(folder);
    return 0;
}

} // namespace

/// @param argv  without arguments all figures; a number makes the last of them last for so many seconds
int main(int argc, char** argv)
{
    const std::string job = argc > 1 ? argv[1] : "";
    if (job == "calls")
        return measureCalls();
    if (job == "work")
        return workAsAProgram(std::atof(argv[2]));
    if (job == "follow")
        return followTheStream(std::atoi(argv[2]));
    return compareForms(job.empty() ? 10 : std::atoi(job.c_str()));
}
