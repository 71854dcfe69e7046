#include "feedback/ReferenceFilters.h"

#include <cmath>
#include <complex>

namespace {

using Section = std::array<long double, 3>;

/// Multiplies a polynomial by a quadratic one; what would go beyond the fifth coefficient is zero here.
void multiply(std::array<long double, 5>& polynomial, const Section& section)
{
    std::array<long double, 5> product = {};
    for (std::size_t i = 0; i < 5; ++i) {
        for (std::size_t k = 0; k < 3 && i + k < 5; ++k)
            product[i + k] += polynomial[i] * section[k];
    }
    polynomial = product;
}

/// Coefficients of (1 - x)^k (1 + x)^(4 - k).
std::array<long double, 5> expanded(int k)
{
    std::array<long double, 5> polynomial = {1};
    for (int factor = 0; factor < 4; ++factor) {
        const long double sign = factor < k ? -1 : 1;
        for (std::size_t power = 4; power > 0; --power)
            polynomial[power] += sign * polynomial[power - 1];
    }
    return polynomial;
}

} // namespace

long double ReferenceFilter::magnitude(long double hertz, long double Ts) const
{
    std::complex<long double> numerator = 0;
    std::complex<long double> denominator = 0;
    for (std::size_t k = 0; k < 5; ++k) {
        const auto delay = std::polar(1.0L, -2 * M_PIl * hertz * Ts * static_cast<long double>(k));
        numerator += b[k] * delay;
        denominator += a[k] * delay;
    }
    return std::abs(numerator / denominator);
}

ReferenceFilter referenceLowpass(long double fcut, long double Ts)
{
    const long double K = std::tan(M_PIl * fcut * Ts);
    ReferenceFilter filter = {{1}, {1}};
    for (int section = 0; section < 2; ++section) {
        const long double perQ = 2 * std::cos(M_PIl * (2 * section + 1) / 8);
        const long double norm = 1 + K * perQ + K * K;
        multiply(filter.b, {K * K / norm, 2 * K * K / norm, K * K / norm});
        multiply(filter.a, {1, 2 * (K * K - 1) / norm, (1 - K * perQ + K * K) / norm});
    }
    return filter;
}

ReferenceFilter referenceBandpass(long double fcutLow, long double fcutHigh, long double Ts)
{
    const long double low = std::tan(M_PIl * fcutLow * Ts);
    const long double high = std::tan(M_PIl * fcutHigh * Ts);
    const long double width = high - low;
    const long double centre2 = low * high;
    const long double root2 = std::sqrt(2.0L);
    // s^4 + sqrt(2) B s^3 + (2 W^2 + B^2) s^2 + sqrt(2) B W^2 s + W^4, by rising powers of s.
    const long double powers[5] = {centre2 * centre2, root2 * width * centre2, 2 * centre2 + width * width,
                                   root2 * width, 1};
    ReferenceFilter filter = {{}, {}};
    for (int k = 0; k < 5; ++k) {
        const auto terms = expanded(k);
        for (std::size_t i = 0; i < 5; ++i) {
            filter.a[i] += powers[k] * terms[i];
            if (k == 2)
                filter.b[i] += width * width * terms[i];
        }
    }
    const long double norm = filter.a[0];
    for (std::size_t i = 0; i < 5; ++i) {
        filter.a[i] /= norm;
        filter.b[i] /= norm;
    }
    return filter;
}
