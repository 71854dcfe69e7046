#include "simulation/processor/PositionMonitor.h"

#include <algorithm>
#include <cmath>

namespace kora::simulation {

bool PositionMonitor::setOrientation(int value)
{
    if (value != 0 && value != 1)
        return false;
    orientation = value;
    return true;
}

bool PositionMonitor::setScale(double x, double y)
{
    if (!std::isfinite(x) || !std::isfinite(y))
        return false;
    scale[0] = x;
    scale[1] = y;
    updateShift();
    return true;
}

bool PositionMonitor::setOffset(double x, double y)
{
    if (!std::isfinite(x) || !std::isfinite(y))
        return false;
    offset[0] = x;
    offset[1] = y;
    updateShift();
    return true;
}

void PositionMonitor::updateShift()
{
    // A scale of 0, as an empty settings file gives it, leaves no raw unit that an offset could be turned into.
    for (int axis = 0; axis < 2; ++axis)
        shift[axis] = scale[axis] != 0 ? offset[axis] / scale[axis] : 0;
}

PositionReading PositionMonitor::evaluate(const FourValues& amps) const
{
    const FourValues e = routes.route(amps);
    PositionReading reading;
    reading.intensity = e[Top] + e[Right] + e[Bottom] + e[Left];
    if (reading.intensity <= 0)
        return reading;
    const double perSum = 1 / reading.intensity;
    if (orientation == 1) {
        reading.x = (e[Right] - e[Left]) * perSum;
        reading.y = (e[Top] - e[Bottom]) * perSum;
    } else {
        reading.x = (e[Top] + e[Right] - e[Bottom] - e[Left]) * perSum;
        reading.y = (e[Top] + e[Left] - e[Right] - e[Bottom]) * perSum;
    }
    reading.x = place(reading.x, 0);
    reading.y = place(reading.y, 1);
    return reading;
}

PositionReading PositionMonitor::evaluatePosition(double x, double y) const
{
    return {place(x, 0), place(y, 1), 0};
}

double PositionMonitor::place(double raw, int axis) const
{
    return std::clamp(raw + shift[axis], -1.0, 1.0);
}

} // namespace kora::simulation
