#include "tools/frequency/FrequencyCsv.h"

#include <QTextStream>

void writeFrequencyCsv(QIODevice& device, bool scaled, const std::vector<FrequencyPoint>& points)
{
    QTextStream text(&device);
    text << (scaled ? "frequency [Hz], amplitude [um/um], phase [deg]" : "frequency [Hz], amplitude [um], phase [deg]")
         << '\n';
    for (const FrequencyPoint& point : points)
        text << point.hertz << ',' << point.magnitude << ',' << point.phaseDeg << '\n';
}
