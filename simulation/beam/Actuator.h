#pragma once

#include <algorithm>
#include <complex>
#include <vector>

namespace kora::simulation {

/// A mechanical actuator behind one output.
struct ActuatorModel
{
    double gain;      ///< micrometres at BPM1 per volt
    double neutral;   ///< V at which the beam is on the axis
    double resonance; ///< natural frequency, Hz
    double damping;   ///< damping ratio, 0 < damping < 1
    double deadTime;  ///< s, a whole number of steps of the physics
    double travel;    ///< end stops of the mirror, micrometres at BPM1 to either side of the axis
};

/// Second-order system with dead time behind a held output:
/// G(s) = gain * exp(-s * deadTime) / (1 + 2 * damping * s / w0 + s^2 / w0^2), advanced by its exact solution
/// under an input that is constant within a step (Ogata, Modern Control Engineering, ch. 5).
class Actuator
{
public:
    /// Starts at rest at the given voltage.
    Actuator(const ActuatorModel& model, double volts);

    /// Holds `volts` for one step of the physics.
    void step(double volts);
    /// Holds `volts` for so many steps.
    void hold(double volts, int steps);

    /// Where the mechanics stands, as the constant voltage that would have brought it there.
    double settledVolts() const { return position; }
    /// Displacement of the beam at BPM1, micrometres.
    double displacement() const
    {
        return std::clamp(model.gain * (position - model.neutral), -model.travel, model.travel);
    }

    /// Closed form of the response from output to displacement at one frequency, micrometres per volt; the hold of
    /// the output counts as half a step of delay.
    static std::complex<double> response(const ActuatorModel& model, double hertz);

private:
    bool isAtRest(double volts) const;

    ActuatorModel model;
    std::vector<double> delayed;
    std::size_t delayIndex = 0;
    /// Steps since the voltage last changed, up to the length of the dead time.
    std::size_t heldFor;
    double held;
    double position;
    double velocity = 0;
    /// Transition of (position - input, velocity) over one step.
    double transition[2][2];
};

} // namespace kora::simulation
