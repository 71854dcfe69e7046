#pragma once

#include "tango/DisplayWindow.h"

#include <functional>
#include <string>
#include <vector>

namespace kora {

/// Records of a spectrum.
constexpr int spectrumLength = 8192;
/// Bins of a spectrum, the constant one and the highest among them.
constexpr int spectrumBins = spectrumLength / 2 + 1;

/// One array attribute of the server.
struct Array
{
    std::string name;
    std::string label;
    std::string description;
    std::string unit;
    int longest; ///< most values that it can have
    /// Values of a window. Empty where they cannot be had: the window is not valid or too short, its rate is not known,
    /// or a position lacks the factors of the settings file.
    std::function<std::vector<double>(const DisplayWindow&)> values;
};

/// All array attributes: "WaveformTime", "Waveform" and the name of each signal, "SpectrumFrequency" and the spectra.
/// Any thread.
const std::vector<Array>& arrayTable();

/// @return null for a name that no array has
const Array* findArray(const std::string& name);

/// Amplitudes |X[k]| / N of the newest N = spectrumLength values, without their mean, with no window function and no
/// factor for the folded half, as the operator interface shows them; in the unit of the values. Empty where there are
/// fewer. Any thread: it sees to FFTW's rule that one thread at a time makes plans.
std::vector<double> amplitudeSpectrum(const std::vector<double>& values);

} // namespace kora
