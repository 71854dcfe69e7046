#pragma once

#include "stream/DisplayRecord.h"
#include "stream/PlotData.h"

/// Magnitude of a complex value as FFTW stores it: c[0] the real, c[1] the imaginary part.
double fftw_abs(double* c);

struct SpectrumSettings
{
    int length;    ///< points of the transform; less than one gives an empty spectrum
    int slot;      ///< of the record, 0 to 31
    double factor; ///< applied to the slot
    bool removeDC; ///< subtract the mean before the transform
    int rate;      ///< records per second
};

/// Fills the amplitude spectrum of the newest records: bin k has the key rate * k / length in whole hertz and the
/// value |X[k]| / length, with no window function and no factor for the folded half. Of bins that share a key the
/// highest stays. Records that a block shorter than the transform does not have count as zero. GUI thread only, as
/// FFTW makes its plans without a lock; plan and arrays live for this call.
void computeSpectrum(const DisplayRecord* block, int count, const SpectrumSettings& settings, QCPDataMap* map);
