#pragma once

#include "simulation/beam/NormalNoise.h"
#include "simulation/detectors/HighVoltage.h"
#include "simulation/detectors/QuadrantDetector.h"

namespace kora::simulation {

/// Four-channel current amplifier with bias supply.
class CurrentAmplifier
{
public:
    /// Full scale of range 0 and range 1, A, as the model list of the amplifiers gives it.
    static constexpr double fullScale[2] = {100e-6, 100e-9};
    /// Range 1 is that much quieter than range 0.
    static constexpr double quietRangeNoise = 0.05;
    static constexpr int automaticRange = 2;

    explicit CurrentAmplifier(std::uint64_t seed) : noise(seed) {}

    /// Amplifies for one step: adds noise and clips at full scale.
    /// @param electrodes electrode currents in channel order, A, at full collection
    const FourValues& measure(const FourValues& electrodes);
    /// Passes steps whose currents nobody looks at. Not for the automatic range, which looks at each.
    void skip(int steps) { noise.skip(steps * int(currents.size())); }
    /// A channel without an amplifier delivers nothing.
    void measureNothing() { currents = {}; }
    const FourValues& amps() const { return currents; }

    /// @param range 0, 1 or 2 for automatic; @return false for any other, which changes nothing
    bool setRange(int range);
    bool isAutomatic() const { return selectedRange == automaticRange; }
    int rangeInUse() const { return activeRange; }
    /// RMS in range 0, A.
    void setNoise(double amps) { noiseAmps = amps; }
    double noiseLevel() const { return noiseAmps; }

    HighVoltage& highVoltage() { return bias; }
    const HighVoltage& highVoltage() const { return bias; }
    void advanceBias(double seconds);
    /// Share of the charge that the bias collects: 1 - 0.2 * exp(-volts / 120).
    double collection() const { return collected; }

private:
    void chooseRange();

    NormalNoise noise;
    FourValues currents = {};
    int selectedRange = 0;
    int activeRange = 0;
    double noiseAmps = 1e-10;
    HighVoltage bias;
    double collected = 0.8;
};

} // namespace kora::simulation
