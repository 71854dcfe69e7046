#pragma once

#include "simulation/InstallationState.h"
#include "simulation/beam/NormalNoise.h"
#include "simulation/beam/OscillatorBank.h"

#include <array>

namespace kora::simulation {

/// What moves the beam without any actuator, as docs/simulation.md lists it.
struct BeamSettings
{
    double driftMicrometres = 5.0; ///< peak, both axes
    double driftPeriodS = 10.0;
    double walkMicrometres = 1.0;   ///< RMS of the random walk that is drawn back to the axis
    double walkTimeS = 2.0;         ///< time constant of that
    double noiseMicrometres = 0.02; ///< RMS, white over the band of the physics
    double fluxNoise = 1e-4;        ///< RMS relative to the flux, white
    double fluxWalk = 1e-3;         ///< RMS relative to the flux, slow
    double fluxWalkTimeS = 20.0;
    double kickTimeS = 0.5; ///< a kick decays with this time constant
    std::array<VibrationLine, 8> lines = {{{0.53, 2.0, 1.6},
                                           {3.1, 1.2, 1.0},
                                           {6.7, 0.8, 0.7},
                                           {24.8, 0.25, 0.2},
                                           {49.9, 0.12, 0.15},
                                           {99.8, 0.05, 0.05},
                                           {0, 0, 0},
                                           {0, 0, 0}}};
};

struct BeamSample
{
    double x; ///< micrometres from the axis of BPM1
    double y;
    double flux; ///< relative to the nominal flux, 0 with the beam off
};

/// The undisturbed-by-us beam: drift, vibration lines, noise, kicks, on and off.
class Beam
{
public:
    explicit Beam(std::uint64_t seed);

    /// The next sample, one step of the physics later.
    BeamSample next();
    /// Passes so many steps, whose samples nobody looks at.
    void skip(int steps);

    const BeamSettings& motion() const { return settings; }
    bool isSwitchedOn() const { return isOn; }

    void setOn(bool on) { isOn = on; }
    void kick(double xMicrometres, double yMicrometres);
    void setNoise(double micrometres) { settings.noiseMicrometres = micrometres; }
    void setDrift(double amplitudeMicrometres, double periodS, double walkMicrometres);
    /// @param line 0 to 7; others are ignored
    void setVibration(int line, const VibrationLine& vibration);
    /// No motion and a steady flux from now on, pending kicks included.
    void quiet();

private:
    /// Random walk with return to zero (Ornstein-Uhlenbeck), advanced by Euler's rule.
    struct Walk
    {
        double value = 0;
        double keep = 0;
        double push = 0;

        void set(double rms, double timeS);
        double step(double noise) { return value = value * keep + push * noise; }
    };

    void applySettings();
    void decayKick(int steps);

    BeamSettings settings;
    NormalNoise noise;
    bool isOn = true;
    /// The drift, and behind it the vibration lines.
    OscillatorBank<9> oscillators;
    int activeLines = 0;
    Walk walkX;
    Walk walkY;
    Walk fluxWalk;
    double kickX = 0;
    double kickY = 0;
    double kickDecay = 0;
};

} // namespace kora::simulation
