#include "graphs/TraceGraph.h"

#include <cmath>

namespace {

/// Grows to hold every finite value of the sign domain.
class RangeFinder
{
public:
    explicit RangeFinder(QCP::SignDomain signDomain) : signDomain(signDomain) {}

    void add(double value)
    {
        if (!std::isfinite(value) || (signDomain == QCP::sdPositive && value <= 0) ||
            (signDomain == QCP::sdNegative && value >= 0))
            return;
        lower = std::min(lower, value);
        upper = std::max(upper, value);
    }
    QCPRange range(bool& found) const
    {
        found = lower <= upper;
        return found ? QCPRange(lower, upper) : QCPRange();
    }

private:
    QCP::SignDomain signDomain;
    double lower = std::numeric_limits<double>::infinity();
    double upper = -std::numeric_limits<double>::infinity();
};

} // namespace

TraceGraph::TraceGraph(QCPAxis* keyAxis, QCPAxis* valueAxis) : QCPGraph(keyAxis, valueAxis) {}

QCPGraphDataContainer* TraceGraph::shareNewData()
{
    auto* data = new QCPGraphDataContainer;
    setData(QSharedPointer<QCPGraphDataContainer>(data));
    return data;
}

QCPRange TraceGraph::getKeyRange(bool& foundRange, QCP::SignDomain signDomain) const
{
    RangeFinder finder(signDomain);
    for (auto point = mDataContainer->constBegin(); point != mDataContainer->constEnd(); ++point)
        finder.add(point->key);
    return finder.range(foundRange);
}

QCPRange TraceGraph::getValueRange(bool& foundRange, QCP::SignDomain signDomain, const QCPRange& keyRange) const
{
    const bool restricted = keyRange != QCPRange();
    RangeFinder finder(signDomain);
    for (auto point = mDataContainer->constBegin(); point != mDataContainer->constEnd(); ++point) {
        if (!restricted || keyRange.contains(point->key))
            finder.add(point->value);
    }
    return finder.range(foundRange);
}
