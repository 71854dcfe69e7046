#pragma once

#include <array>

/// Fourth-order Butterworth filters by another way than the program's: closed forms in long double, without
/// roots. Index 0 is the coefficient of the current sample, a[0] is 1.
struct ReferenceFilter
{
    std::array<long double, 5> b;
    std::array<long double, 5> a;

    /// Magnitude at a frequency in hertz.
    long double magnitude(long double hertz, long double Ts) const;
};

/// Two second-order sections in closed form, with the Q values of a fourth-order Butterworth filter.
ReferenceFilter referenceLowpass(long double fcut, long double Ts);

/// The polynomial of the second-order prototype moved to the band, with s = (1 - x) / (1 + x) expanded by
/// powers.
ReferenceFilter referenceBandpass(long double fcutLow, long double fcutHigh, long double Ts);
