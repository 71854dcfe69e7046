#pragma once

#include <array>

namespace kora::simulation {

/// Electrodes and, by default wiring, channels of an amplifier.
enum Electrode
{
    Top,
    Right,
    Bottom,
    Left
};
using FourValues = std::array<double, 4>;

/// Four electrodes that meet at the axis, in a beam of Gaussian profile.
/// At 90 degrees the gaps lie on the diagonals, so that the electrodes point up, right, down and left. At 45 degrees
/// the detector is turned clockwise by half a quadrant: top lies at the upper right, right at the lower right,
/// bottom at the lower left, left at the upper left.
class QuadrantDetector
{
public:
    /// @param orientation 0 for 45 degrees, 1 for 90 degrees; @param sigmaMicrometres RMS size of the beam
    QuadrantDetector(int orientation, double sigmaMicrometres);

    /// Share of the beam on each electrode, from the error function along the two gaps; the shares add up to 1.
    FourValues shares(double xMicrometres, double yMicrometres) const;

    /// Micrometres per unit of (difference over sum) near the axis: sigma * sqrt(pi) at 90 degrees,
    /// sigma * sqrt(pi / 2) at 45 degrees.
    static double scale(int orientation, double sigmaMicrometres);

private:
    int orientation;
    double perSigma; ///< 1 / (sqrt(2) * sigma)
};

} // namespace kora::simulation
