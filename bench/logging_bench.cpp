#include "logging/DestinationMaker.h"
#include "logging/Log.h"

#include <QFile>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>
#include <spdlog/async.h>
#include <spdlog/sinks/base_sink.h>
#include <spdlog/sinks/basic_file_sink.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <thread>
#include <vector>

// Log statements per second until the last line is in the file, flushed line by line, against spdlog's
// asynchronous logger with the same text and the same rule. Both run in turns within each iteration; the
// counters are medians.

namespace {

using Clock = std::chrono::steady_clock;

constexpr int linesPerRun = 40000;

/// Counts what has reached a logger's worker, behind the file: the measure of "written".
std::atomic<int> written{0};

class CountingDestination : public QsLogging::Destination
{
public:
    void write(const QsLogging::LogMessage&) override { written.fetch_add(1, std::memory_order_relaxed); }
    bool isValid() const override { return true; }
    QString type() const override { return QStringLiteral("counting"); }
};

class CountingSink : public spdlog::sinks::base_sink<spdlog::details::null_mutex>
{
protected:
    void sink_it_(const spdlog::details::log_msg&) override { written.fetch_add(1, std::memory_order_relaxed); }
    void flush_() override {}
};

/// The reference: one worker, the text as it comes, each line flushed, callers wait while its queue is full.
class ReferenceLogger
{
public:
    explicit ReferenceLogger(const QString& path)
        : pool(std::make_shared<spdlog::details::thread_pool>(8192, 1)),
          file(std::make_shared<spdlog::sinks::basic_file_sink_st>(path.toStdString(), true)),
          logger(std::make_shared<spdlog::async_logger>(
              "reference", spdlog::sinks_init_list{file, std::make_shared<CountingSink>()}, pool))
    {
        logger->set_pattern("%v");
        logger->flush_on(spdlog::level::trace);
    }

    std::shared_ptr<spdlog::details::thread_pool> pool;
    std::shared_ptr<spdlog::sinks::basic_file_sink_st> file;
    std::shared_ptr<spdlog::async_logger> logger;
};

/// The program's logger with one file, as long as it lives.
class LoggerToFile
{
public:
    explicit LoggerToFile(const QString& path)
    {
        using namespace QsLogging;
        Logger::instance().setLevel(InfoLevel);
        Logger::instance().addDestination(DestinationMaker::newFileDestination(path, 0, 0, 0));
        Logger::instance().addDestination(std::make_unique<CountingDestination>());
    }
    ~LoggerToFile()
    {
        QsLogging::Logger::instance().removeDestination(QStringLiteral("file"));
        QsLogging::Logger::instance().removeDestination(QStringLiteral("counting"));
    }
    LoggerToFile(const LoggerToFile&) = delete;
    LoggerToFile& operator=(const LoggerToFile&) = delete;
};

/// Seconds from the first statement of `threads` callers until all lines are written.
double secondsOf(int threads, const std::function<void(int line)>& statement)
{
    written = 0;
    std::atomic<int> ready{0};
    std::atomic<bool> go{false};
    std::vector<std::thread> callers;
    for (int caller = 0; caller < threads; ++caller) {
        callers.emplace_back([&] {
            ++ready;
            while (!go)
                std::this_thread::yield();
            for (int line = 0; line < linesPerRun / threads; ++line)
                statement(line);
        });
    }
    while (ready < threads)
        std::this_thread::yield();
    const Clock::time_point start = Clock::now();
    go = true;
    for (std::thread& each : callers)
        each.join();
    while (written.load(std::memory_order_relaxed) < linesPerRun / threads * threads)
        std::this_thread::sleep_for(std::chrono::microseconds(100));
    return std::chrono::duration<double>(Clock::now() - start).count();
}

double median(std::vector<double> values)
{
    std::nth_element(values.begin(), values.begin() + values.size() / 2, values.end());
    return values[values.size() / 2];
}

double perSecond(const std::vector<double>& seconds)
{
    return linesPerRun / median(seconds);
}

/// Three ways to log: a finished line; a finished text that gets its time stamp; the whole statement, from
/// the streaming of its items on.
void linesToAFile(benchmark::State& state)
{
    const int threads = int(state.range(0));
    const QTemporaryDir folder;
    const QsLogging::LogMessage finished(QStringLiteral("setFBenable() failed with code 12345 "),
                                         QDateTime::currentDateTimeUtc(), QsLogging::WarnLevel);
    const std::string text = finished.formatted.toStdString();

    std::vector<double> whole;
    std::vector<double> stamped;
    std::vector<double> plain;
    std::vector<double> reference;
    for (auto _ : state) {
        {
            const LoggerToFile destination(folder.filePath(QStringLiteral("plain")));
            plain.push_back(secondsOf(threads, [&](int) { QsLogging::Logger::instance().pushMessage(finished); }));
        }
        {
            const LoggerToFile destination(folder.filePath(QStringLiteral("stamped")));
            stamped.push_back(secondsOf(threads, [&](int) {
                QsLogging::Logger::instance().pushMessage(
                    QsLogging::LogMessage(finished.message, QDateTime::currentDateTimeUtc(), QsLogging::WarnLevel));
            }));
        }
        {
            const LoggerToFile destination(folder.filePath(QStringLiteral("whole")));
            whole.push_back(secondsOf(
                threads, [](int line) { KORA_LOG_WARN << "setFBenable() failed with code" << 10000 + line; }));
        }
        {
            const ReferenceLogger destination(folder.filePath(QStringLiteral("reference")));
            reference.push_back(secondsOf(threads, [&](int) { destination.logger->warn(text); }));
        }
        state.SetIterationTime(whole.back());
    }
    const qint64 bytes = QFile(folder.filePath(QStringLiteral("reference"))).size();
    for (const char* name : {"plain", "stamped", "whole"}) {
        if (QFile(folder.filePath(QLatin1String(name))).size() != bytes)
            state.SkipWithError("the files differ in length");
    }
    state.counters["lines/s"] = perSecond(plain);
    state.counters["lines/s whole"] = perSecond(whole);
    state.counters["lines/s stamped"] = perSecond(stamped);
    state.counters["lines/s spdlog"] = perSecond(reference);
    state.counters["ratio to spdlog (>=0.9)"] = perSecond(plain) / perSecond(reference);
    state.counters["whole to spdlog"] = perSecond(whole) / perSecond(reference);
    state.counters["whole to plain"] = perSecond(whole) / perSecond(plain);
    state.counters["stamped to plain (>=0.7)"] = perSecond(stamped) / perSecond(plain);
}

/// Nanoseconds of a statement that is not written, its level read anew each time.
template <typename Statement>
double nanosecondsOf(Statement statement)
{
    constexpr int statements = 20000000;
    const Clock::time_point start = Clock::now();
    for (int each = 0; each < statements; ++each) {
        statement(each);
        benchmark::ClobberMemory();
    }
    return std::chrono::duration<double, std::nano>(Clock::now() - start).count() / statements;
}

void suppressedStatement(benchmark::State& state)
{
    const QTemporaryDir folder;
    const ReferenceLogger reference(folder.filePath(QStringLiteral("reference")));
    reference.logger->set_level(spdlog::level::info);
    QsLogging::Logger::instance().setLevel(QsLogging::InfoLevel);
    spdlog::async_logger& logger = *reference.logger;

    std::vector<double> own;
    std::vector<double> theirs;
    for (auto _ : state) {
        own.push_back(nanosecondsOf([](int value) { KORA_LOG_DEBUG << "value" << value; }));
        theirs.push_back(nanosecondsOf([&](int value) { logger.debug("value {}", value); }));
        state.SetIterationTime(own.back() * 1e-9);
    }
    state.counters["ns"] = median(own);
    state.counters["ns spdlog"] = median(theirs);
    state.counters["ratio to spdlog (<=0.3)"] = median(own) / median(theirs);
}

} // namespace

BENCHMARK(linesToAFile)->Arg(1)->Arg(2)->Arg(4)->Iterations(9)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(suppressedStatement)->Iterations(9)->UseManualTime()->Unit(benchmark::kNanosecond);

BENCHMARK_MAIN();
