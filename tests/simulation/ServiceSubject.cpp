#include "hardware/koralink.h"
#include "simulation/Operations.h"
#include "stream/DeviceRecords.h"
#include "stream/DisplayRecord.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <iostream>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

template <typename T>
struct Argument
{
    T value = {};
    T get() { return value; }
};
/// Room for what an operation stores or reads.
template <typename T>
struct Argument<T*>
{
    std::remove_const_t<T> value[64] = {};
    T* get() { return value; }
};
template <>
struct Argument<void*>
{
    DisplayRecord value[1] = {};
    void* get() { return value; }
};

template <typename Result, typename... Arguments>
int callWithZeros(Result (*function)(Arguments...))
{
    std::tuple<Argument<Arguments>...> arguments;
    return int(std::apply([&](auto&... each) { return function(each.get()...); }, arguments));
}

/// Calls every operation. Shows how many did not give what a missing installation gives, and the longest time of one.
std::string callAll()
{
    int others = 0;
    double longest = 0;
#define KORA_CALL(result, name, failure, parameters, arguments)                                                        \
    {                                                                                                                  \
        const auto start = Clock::now();                                                                               \
        others += callWithZeros(name) != int(failure);                                                                 \
        longest = std::max(longest, secondsSince(start));                                                              \
    }
    KORA_OPERATIONS(KORA_CALL)
#undef KORA_CALL
    return std::to_string(others) + ' ' + std::to_string(longest);
}

std::uint64_t checksum(const std::vector<DisplayRecord>& records)
{
    std::uint64_t sum = 14695981039346656037u;
    const auto* const bytes = reinterpret_cast<const unsigned char*>(records.data());
    for (std::size_t i = 0; i < records.size() * sizeof(DisplayRecord); ++i)
        sum = (sum ^ bytes[i]) * 1099511628211u;
    return sum;
}

std::string rate()
{
    int hertz = -1;
    unsigned char filter = 0;
    const int result = getDisplayFreq(&hertz, &filter);
    return std::to_string(result < 0 ? result : hertz);
}

/// Calls this and that for so many seconds. Shows how many calls failed, and the longest time of one.
std::string work(double seconds)
{
    int failures = 0;
    double longest = 0;
    std::vector<DisplayRecord> records(2048);
    const auto measured = [&](auto call) {
        const auto start = Clock::now();
        failures += !call();
        longest = std::max(longest, secondsSince(start));
    };
    for (const auto start = Clock::now(); secondsSince(start) < seconds;) {
        double value = 0;
        BPMStats statistics;
        measured([&] { return setSetpoint(0, 1) == 0; });
        measured([&] { return getSetpoint(0, &value) == 0; });
        measured([&] { return getBPMStats(&statistics) == 0; });
        measured([&] { return getBuffer(records.data(), 2048) == 2048; });
    }
    return std::to_string(failures) + ' ' + std::to_string(longest);
}

std::string perform(const std::string& line)
{
    static int stream = -1;
    static int pairs[16];
    std::istringstream words(line);
    std::string verb;
    double seconds = 0;
    words >> verb >> seconds;
    const int number = int(seconds);
    if (verb == "all")
        return callAll();
    if (verb == "rate")
        return rate();
    if (verb == "set-rate")
        return std::to_string(setDisplayFreq(number, 0));
    if (verb == "set-point")
        return std::to_string(setSetpoint(0, number));
    if (verb == "get-point") {
        double value = -1;
        const int result = getSetpoint(0, &value);
        return std::to_string(result) + ' ' + std::to_string(value);
    }
    if (verb == "buffer") {
        std::vector<DisplayRecord> records(std::size_t(std::max(number, 0)));
        const int count = getBuffer(records.data(), number);
        return std::to_string(count) + ' ' + std::to_string(checksum(records));
    }
    if (verb == "open") {
        stream = open(streamDevicePath, O_RDONLY);
        return std::to_string(stream < 0 ? -errno : 0);
    }
    if (verb == "read") {
        std::vector<DisplayRecord> records(static_cast<std::size_t>(number));
        const ssize_t bytes = read(stream, records.data(), records.size() * sizeof(DisplayRecord));
        return std::to_string(bytes < 0 ? -errno : bytes / ssize_t(sizeof(DisplayRecord)));
    }
    if (verb == "amplifier") {
        const int fd = open(amplifierDevicePath[0], O_RDONLY);
        CurrentRecord currents;
        const int result = fd < 0 ? -errno : ioctl(fd, requestCurrents, &currents) < 0 ? -errno : 0;
        close(fd);
        return std::to_string(result);
    }
    if (verb == "work")
        return work(seconds);
    if (verb == "fork") {
        // A call of a child, which then lives on until its parent's end closes the pipe.
        const pid_t child = fork();
        if (child == 0) {
            std::cout << rate() << std::endl;
            char byte;
            _exit(read(STDIN_FILENO, &byte, 1) == 0 ? 0 : 1);
        }
        return "child " + std::to_string(child);
    }
    if (verb == "close-all") {
        for (int fd = 3; fd < 64; ++fd)
            close(fd);
        // Others take their numbers, as the program's own files would.
        for (int i = 0; i < 8; ++i)
            if (socketpair(AF_UNIX, SOCK_SEQPACKET, 0, pairs + 2 * i) != 0)
                return "-1";
        return "0";
    }
    if (verb == "heard") {
        int packets = 0;
        char byte;
        for (const int fd : pairs)
            packets += recv(fd, &byte, 1, MSG_DONTWAIT) >= 0;
        return std::to_string(packets);
    }
    return "unknown";
}

} // namespace

/// A program on the installation that does what its input tells it, a line a command, and shows the result and the
/// time that it took in seconds.
int main()
{
    std::cout << "running" << std::endl;
    for (std::string line; std::getline(std::cin, line);) {
        const auto start = Clock::now();
        const std::string result = perform(line);
        std::cout << secondsSince(start) << ' ' << result << std::endl;
    }
    return 0;
}
