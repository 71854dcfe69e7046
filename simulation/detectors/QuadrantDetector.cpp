#include "simulation/detectors/QuadrantDetector.h"

#include <cmath>

namespace kora::simulation {

QuadrantDetector::QuadrantDetector(int detectorOrientation, double sigmaMicrometres)
    : orientation(detectorOrientation), perSigma(M_SQRT1_2 / sigmaMicrometres)
{
}

FourValues QuadrantDetector::shares(double xMicrometres, double yMicrometres) const
{
    // Coordinates across the two gaps: rising from bottom and left to top and right, and from top and left to
    // bottom and right.
    double across = xMicrometres;
    double along = -yMicrometres;
    if (orientation == 1) {
        across = (xMicrometres + yMicrometres) * M_SQRT1_2;
        along = (xMicrometres - yMicrometres) * M_SQRT1_2;
    }
    const double high = 0.5 + 0.5 * std::erf(across * perSigma);
    const double right = 0.5 + 0.5 * std::erf(along * perSigma);
    FourValues shares;
    shares[Top] = high * (1 - right);
    shares[Right] = high * right;
    shares[Bottom] = (1 - high) * right;
    shares[Left] = (1 - high) * (1 - right);
    return shares;
}

double QuadrantDetector::scale(int orientation, double sigmaMicrometres)
{
    return sigmaMicrometres * std::sqrt(orientation == 1 ? M_PI : M_PI_2);
}

} // namespace kora::simulation
