#include "feedback/FilterDesign.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <vector>

namespace {

using Complex = std::complex<double>;

constexpr Complex j(0.0, 1.0);

/// Bilinear constant of a normalised sampling rate of 2.
constexpr double normalisedRate = 4.0;

/// Monic polynomial with these roots, highest power first. conv() lays its result out as its first argument,
/// and takes a row of one element for a column: hence the factor comes first.
arma::cx_rowvec polynomial(const std::vector<Complex>& roots)
{
    arma::cx_rowvec coefficients = {Complex(1.0)};
    for (const Complex& root : roots) {
        const arma::cx_rowvec factor = {Complex(1.0), -root};
        coefficients = arma::conv(factor, coefficients);
    }
    return coefficients;
}

/// Frequency in Hz prewarped to the normalised bilinear constant.
double prewarped(double hertz, double Ts)
{
    return normalisedRate * std::tan(M_PI * (2.0 * hertz * Ts) * 0.5);
}

} // namespace

void butterLowpass(int order, double fcut, double Ts, arma::rowvec& b, arma::rowvec& a)
{
    const double wa = (2.0 / Ts) * std::tan(2.0 * M_PI * fcut * Ts * 0.5);
    std::vector<Complex> poles;
    for (int k = 1; k <= order; ++k)
        poles.push_back(wa * std::exp(j * (M_PI * (2 * k + order - 1) / (2.0 * order))));
    const arma::rowvec denS = arma::real(polynomial(poles));
    const arma::rowvec numS = {1.0};
    bilinearTransform(numS, denS, b, a, Ts);
}

void bilinearTransform(const arma::rowvec& numS, const arma::rowvec& denS, arma::rowvec& b, arma::rowvec& a, double Ts)
{
    const arma::cx_vec zeros = arma::roots(numS);
    const arma::cx_vec poles = arma::roots(denS);
    Complex gain(numS(numS.n_elem - 1), 0.0);

    std::vector<Complex> digitalZeros;
    for (const Complex& s : zeros) {
        digitalZeros.push_back((1.0 + s * Ts * 0.5) / (1.0 - s * Ts * 0.5));
        gain *= 1.0 - 2.0 / (s * Ts);
    }
    std::vector<Complex> digitalPoles;
    for (const Complex& s : poles) {
        digitalPoles.push_back((1.0 + s * Ts * 0.5) / (1.0 - s * Ts * 0.5));
        gain /= 1.0 - 2.0 / (s * Ts);
    }
    digitalZeros.resize(std::max(zeros.n_elem, poles.n_elem), Complex(-1.0));

    b = arma::real(polynomial(digitalZeros) * gain);
    a = arma::real(polynomial(digitalPoles));
}

void butterBandpass(int order, double fcutLow, double fcutHigh, double Ts, arma::rowvec& b, arma::rowvec& a)
{
    const double lo = prewarped(fcutLow, Ts);
    const double hi = prewarped(fcutHigh, Ts);
    const double bw = hi - lo;
    const double wo = std::sqrt(lo * hi);

    std::vector<Complex> poles;
    for (const double sign : {1.0, -1.0}) {
        for (const double m : arma::rowvec(arma::linspace<arma::rowvec>(-(order - 1), order - 1, order))) {
            const Complex q = -(bw / 2.0) * std::exp(j * (M_PI * m / (2.0 * order)));
            poles.push_back(q + sign * std::sqrt(q * q - wo * wo));
        }
    }
    const std::vector<Complex> zeros(order, Complex(0.0));

    Complex numerator(1.0);
    std::vector<Complex> digitalZeros;
    for (const Complex& z : zeros) {
        numerator *= normalisedRate - z;
        digitalZeros.push_back((normalisedRate + z) / (normalisedRate - z));
    }
    digitalZeros.resize(poles.size(), Complex(-1.0));
    Complex denominator(1.0);
    std::vector<Complex> digitalPoles;
    for (const Complex& p : poles) {
        denominator *= normalisedRate - p;
        digitalPoles.push_back((normalisedRate + p) / (normalisedRate - p));
    }
    const double ratio = (numerator / denominator).real();

    b = arma::real(polynomial(digitalZeros)) * ratio * std::pow(bw, order);
    a = arma::real(polynomial(digitalPoles));
}
