#include "feedback/EncoderScale.h"

namespace {

constexpr double fullRange = 4294967296.0;
constexpr double halfRange = 2147483648.0;
/// Micrometres of scale per nanoradian of a count.
constexpr double scalePerNanoradian = 2147483.648;
constexpr double nanoPerMicro = 1000.0;
constexpr double perFullRange = 2.3283064365386963e-10;

} // namespace

double nanoradiansPerCount(double micrometres)
{
    return micrometres / scalePerNanoradian;
}

double scaleOfNanoradians(double nanoradiansPerCount)
{
    return halfRange / (nanoPerMicro / nanoradiansPerCount);
}

int offsetCounts(double offset, double scale, int minimum, int maximum)
{
    const double counts = 0.5 * (fullRange - offset * fullRange / scale);
    // Compared before the conversion: the counts reach beyond int, and with a scale of 0 beyond every number.
    if (counts >= maximum)
        return maximum;
    return counts > minimum ? int(counts) : minimum;
}

double offsetOfCounts(double counts, double scale)
{
    return (2.0 * counts - fullRange) * -scale * perFullRange;
}
