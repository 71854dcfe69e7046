#include "archive/Overview.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace kora::archive {

void StretchBuilder::add(const double* samples, int number)
{
    StretchBuilder part;
    part.collected = number;
    double lowest = std::numeric_limits<double>::infinity();
    double highest = -lowest;
    double sum = 0;
    for (int i = 0; i < number; ++i) {
        const double value = samples[i];
        const bool counts = value == value;
        part.numbers += counts;
        sum += counts ? value : 0.0;
        lowest = value < lowest ? value : lowest;
        highest = value > highest ? value : highest;
    }
    if (part.numbers > 0) {
        part.min = lowest;
        part.max = highest;
        part.mean = sum / double(part.numbers);
        for (int i = 0; i < number; ++i) {
            const double distance = samples[i] - part.mean;
            part.squares += samples[i] == samples[i] ? distance * distance : 0.0;
        }
    }
    add(part);
}

void StretchBuilder::add(const StretchBuilder& part)
{
    collected += part.collected;
    if (part.numbers == 0)
        return;
    if (numbers == 0) {
        const std::int64_t all = collected;
        *this = part;
        collected = all;
        return;
    }
    const double own = double(numbers);
    const double other = double(part.numbers);
    const double distance = part.mean - mean;
    min = std::min(min, part.min);
    max = std::max(max, part.max);
    mean += distance * other / (own + other);
    squares += part.squares + distance * distance * own * other / (own + other);
    numbers += part.numbers;
}

Stretch StretchBuilder::result() const
{
    if (numbers == 0) {
        const double none = std::numeric_limits<double>::quiet_NaN();
        return {none, none, none, none};
    }
    return {min, max, mean, std::sqrt(squares / double(numbers))};
}

void OverviewBuilder::add(const double* samples, int number)
{
    while (number > 0) {
        const int room = overviewFactors[0] - int(open[0].samples());
        const int taken = std::min(number, room);
        open[0].add(samples, taken);
        samples += taken;
        number -= taken;
        if (taken == room)
            takeFine();
    }
}

void OverviewBuilder::finish()
{
    if (open[0].samples() > 0)
        takeFine();
    if (open[1].samples() > 0) {
        ready[1].push_back(open[1].result());
        open[1].clear();
    }
}

void OverviewBuilder::takeFine()
{
    ready[0].push_back(open[0].result());
    open[1].add(open[0]);
    open[0].clear();
    if (open[1].samples() < overviewFactors[1])
        return;
    ready[1].push_back(open[1].result());
    open[1].clear();
}

} // namespace kora::archive
