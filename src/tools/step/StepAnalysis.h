#pragma once

#include <vector>

/// Arithmetic of the step response: levels, crossings and times of a sampled step. Plain values in and out.
namespace step_analysis {

struct Result
{
    double low;  ///< level before the step: mean of the lowest tenth of the samples
    double high; ///< level after the step: mean of the highest tenth
    double dy;   ///< high - low
    int iLow;    ///< last sample before the response exceeds 10 % of the rise
    int iHigh;   ///< last sample before it exceeds 90 %
    int iStim;   ///< last sample before the stimulus exceeds half of the step; -1 if the first one does
    double tLow; ///< times of these samples from the first one, s
    double tHigh;
    double tStim;
    double tDead;   ///< tLow - tStim
    double tSettle; ///< tHigh - tLow
};

/// True when the response falls as the stimulus rises: their mean product over the first 100 samples is
/// greater than over all samples.
bool isInverted(const std::vector<double>& response, const std::vector<double>& stimulus);

/// @param response, stimulus  samples of a rising response and of the output that causes it, of equal length,
/// at least one
/// @param bias, step  what the output was told, V; the stimulus edge is searched at bias + 0.5 * step
/// @param rateHz  samples a second
/// A crossing that is not found counts as the last sample.
Result analyse(const std::vector<double>& response, const std::vector<double>& stimulus, double bias, double step,
               double rateHz);

} // namespace step_analysis
