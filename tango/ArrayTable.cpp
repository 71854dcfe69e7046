#include "tango/ArrayTable.h"

#include "stream/SignalTable.h"

#include <fftw3.h>

#include <cctype>
#include <cmath>
#include <cstring>
#include <mutex>
#include <numeric>

namespace kora {

namespace {

std::vector<double> windowTimes(const DisplayWindow& window)
{
    if (!window.valid || window.rate <= 0)
        return {};
    std::vector<double> times(window.records.size());
    for (std::size_t i = 0; i < times.size(); ++i)
        times[i] = double(i) / window.rate;
    return times;
}

std::vector<double> signalValues(const DisplayWindow& window, const StreamSignal& signal)
{
    const bool scaled = signal.scale != SignalScale::None;
    if (!window.valid || (scaled && window.settings.state != BeamlineSettings::Present))
        return {};
    const double factor = factorOf(signal.scale, window.settings.scaleX, window.settings.scaleY);
    std::vector<double> values;
    values.reserve(window.records.size());
    for (const DisplayRecord& record : window.records)
        values.push_back(factor * signal.rawValue(record));
    return values;
}

std::vector<double> spectrumFrequencies(const DisplayWindow& window)
{
    if (!window.valid || window.rate <= 0)
        return {};
    std::vector<double> frequencies(spectrumBins);
    for (std::size_t k = 0; k < frequencies.size(); ++k)
        frequencies[k] = double(window.rate) * double(k) / spectrumLength;
    return frequencies;
}

/// A signal whose spectrum is offered, under a name of its own.
struct Spectrum
{
    const char* suffix;
    const char* signal; ///< name in the table of signals
};

constexpr Spectrum spectra[] = {{"Bpm1X", "pos1X"}, {"Bpm1Y", "pos1Y"}, {"Bpm1I0", "int1"},
                                {"Bpm2X", "pos2X"}, {"Bpm2Y", "pos2Y"}, {"Bpm2I0", "int2"}};

void addWaveforms(std::vector<Array>& table)
{
    table.push_back({"WaveformTime", "Time", "Time of the records of the newest display window since its first", "s",
                     largestBlockRecords, windowTimes});
    for (const StreamSignal& signal : signalTable) {
        std::string name = signal.name;
        name[0] = char(std::toupper(static_cast<unsigned char>(name[0])));
        table.push_back({"Waveform" + name, signal.name, signal.meaning + std::string(" in the newest display window"),
                         signal.quantity.unit, largestBlockRecords,
                         [&signal](const DisplayWindow& window) { return signalValues(window, signal); }});
    }
}

void addSpectra(std::vector<Array>& table)
{
    table.push_back(
        {"SpectrumFrequency", "Frequency", "Frequencies of the spectra", "Hz", spectrumBins, spectrumFrequencies});
    for (const Spectrum& spectrum : spectra) {
        for (const StreamSignal& signal : signalTable) {
            if (std::strcmp(signal.name, spectrum.signal) != 0)
                continue;
            table.push_back({std::string("Spectrum") + spectrum.suffix, spectrum.suffix,
                             signal.meaning + std::string(": amplitude spectrum of the newest 8192 records"),
                             signal.quantity.unit, spectrumBins, [&signal](const DisplayWindow& window) {
                                 return amplitudeSpectrum(signalValues(window, signal));
                             }});
        }
    }
}

std::vector<Array> makeTable()
{
    std::vector<Array> table;
    addWaveforms(table);
    addSpectra(table);
    return table;
}

} // namespace

const std::vector<Array>& arrayTable()
{
    static const std::vector<Array> table = makeTable();
    return table;
}

const Array* findArray(const std::string& name)
{
    for (const Array& array : arrayTable()) {
        if (array.name == name)
            return &array;
    }
    return nullptr;
}

std::vector<double> amplitudeSpectrum(const std::vector<double>& values)
{
    if (values.size() < std::size_t(spectrumLength))
        return {};
    std::vector<double> input(values.end() - spectrumLength, values.end());
    const double mean = std::accumulate(input.begin(), input.end(), 0.0) / spectrumLength;
    for (double& value : input)
        value -= mean;

    static std::mutex planning;
    const std::lock_guard<std::mutex> lock(planning);
    auto* const output = fftw_alloc_complex(spectrumBins);
    const fftw_plan plan = fftw_plan_dft_r2c_1d(spectrumLength, input.data(), output, FFTW_ESTIMATE);
    fftw_execute(plan);
    std::vector<double> amplitudes(spectrumBins);
    for (std::size_t k = 0; k < amplitudes.size(); ++k)
        amplitudes[k] = std::hypot(output[k][0], output[k][1]) / spectrumLength;
    fftw_destroy_plan(plan);
    fftw_free(output);
    return amplitudes;
}

} // namespace kora
