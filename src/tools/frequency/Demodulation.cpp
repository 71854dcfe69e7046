#include "tools/frequency/Demodulation.h"

#include "stream/DisplayRecord.h"

#include <armadillo>

#include <cmath>

namespace {

constexpr double pi = 3.141592653589793;

} // namespace

demodulation::Response demodulation::demodulate(const DisplayRecord* block, int count, int slot, double factor,
                                                float amplitude)
{
    const auto length = arma::uword(count);
    arma::vec input(length, arma::fill::none);
    arma::vec referenceA(length, arma::fill::none);
    arma::vec referenceB(length, arma::fill::none);
    for (arma::uword i = 0; i < length; ++i) {
        input[i] = slotValue(block[i], slot) * factor;
        referenceA[i] = double(block[i].funcGenRefA);
        referenceB[i] = double(block[i].funcGenRefB);
    }
    input -= arma::mean(input);
    const double inPhase = arma::dot(input, referenceA) / count;
    const double quadrature = arma::dot(input, referenceB) / count;
    return {std::sqrt(inPhase * inPhase + quadrature * quadrature) / double(amplitude),
            std::atan2(quadrature, inPhase) * 180.0 / pi};
}

double demodulation::unwrapped(double previousDeg, double phaseDeg)
{
    double step = phaseDeg - previousDeg;
    if (step > 180)
        step -= 360;
    else if (step < -180)
        step += 360;
    return previousDeg + step;
}
