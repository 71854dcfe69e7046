#pragma once

#include <cmath>

namespace kora::simulation {

/// Sine and cosine of a steadily growing phase, one complex multiplication a step.
class Oscillator
{
public:
    /// Goes on from the present phase. @param stepsPerSecond rate at which step() is called
    void setFrequency(double hertz, double stepsPerSecond)
    {
        const double angle = 2 * M_PI * hertz / stepsPerSecond;
        turnCos = std::cos(angle);
        turnSin = std::sin(angle);
    }

    void setPhase(double radians)
    {
        c = std::cos(radians);
        s = std::sin(radians);
    }

    void step()
    {
        const double nextC = c * turnCos - s * turnSin;
        const double nextS = s * turnCos + c * turnSin;
        // One Newton step towards length one keeps rounding from adding up over a day.
        const double unit = 1.5 - 0.5 * (nextC * nextC + nextS * nextS);
        c = nextC * unit;
        s = nextS * unit;
    }

    double sine() const { return s; }
    double cosine() const { return c; }

private:
    double c = 1;
    double s = 0;
    double turnCos = 1;
    double turnSin = 0;
};

} // namespace kora::simulation
