#pragma once

#include "simulation/outputs/FunctionGenerator.h"
#include "simulation/processor/FeedbackLoops.h"

namespace kora::simulation {

/// Four analogue outputs of +-12 V. Their source is the loops or the register that direct writes fill; a running
/// function generator takes its output from either.
class OutputUnit
{
public:
    static constexpr double limitVolts = 12;
    static constexpr int sourceDirect = 0;
    static constexpr int sourceLoops = 1;

    explicit OutputUnit(double restVolts);

    /// @return false for a source that is neither, which changes nothing
    bool setSource(int newSource);
    int source() const { return selected; }
    /// Fills the register of direct writes; voltages that are not finite leave their place as it is.
    void write(const double volts[4]);

    void update(const FeedbackLoops& loops, const FunctionGenerator& generator);
    /// Without the unit the actuators see no voltage.
    void updateUnplugged();
    const double* volts() const { return present; }

private:
    double written[4];
    double present[4];
    int selected = sourceLoops;
};

} // namespace kora::simulation
