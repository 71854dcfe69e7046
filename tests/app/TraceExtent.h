#pragma once

#include "stream/PlotData.h"

#include <cmath>

/// Mean and standard deviation of the values of a trace.
struct TraceExtent
{
    explicit TraceExtent(const QCPDataMap& data)
    {
        double sum = 0;
        double squares = 0;
        for (auto point = data.constBegin(); point != data.constEnd(); ++point)
            sum += point->value;
        mean = sum / data.size();
        for (auto point = data.constBegin(); point != data.constEnd(); ++point)
            squares += (point->value - mean) * (point->value - mean);
        deviation = std::sqrt(squares / data.size());
    }

    double mean = 0;
    double deviation = 0;
};
