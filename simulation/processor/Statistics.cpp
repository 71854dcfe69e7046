#include "simulation/processor/Statistics.h"

#include <algorithm>
#include <cmath>

namespace kora::simulation {

void Statistics::Sums::add(double value)
{
    ++count;
    sum += value;
    squares += value * value;
}

void Statistics::Sums::add(const Sums& other)
{
    count += other.count;
    sum += other.sum;
    squares += other.squares;
}

double Statistics::Sums::mean() const
{
    return count > 0 ? sum / double(count) : 0;
}

double Statistics::Sums::deviation() const
{
    return count > 0 ? std::sqrt(std::max(squares / double(count) - mean() * mean(), 0.0)) : 0;
}

void Statistics::start(int samplesPerSecond)
{
    *this = Statistics();
    blockSamples = samplesPerSecond / blocksKept;
    millisecondSamples = samplesPerSecond / 1000;
}

void Statistics::add(double value)
{
    if (!hasReference) {
        reference = value;
        hasReference = true;
    }
    const double difference = value - reference;
    current.all.add(difference);
    millisecond.add(difference);
    if (millisecond.count == millisecondSamples) {
        current.filtered.add(millisecond.mean());
        millisecond = Sums();
    }
    if (current.all.count == blockSamples) {
        finished[nextBlock] = current;
        nextBlock = (nextBlock + 1) % blocksKept;
        finishedCount = std::min(finishedCount + 1, blocksKept);
        current = Block();
    }
}

Statistics::Block Statistics::total() const
{
    if (finishedCount == 0)
        return current;
    Block sum;
    for (int i = 0; i < finishedCount; ++i) {
        sum.all.add(finished[i].all);
        sum.filtered.add(finished[i].filtered);
    }
    return sum;
}

double Statistics::mean() const
{
    return reference + total().all.mean();
}

double Statistics::deviation() const
{
    return total().all.deviation();
}

double Statistics::filteredDeviation() const
{
    return total().filtered.deviation();
}

} // namespace kora::simulation
