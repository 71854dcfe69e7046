#pragma once

#include <QString>

class QTextStream;

/// Arithmetic of the walk over a grid of voltage pairs: voltages, scaling of the measured currents, saved
/// rows.
namespace grid_scan {

constexpr int side = 64;
constexpr int points = side * side;

/// The walked voltages: start and span of both outputs, V. A negative span walks downward.
struct Range
{
    double xStart;
    double xSpan;
    double yStart;
    double ySpan;
};

/// Voltage of one of the grid's 64 lines; the last line lies at start + span.
double lineVolts(int line, double start, double span);

/// Scales currents to 0 to 1 between their least and greatest value. Where all are equal, none is a number.
/// @param raw, normalised  `points` values each
void normalise(const float* raw, float* normalised);

/// Text above the rows of a saved walk, lines ended by CR LF.
/// @param dateAndTime  as it is shown, @param host  name of this machine
QString header(const QString& dateAndTime, const QString& host);

/// One row a grid point, "X volts,Y volts,current" with six significant digits and CR LF, X in the outer
/// loop.
/// @param raw  `points` values, A, that of the lines (i, j) at i * 64 + j
void writeRows(QTextStream& stream, const Range& range, const float* raw);

} // namespace grid_scan
