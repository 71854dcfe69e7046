#pragma once

#include <vector>

class QIODevice;

/// One point of an exported transfer function.
struct FrequencyPoint
{
    double hertz;
    double magnitude;
    double phaseDeg;
};

/// Writes an export with LF line ends: header, then one line a point with six significant digits.
/// @param scaled the magnitude is a ratio of micrometres
void writeFrequencyCsv(QIODevice& device, bool scaled, const std::vector<FrequencyPoint>& points);
