// kora-recorder: records everything that the installation tells, and reads what was recorded.

#include "recorder/Commands.h"
#include "recorder/FollowingThread.h"
#include "recorder/ServiceNotice.h"
#include "recorder/StatusReader.h"

#include <csignal>
#include <cstdio>
#include <filesystem>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

using namespace kora::recorder;

namespace {

constexpr int failedStatus = 1;
constexpr int usageStatus = 2;
constexpr useconds_t turnMicroseconds = 20000;
constexpr double flushSeconds = 0.7;
constexpr double houseSeconds = 1;
/// Structured lines for a log are fewer than those that a terminal shows again and again.
constexpr double logLineSeconds = 60;
constexpr double bytesPerMegabyte = 1e6;

volatile std::sig_atomic_t endWanted = 0;

void wantEnd(int)
{
    endWanted = 1;
}

void handleSignals()
{
    struct sigaction action = {};
    action.sa_handler = wantEnd;
    for (const int number : {SIGTERM, SIGINT, SIGHUP})
        ::sigaction(number, &action, nullptr);
    std::signal(SIGPIPE, SIG_IGN);
}

/// True once in every so many seconds.
class Due
{
public:
    Due(double interval, double now) : interval(interval), next(now + interval) {}
    bool operator()(double now)
    {
        if (now < next)
            return false;
        next = now + interval;
        return true;
    }

private:
    double interval;
    double next;
};

/// One recorder a folder: a second one would repair what the first one writes.
bool lockFolder(const std::string& folder)
{
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    const int lock = ::open((folder + "/kora_recorder.lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
    if (lock < 0) {
        std::perror(("kora-recorder: " + folder).c_str());
        return false;
    }
    if (::flock(lock, LOCK_EX | LOCK_NB) == 0)
        return true;
    std::fprintf(stderr, "kora-recorder: another one records into %s\n", folder.c_str());
    return false;
}

void showProgress(const Recording& recording, bool onTerminal)
{
    const double written = double(recording.samples()) * sizeof(DisplayRecord) / bytesPerMegabyte;
    const double free = double(recording.freeBytes()) / bytesPerMegabyte;
    if (onTerminal)
        std::printf("\r%6d Hz  %10.1f MB  %lld gaps  %10.0f MB free ", recording.rate(), written,
                    static_cast<long long>(recording.gaps()), free);
    else
        std::printf("rate=%d samples=%lld megabytes=%.1f gaps=%lld free=%.0f\n", recording.rate(),
                    static_cast<long long>(recording.samples()), written, static_cast<long long>(recording.gaps()),
                    free);
    std::fflush(stdout);
}

int record(const Options& options)
{
    handleSignals();
    if (!lockFolder(options.recording.folder))
        return failedStatus;
    const bool onTerminal = ::isatty(STDOUT_FILENO) == 1;
    const SystemClock clock;
    const double begun = clock.now().monotonic;
    PieceQueue queue;
    Recording recording(clock, options.recording, [onTerminal](const std::string& text) {
        std::printf(onTerminal ? "\r%-78s\n" : "event %s\n", text.c_str());
        std::fflush(stdout);
    });
    recording.repairFolder();
    StatusReader status;
    // From here on a change is an event.
    recording.takeStatus(status.read());
    FollowingThread following(clock, queue);
    notifyServiceManager("READY=1");

    const double watchdog = watchdogSeconds();
    Due flush(flushSeconds, begun);
    Due house(houseSeconds, begun);
    Due progress(onTerminal ? houseSeconds : logLineSeconds, begun);
    Due alive(watchdog > 0 ? watchdog / 3 : 1e9, begun);
    StreamPiece piece;
    std::vector<DisplayRecord> records;
    const auto takeOne = [&] {
        if (!queue.pop(piece, records))
            return false;
        recording.take(piece, records.data());
        return true;
    };
    for (double now = begun; !endWanted && (!options.seconds || now - begun < *options.seconds);
         now = clock.now().monotonic) {
        // One piece a turn: a disk that is too slow for the stream must not hold up signals, status and watchdog.
        const bool isBusy = takeOne();
        if (house(now)) {
            recording.takeStatus(status.read());
            recording.keepHouse();
        }
        if (flush(now))
            recording.flush();
        if (progress(now))
            showProgress(recording, onTerminal);
        if (alive(now))
            notifyServiceManager("WATCHDOG=1");
        if (!isBusy)
            ::usleep(turnMicroseconds);
    }
    notifyServiceManager("STOPPING=1");
    following.stop();
    while (takeOne())
        continue;
    recording.finish();
    showProgress(recording, onTerminal);
    return 0;
}

int run(const Options& options)
{
    switch (options.command) {
    case Options::Command::Help:
        std::fputs(usageText, stdout);
        return 0;
    case Options::Command::Version:
        std::puts("kora-recorder " KORA_VERSION);
        return 0;
    case Options::Command::List:
        return listRecordings(options);
    case Options::Command::Info:
        return showSegments(options);
    case Options::Command::Export:
        return exportStretch(options);
    case Options::Command::Verify:
        return verifySegments(options);
    case Options::Command::Mark:
        return markNow(options);
    case Options::Command::Forget:
        return forgetKept(options);
    case Options::Command::Record:
        break;
    }
    return record(options);
}

} // namespace

int main(int argc, char** argv)
{
    try {
        Options options = parseOptions({argv + 1, argv + argc});
        options.recording.version = KORA_VERSION;
        return run(options);
    } catch (const UsageError& error) {
        std::fprintf(stderr, "kora-recorder: %s\n", error.what());
        return usageStatus;
    }
}
