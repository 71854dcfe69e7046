#include "tools/rocking/GridScan.h"

#include <QTextStream>

namespace {

/// Independent running extremes, so that the passes over the grid are not one chain of dependent comparisons.
constexpr int lanes = 16;
static_assert(grid_scan::points % lanes == 0);

struct Extremes
{
    float minimum;
    float maximum;
};

/// Least and greatest value; NaN is passed over.
Extremes extremes(const float* values)
{
    float low[lanes];
    float high[lanes];
    for (int lane = 0; lane < lanes; ++lane) {
        low[lane] = 100000;
        high[lane] = -1e6f;
    }
    for (int i = 0; i < grid_scan::points; i += lanes) {
        for (int lane = 0; lane < lanes; ++lane) {
            const float value = values[i + lane];
            low[lane] = value < low[lane] ? value : low[lane];
            high[lane] = value > high[lane] ? value : high[lane];
        }
    }
    Extremes all = {low[0], high[0]};
    for (int lane = 1; lane < lanes; ++lane) {
        all.minimum = low[lane] < all.minimum ? low[lane] : all.minimum;
        all.maximum = high[lane] > all.maximum ? high[lane] : all.maximum;
    }
    return all;
}

} // namespace

double grid_scan::lineVolts(int line, double start, double span)
{
    return line / 63.0 * span + start;
}

void grid_scan::normalise(const float* raw, float* normalised)
{
    const Extremes found = extremes(raw);
    const float span = found.maximum - found.minimum;
    for (int i = 0; i < points; ++i)
        normalised[i] = (raw[i] - found.minimum) / span;
}

QString grid_scan::header(const QString& dateAndTime, const QString& host)
{
    return QStringLiteral("Zenthic KORA\r\n"
                          "Kinetic Orbit Rectification Array\r\n"
                          "\r\n"
                          "Time and Date: ") +
           dateAndTime + QStringLiteral("\r\nHost Name: ") + host + QStringLiteral("\r\nch0,ch1,I0\r\n");
}

void grid_scan::writeRows(QTextStream& stream, const Range& range, const float* raw)
{
    for (int i = 0; i < side; ++i) {
        const double x = lineVolts(i, range.xStart, range.xSpan);
        for (int j = 0; j < side; ++j) {
            stream << x << "," << lineVolts(j, range.yStart, range.ySpan) << "," << raw[i * side + j] << "\r\n";
        }
    }
}
