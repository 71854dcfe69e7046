#pragma once

#include <cmath>

namespace kora::simulation {

/// Turns the point (c, s) of the unit circle by one complex multiplication.
/// @tparam Number  double, or a vector of doubles for several points at once
template <typename Number>
void turnOnUnitCircle(Number& c, Number& s, Number turnCos, Number turnSin)
{
    const Number nextC = c * turnCos - s * turnSin;
    const Number nextS = s * turnCos + c * turnSin;
    // One Newton step towards length one keeps rounding from adding up over a day.
    const Number unit = 1.5 - 0.5 * (nextC * nextC + nextS * nextS);
    c = nextC * unit;
    s = nextS * unit;
}

/// Sine and cosine of a steadily growing phase.
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

    void step() { turnOnUnitCircle(c, s, turnCos, turnSin); }

    double sine() const { return s; }
    double cosine() const { return c; }

private:
    double c = 1;
    double s = 0;
    double turnCos = 1;
    double turnSin = 0;
};

} // namespace kora::simulation
