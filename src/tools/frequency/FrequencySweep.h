#pragma once

#include <vector>

/// Arithmetic of a frequency sweep: its points, their timing and its progress. Plain values, any thread.
namespace frequency_sweep {

/// What the operator is told when a sweep is refused.
struct Refusal
{
    const char* title;
    const char* text;
};

/// Start from 0.1 to 500 Hz, stop from 1 to 1000 Hz, 2 to 1000 points, in this order; the limits themselves
/// are allowed, and so is a start above the stop. NaN is refused.
/// @return null if the sweep is allowed
const Refusal* refusal(double startHz, double stopHz, int length);

/// @param logarithmic equal steps of the logarithm rather than of the frequency
/// @param length at least 2
/// @return frequencies in Hz from start to stop, downward if start is above stop
std::vector<double> points(bool logarithmic, double startHz, double stopHz, int length);

/// How one frequency is measured.
struct Timing
{
    int periods;  ///< of the sine that are waited for
    int settleMs; ///< and this time on top
    int streamHz; ///< rate of the display stream meanwhile
};

/// Chosen by the integer part of the frequency.
Timing timing(float hertz);

/// Wait between the start of the generator and the reading of the stream, ms.
unsigned long waitMs(float hertz);

/// Whole percent of a sweep of `length` points after `done` of them.
int percent(int done, int length);

} // namespace frequency_sweep
