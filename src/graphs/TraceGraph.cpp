#include "graphs/TraceGraph.h"

#include "graphs/WideLineRasterizer.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

/// Farther out than any plot reaches; beyond it the painter's arithmetic would overflow.
constexpr double farPixel = 1e6;

bool isFinite(const QPointF& point)
{
    return std::isfinite(point.x()) && std::isfinite(point.y());
}

double devicePixelRatio(const QCPPainter* painter)
{
    return painter->device()->devicePixelRatioF();
}

bool drawsPixels(const QCPPainter* painter)
{
    return !painter->antialiasing() && !painter->modes().testFlag(QCPPainter::pmVectorized) &&
           !painter->modes().testFlag(QCPPainter::pmNonCosmetic);
}

bool isWide(const QCPPainter* painter)
{
    return painter->pen().widthF() * devicePixelRatio(painter) > 1.0;
}

/// The parts of a line between points that have no place, in pixels of the device.
QVector<QVector<QPointF>> finiteParts(const QVector<QPointF>& line, double scale)
{
    QVector<QVector<QPointF>> parts(1);
    for (const QPointF& point : line) {
        if (isFinite(point))
            parts.last().append({std::clamp(point.x() * scale, -farPixel, farPixel),
                                 std::clamp(point.y() * scale, -farPixel, farPixel)});
        else if (!parts.last().isEmpty())
            parts.append(QVector<QPointF>());
    }
    return parts;
}

/// One scatter, drawn in the middle of a square picture.
QImage scatterStamp(const QCPScatterStyle& style, const QPen& pen, int reach, double scale)
{
    const int side = 2 * reach + 1;
    QImage stamp(int(std::ceil(side * scale)), int(std::ceil(side * scale)), QImage::Format_ARGB32_Premultiplied);
    stamp.setDevicePixelRatio(scale);
    stamp.fill(Qt::transparent);
    QCPPainter painter(&stamp);
    style.applyTo(&painter, pen);
    style.drawShape(&painter, reach, reach);
    return stamp;
}

/// Axes end at 1e250; half of it leaves room for a range from one end to the other.
constexpr double farValue = 4e249;

/// Grows to hold every value of the sign domain that an axis can show.
class RangeFinder
{
public:
    explicit RangeFinder(QCP::SignDomain signDomain) : signDomain(signDomain) {}

    /// @return whether the value counts
    bool add(double value)
    {
        if (!(std::abs(value) < farValue) || (signDomain == QCP::sdPositive && value <= 0) ||
            (signDomain == QCP::sdNegative && value >= 0))
            return false;
        lower = std::min(lower, value);
        upper = std::max(upper, value);
        return true;
    }
    QCPRange range(bool& found) const
    {
        found = lower <= upper;
        if (!found)
            return QCPRange();
        // An axis refuses ends of one sign whose quotient overflows; next to the far one the near one is zero.
        if (lower > 0 && std::isinf(upper / lower))
            return QCPRange(0, upper);
        if (upper < 0 && std::isinf(lower / upper))
            return QCPRange(lower, 0);
        return QCPRange(lower, upper);
    }

private:
    QCP::SignDomain signDomain;
    double lower = std::numeric_limits<double>::infinity();
    double upper = -std::numeric_limits<double>::infinity();
};

/// Infinite while no value was found.
struct Extremes
{
    double lower = std::numeric_limits<double>::infinity();
    double upper = -std::numeric_limits<double>::infinity();
};

/// Least and greatest value that an axis can show. Every trace is searched at every update, in sight or not: without
/// branches and in independent lanes it takes a quarter of the time of RangeFinder.
Extremes finiteExtremes(QCPGraphDataContainer::const_iterator point, QCPGraphDataContainer::const_iterator end)
{
    constexpr int lanes = 4;
    Extremes found[lanes];
    const auto add = [](Extremes& lane, double value) {
        const bool counts = std::abs(value) < farValue;
        const Extremes candidate = {counts ? value : Extremes().lower, counts ? value : Extremes().upper};
        lane.lower = candidate.lower < lane.lower ? candidate.lower : lane.lower;
        lane.upper = candidate.upper > lane.upper ? candidate.upper : lane.upper;
    };
    for (; end - point >= lanes; point += lanes) {
        for (int lane = 0; lane < lanes; ++lane)
            add(found[lane], (point + lane)->value);
    }
    for (; point != end; ++point)
        add(found[0], point->value);
    for (int lane = 1; lane < lanes; ++lane) {
        found[0].lower = std::min(found[0].lower, found[lane].lower);
        found[0].upper = std::max(found[0].upper, found[lane].upper);
    }
    return found[0];
}

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
    // The container is ordered by keys: the first and the last one that count are the ends.
    RangeFinder finder(signDomain);
    const auto begin = mDataContainer->constBegin();
    const auto end = mDataContainer->constEnd();
    auto point = begin;
    while (point != end && !finder.add(point->key))
        ++point;
    if (point != end) {
        auto last = end - 1;
        while (!finder.add(last->key))
            --last;
    }
    return finder.range(foundRange);
}

QCPRange TraceGraph::getValueRange(bool& foundRange, QCP::SignDomain signDomain, const QCPRange& keyRange) const
{
    const bool restricted = keyRange != QCPRange();
    RangeFinder finder(signDomain);
    if (!restricted && signDomain == QCP::sdBoth) {
        const Extremes found = finiteExtremes(mDataContainer->constBegin(), mDataContainer->constEnd());
        finder.add(found.lower);
        finder.add(found.upper);
        return finder.range(foundRange);
    }
    for (auto point = mDataContainer->constBegin(); point != mDataContainer->constEnd(); ++point) {
        if (!restricted || keyRange.contains(point->key))
            finder.add(point->value);
    }
    return finder.range(foundRange);
}

void TraceGraph::drawLinePlot(QCPPainter* painter, const QVector<QPointF>& lines) const
{
    applyDefaultAntialiasingHint(painter);
    if (!drawsPixels(painter) || painter->pen().style() != Qt::SolidLine) {
        QCPGraph::drawLinePlot(painter, lines);
        return;
    }
    if (!isWide(painter)) {
        for (const QVector<QPointF>& part : finiteParts(lines, 1.0))
            drawPolyline(painter, part);
        return;
    }
    const double scale = devicePixelRatio(painter);
    const QRect clip = clipRect();
    const QRect deviceClip(QPoint(int(clip.left() * scale), int(clip.top() * scale)), clip.size() * scale);
    const QPen pen = painter->pen();
    painter->save();
    painter->scale(1 / scale, 1 / scale);
    painter->setPen(Qt::NoPen);
    painter->setBrush(pen.color());
    for (const QVector<QPointF>& part : finiteParts(lines, scale))
        painter->drawRects(rasterizeWideLine(part.constData(), part.size(), pen.widthF() * scale, deviceClip));
    painter->restore();
}

void TraceGraph::drawScatterPlot(QCPPainter* painter, const QVector<QPointF>& scatters,
                                 const QCPScatterStyle& style) const
{
    applyScattersAntialiasingHint(painter);
    style.applyTo(painter, mPen);
    if (!drawsPixels(painter) || !isWide(painter)) {
        QCPGraph::drawScatterPlot(painter, scatters, style);
        return;
    }
    const int reach = int(std::ceil(style.size() / 2 + painter->pen().widthF())) + 1;
    const QImage stamp = scatterStamp(style, mPen, reach, devicePixelRatio(painter));
    const QRectF seen = QRectF(clipRect()).adjusted(-reach, -reach, reach, reach);
    for (const QPointF& scatter : scatters) {
        if (seen.contains(scatter))
            painter->drawImage(QPoint(qRound(scatter.x()) - reach, qRound(scatter.y()) - reach), stamp);
    }
}
