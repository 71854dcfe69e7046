#include "clock/ServiceReport.h"

#include "clock/DrivenTime.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>

namespace driven_clock {

namespace {

constexpr double secondsPerHour = 3600;

double residentMegabytes()
{
    std::ifstream file("/proc/self/statm");
    double total = 0;
    double resident = 0;
    file >> total >> resident;
    return resident * double(sysconf(_SC_PAGESIZE)) / 1e6;
}

__attribute__((destructor)) void writeReport()
{
    if (const char* path = std::getenv("KORA_CLOCK_REPORT"))
        std::ofstream(path) << ServiceReport::instance().text();
}

} // namespace

ServiceReport& ServiceReport::instance()
{
    static auto* const one = new ServiceReport;
    return *one;
}

ServiceReport::ServiceReport() : work(environmentValue("KORA_CLOCK_WORK", 1000, 0)) {}

void ServiceReport::count(Service service)
{
    const double now = double(DrivenTime::instance().elapsed()) / nanosecondsPerSecond;
    const std::lock_guard<std::mutex> lock(mutex);
    Times& seen = times[service];
    if (seen.count == 0) {
        seen.first = now;
    } else {
        const double gap = now - seen.last;
        seen.shortest = seen.count == 1 ? gap : std::min(seen.shortest, gap);
        seen.longest = std::max(seen.longest, gap);
    }
    seen.last = now;
    if (++seen.count == 10)
        seen.tenth = now;
    while (now >= double(megabytesByHour.size() + 1) * secondsPerHour)
        megabytesByHour.push_back(residentMegabytes());
    DrivenTime::instance().spend(work);
}

std::string ServiceReport::text()
{
    const std::lock_guard<std::mutex> lock(mutex);
    std::string all;
    char line[200];
    for (const Times& seen : times) {
        std::snprintf(line, sizeof line, "%s %d first %.3f tenth %.3f last %.3f shortest %.3f longest %.3f\n",
                      seen.name, seen.count, seen.first, seen.tenth, seen.last, seen.shortest, seen.longest);
        all += line;
    }
    for (std::size_t hour = 0; hour < megabytesByHour.size(); ++hour) {
        std::snprintf(line, sizeof line, "hour %zu resident %.2f MB\n", hour + 1, megabytesByHour[hour]);
        all += line;
    }
    return all;
}

} // namespace driven_clock
