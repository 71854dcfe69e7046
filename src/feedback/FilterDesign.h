#pragma once

#include <armadillo>

/// Design of the digital Butterworth filters of the position paths. Row vectors, index 0 the coefficient of
/// the current sample; b numerator, a denominator with a[0] = 1. No frequency is checked. A failing
/// eigenvalue decomposition throws std::runtime_error. Any thread.
///
/// Digits, measured at a period of 0.0001 s against long double: low-pass coefficients keep 14 from 1.0 Hz
/// on, band-pass denominators 14, band-pass numerators 12 with edges 0.1 Hz apart and 14 with edges far
/// apart. What double precision cannot hold is the filter's gain at low cut-offs, since the poles crowd at 1
/// and the sum of the denominator is the small rest of a cancellation: of the low-pass's unit gain at 0 Hz
/// some 2 digits remain at 1.0 Hz, 3 at 2 Hz, 5 at 5 Hz, 7 at 10 Hz and 8 at 20 Hz; of the band-pass's unit
/// gain in the middle of the band some 4 with a lower edge of 1.0 Hz and 2 with edges 0.1 Hz apart. That is
/// so for any rounding to double of a and does not come from the design.

/// Low-pass: analogue Butterworth poles at the prewarped cut-off, taken over by the bilinear transform. The
/// gain is 1 at 0 Hz and -3 dB at the cut-off.
/// @param order   of the analogue and of the digital filter
/// @param fcut    -3 dB frequency, Hz
/// @param Ts      sampling period, s
/// @param[out] b, a  order + 1 coefficients each
void butterLowpass(int order, double fcut, double Ts, arma::rowvec& b, arma::rowvec& a);

/// Band-pass: the low-pass prototype moved to the band, with zeros at 0 Hz and at the Nyquist frequency. The
/// gain is 1 at the geometric mean of the prewarped edges and -3 dB at both edges. Equal edges give a
/// numerator of zeros.
/// @param order   of the prototype; the digital filter has twice that order
/// @param fcutLow, fcutHigh  -3 dB frequencies, Hz
/// @param Ts      sampling period, s
/// @param[out] b, a  2 * order + 1 coefficients each
void butterBandpass(int order, double fcutLow, double fcutHigh, double Ts, arma::rowvec& b, arma::rowvec& a);

/// Bilinear transform s = (2 / Ts) (z - 1) / (z + 1) of the all-pole or rational transfer function numS /
/// denS, by way of its zeros and poles. The digital filter keeps the analogue gain at 0 Hz as numS.last /
/// product(1 - s / p) states it, so denS must be monic.
/// @param numS, denS  polynomials in s, highest power first
/// @param Ts          sampling period, s
/// @param[out] b, a   as many coefficients as the longer polynomial has
void bilinearTransform(const arma::rowvec& numS, const arma::rowvec& denS, arma::rowvec& b, arma::rowvec& a, double Ts);
