#pragma once

#include "simulation/processor/Crossbar.h"

namespace kora::simulation {

/// Raw position, dimensionless, and intensity, A.
struct PositionReading
{
    double x = 0;
    double y = 0;
    double intensity = 0;
};

/// What the processor makes of the currents of one amplifier.
///
/// With the sum S = top + right + bottom + left:
///   90 degrees: x = (right - left) / S, y = (top - bottom) / S
///   45 degrees: x = (top + right - bottom - left) / S, y = (top + left - right - bottom) / S
/// each plus offset / scale, so that a position in micrometres is x * scaleX and the offset is added to it.
/// Positions saturate at -1 and 1; a sum that is not positive gives position 0.
class PositionMonitor
{
public:
    Crossbar& crossbar() { return routes; }
    /// @param value 0 for 45 degrees, 1 for 90 degrees; @return false for any other, which changes nothing
    bool setOrientation(int value);
    /// Micrometres per unit of raw position. @return false for a value that is not finite
    bool setScale(double x, double y);
    /// Micrometres. @return false for a value that is not finite
    bool setOffset(double x, double y);

    double scaleX() const { return scale[0]; }
    double scaleY() const { return scale[1]; }

    PositionReading evaluate(const FourValues& amps) const;
    /// Of a device that measures the position itself, as an encoder does; x and y raw, intensity nothing.
    PositionReading evaluatePosition(double x, double y) const;

private:
    double place(double raw, int axis) const;
    void updateShift();

    Crossbar routes;
    int orientation = 1;
    double scale[2] = {1, 1};
    double offset[2] = {0, 0};
    double shift[2] = {0, 0}; ///< offset in raw units
};

} // namespace kora::simulation
