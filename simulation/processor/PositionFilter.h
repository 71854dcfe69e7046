#pragma once

#include <array>

namespace kora::simulation {

/// One position filter of the processor: an IIR section of fourth order in direct form,
/// y[n] = sum b[k] x[n - k] + sum f[k] y[n - k], where the feedback terms f are added and the one of the current
/// sample is understood as absent. Written coefficients act from the commit on. The output saturates, as the
/// processor's numbers do, so that an unstable set cannot run away.
class PositionFilter
{
public:
    static constexpr double saturation = 4;

    /// @param kind 0 numerator, 1 feedback; @param index 0 to 4
    /// @return false for any other address or a value that is not finite, which changes nothing
    bool write(int kind, int index, double value);
    /// Makes the written coefficients active and starts at rest at the next sample.
    void commit();
    /// Takes the filter out of the path, or puts it back at rest at the next sample.
    void bypass(bool fullBand);

    double process(double sample);

private:
    void settleAt(double sample);

    std::array<double, 5> written[2] = {{1, 0, 0, 0, 0}, {}};
    std::array<double, 5> active[2] = {{1, 0, 0, 0, 0}, {}};
    std::array<double, 4> inputs = {};
    std::array<double, 4> outputs = {};
    bool bypassed = true;
    bool fresh = true;
};

} // namespace kora::simulation
