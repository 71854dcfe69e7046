#pragma once

#include "hardware/koralink.h"

#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

namespace driven_clock {

/// When the two services of the program came, in driven seconds since the start of the process, and what was resident
/// at every full hour. Safe from any thread. Written to the file that KORA_CLOCK_REPORT names when the process ends:
///
///   display 599 first 1.050 tenth 10.103 last 599.103 shortest 1.000 longest 1.050
///   poll 600 first 0.000 tenth 9.103 last 599.103 shortest 1.000 longest 1.050
///   hour 1 resident 157.14 MB
class ServiceReport
{
public:
    enum Service
    {
        Display,
        Poll
    };

    static ServiceReport& instance();

    /// Counts one service, and lets the time pass that it takes.
    void count(Service service);
    std::string text();

private:
    struct Times
    {
        const char* name;
        int count = 0;
        double first = 0;
        double tenth = 0;
        double last = 0;
        double shortest = 0;
        double longest = 0;
    };

    ServiceReport();

    const std::int64_t work; ///< driven time that one service takes, ns
    std::mutex mutex;        ///< guards what follows
    Times times[2] = {{"display"}, {"poll"}};
    std::vector<double> megabytesByHour;
};

} // namespace driven_clock
