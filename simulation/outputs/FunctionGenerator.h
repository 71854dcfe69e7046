#pragma once

#include "simulation/beam/Oscillator.h"

namespace kora::simulation {

/// Sine generator that can take over one output, with two reference signals for the demodulation.
///
/// On output c it delivers offset[c] + amplitude[c] / 2 * sin(wt), the amplitude being peak to peak. The references
/// are 4 sin(wt) and 4 cos(wt): a response g * amplitude / 2 * sin(wt + p) times a reference has the mean
/// g * amplitude * cos(p), or sin(p), so that dividing by the amplitude as typed gives the true gain, and
/// atan2 of the two the true phase.
class FunctionGenerator
{
public:
    static constexpr double referenceAmplitude = 4;

    /// @return false for values that are not finite or a negative frequency, which changes nothing
    bool configure(const float peakToPeak[4], const float offsets[4], float hertz);
    /// @param mode 0 stops, output number plus 2 starts at phase 0 on that output; @return false for any other
    bool enable(int mode);

    bool isRunning() const { return running >= 0; }
    bool isRunningOn(int output) const { return running == output; }
    double volts() const { return offset[running] + 0.5 * amplitude[running] * oscillator.sine(); }
    float referenceA() const { return running < 0 ? 0 : float(referenceAmplitude * oscillator.sine()); }
    float referenceB() const { return running < 0 ? 0 : float(referenceAmplitude * oscillator.cosine()); }

    /// To the next step of the physics.
    void step()
    {
        if (isRunning())
            oscillator.step();
    }

private:
    double amplitude[4] = {};
    double offset[4] = {};
    Oscillator oscillator;
    int running = -1;
};

} // namespace kora::simulation
