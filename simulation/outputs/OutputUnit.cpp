#include "simulation/outputs/OutputUnit.h"

#include <algorithm>
#include <cmath>

namespace kora::simulation {

OutputUnit::OutputUnit(double restVolts)
{
    std::fill(written, written + 4, restVolts);
    std::fill(present, present + 4, restVolts);
}

bool OutputUnit::setSource(int newSource)
{
    if (newSource != sourceDirect && newSource != sourceLoops)
        return false;
    selected = newSource;
    return true;
}

void OutputUnit::write(const double volts[4])
{
    for (int i = 0; i < 4; ++i)
        if (std::isfinite(volts[i]))
            written[i] = volts[i];
}

void OutputUnit::update(const FeedbackLoops& loops, const FunctionGenerator& generator)
{
    // An output that no loop is led to keeps its voltage.
    if (selected == sourceDirect)
        std::copy(written, written + 4, present);
    else
        for (int loop = 0; loop < FeedbackLoops::count; ++loop)
            present[loops.outputs()[loop]] = loops.controller(loop).output();
    for (int i = 0; i < 4; ++i) {
        if (generator.isRunningOn(i))
            present[i] = generator.volts();
        present[i] = std::clamp(present[i], -limitVolts, limitVolts);
    }
}

void OutputUnit::updateUnplugged()
{
    std::fill(present, present + 4, 0.0);
}

} // namespace kora::simulation
