#pragma once

#include <cstdint>

namespace kora::simulation {

/// Mean and standard deviation of one signal over the newest second, in steps of a tenth of a second; until a tenth
/// is full, over what there is. "Filtered" is the deviation of the means over each millisecond.
class Statistics
{
public:
    /// Forgets everything. @param samplesPerSecond a multiple of 1000
    void start(int samplesPerSecond);
    void add(double value);

    double mean() const;
    double deviation() const;
    double filteredDeviation() const;

private:
    struct Sums
    {
        std::int64_t count = 0;
        double sum = 0;
        double squares = 0;

        void add(double value);
        void add(const Sums& other);
        double mean() const;
        double deviation() const;
    };
    struct Block
    {
        Sums all;
        Sums filtered;
    };
    static constexpr int blocksKept = 10;

    Block total() const;

    Block finished[blocksKept];
    int finishedCount = 0;
    int nextBlock = 0;
    Block current;
    Sums millisecond;
    int blockSamples = 1000;
    int millisecondSamples = 10;
    /// First value of all: sums of differences from it keep their digits.
    double reference = 0;
    bool hasReference = false;
};

} // namespace kora::simulation
