#include "simulation/Faults.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <string_view>

namespace kora::simulation {

void Faults::failFunction(const std::string& name, int times)
{
    if (times == 0)
        failing.erase(name);
    else
        failing[name] = times;
}

bool Faults::takes(const char* name)
{
    if (failing.empty())
        return false;
    const auto entry = failing.find(std::string_view(name));
    if (entry == failing.end())
        return false;
    if (entry->second > 0 && --entry->second == 0)
        failing.erase(entry);
    return true;
}

int Faults::delivered(int count) const
{
    return std::max(count - std::max(missing, 0), 0);
}

void Faults::spoil(void* block, int count) const
{
    if (!garbage)
        return;
    using Limits = std::numeric_limits<double>;
    constexpr double values[] = {Limits::quiet_NaN(),
                                 Limits::infinity(),
                                 -Limits::infinity(),
                                 Limits::denorm_min(),
                                 Limits::max(),
                                 Limits::lowest(),
                                 -0.0};
    constexpr std::size_t valueCount = sizeof values / sizeof values[0];
    const auto place = static_cast<unsigned char*>(block);
    std::size_t turn = 0;
    for (int i = 0; i < count; ++i) {
        double slots[sizeof(DisplayRecord) / sizeof(double)];
        for (double& slot : slots)
            slot = values[turn++ % valueCount];
        // Seven values against 32 slots a record: every slot meets every value.
        std::memcpy(place + std::size_t(i) * sizeof slots, slots, sizeof slots);
    }
}

} // namespace kora::simulation
