#pragma once

#include "simulation/beam/Actuator.h"

#include <cmath>
#include <complex>

/// Closed forms of what docs/simulation.md tells of an actuator, to hold measurements against.
namespace actuator_forms {

/// The output is held for one step of the physics, which adds half a step of delay.
constexpr double holdDelay = 10e-6;

/// Second order with dead time, um/V.
inline std::complex<double> transferFunction(const kora::simulation::ActuatorModel& actuator, double hertz)
{
    const std::complex<double> s(0, 2 * M_PI * hertz);
    const double w0 = 2 * M_PI * actuator.resonance;
    return actuator.gain * std::exp(-s * (actuator.deadTime + holdDelay)) /
           (1.0 + 2 * actuator.damping * s / w0 + s * s / (w0 * w0));
}

/// Answer to a unit step as a share of its final value, s after the dead time.
inline double stepResponse(const kora::simulation::ActuatorModel& actuator, double s)
{
    const double w = 2 * M_PI * actuator.resonance;
    const double root = std::sqrt(1 - actuator.damping * actuator.damping);
    const double damped = w * root;
    return 1 - std::exp(-actuator.damping * w * s) *
                   (std::cos(damped * s) + actuator.damping / root * std::sin(damped * s));
}

/// Time after the dead time at which the answer first exceeds a level, s.
inline double crossingTime(const kora::simulation::ActuatorModel& actuator, double level)
{
    double s = 0;
    while (stepResponse(actuator, s) <= level)
        s += 1e-7;
    return s;
}

/// Angle between two directions, degrees, 0 to 180.
inline double degreesApart(double a, double b)
{
    return std::fabs(std::remainder(a - b, 360.0));
}

} // namespace actuator_forms
