#pragma once

#include "simulation/beam/Oscillator.h"

namespace kora::simulation {

/// Oscillators that step together, two to a vector register. Each does what an Oscillator does, to the bit.
template <int size>
class OscillatorBank
{
public:
    /// Goes on from the present phase. @param stepsPerSecond rate of the steps
    void setFrequency(int index, double hertz, double stepsPerSecond)
    {
        const double angle = 2 * M_PI * hertz / stepsPerSecond;
        pairs[index / 2].turnCos[index % 2] = std::cos(angle);
        pairs[index / 2].turnSin[index % 2] = std::sin(angle);
    }

    void setPhase(int index, double radians)
    {
        pairs[index / 2].c[index % 2] = std::cos(radians);
        pairs[index / 2].s[index % 2] = std::sin(radians);
    }

    /// So many steps of the first `count` oscillators; the others keep their phase.
    void step(int count, int steps)
    {
        for (int i = 0; i < count / 2; ++i)
            pairs[i] = stepped(pairs[i], steps);
        if (count % 2 == 0)
            return;
        Lanes& last = pairs[count / 2];
        const Lanes next = stepped(last, steps);
        last.c[0] = next.c[0];
        last.s[0] = next.s[0];
    }

    double sine(int index) const { return pairs[index / 2].s[index % 2]; }
    double cosine(int index) const { return pairs[index / 2].c[index % 2]; }

private:
    using Pair = double __attribute__((vector_size(2 * sizeof(double))));
    struct Lanes
    {
        Pair c = {1, 1};
        Pair s = {0, 0};
        Pair turnCos = {1, 1};
        Pair turnSin = {0, 0};
    };

    static Lanes stepped(Lanes lanes, int steps)
    {
        for (int i = 0; i < steps; ++i)
            turnOnUnitCircle(lanes.c, lanes.s, lanes.turnCos, lanes.turnSin);
        return lanes;
    }

    Lanes pairs[(size + 1) / 2];
};

} // namespace kora::simulation
