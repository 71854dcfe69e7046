#include "graphs/WideLineRasterizer.h"

#include "graphs/PixelColumnMask.h"

#include <algorithm>
#include <cmath>

namespace {

/// First row or column whose centre lies at or behind the coordinate, within limits.
int firstCentre(double coordinate, int lowest, int highest)
{
    return int(std::ceil(std::clamp(coordinate, double(lowest), double(highest)) - 0.5));
}

class Strokes
{
public:
    Strokes(double width, const QRect& clip) : half(width / 2), clip(clip), ink(clip) {}

    void addSegment(QPointF from, QPointF to, bool isFirst, bool isLast)
    {
        const double length = std::hypot(to.x() - from.x(), to.y() - from.y());
        if (!(length > 0))
            return;
        const QPointF along = (to - from) * (half / length);
        const QPointF across(-along.y(), along.x());
        if (hasPrevious)
            addJoin(from, along, across);
        if (isFirst)
            from -= along;
        if (isLast)
            to += along;
        const QPointF corners[4] = {from + across, to + across, to - across, from - across};
        addConvex(corners, 4);
        previousAlong = along;
        previousAcross = across;
        hasPrevious = true;
    }

    QVector<QRect> runs() { return ink.runs(); }

private:
    /// The bevel on the outer side of the bend.
    void addJoin(const QPointF& at, const QPointF& along, const QPointF& across)
    {
        const double turn = previousAlong.x() * along.y() - previousAlong.y() * along.x();
        const double side = turn > 0 ? -1 : 1;
        const QPointF corners[3] = {at, at + side * previousAcross, at + side * across};
        addConvex(corners, 3);
    }

    void addConvex(const QPointF* corners, int count);

    double half;
    QRect clip;
    PixelColumnMask ink;
    QPointF previousAlong;
    QPointF previousAcross;
    bool hasPrevious = false;
};

void Strokes::addConvex(const QPointF* corners, int count)
{
    const auto byX = [](const QPointF& a, const QPointF& b) { return a.x() < b.x(); };
    const auto sides = std::minmax_element(corners, corners + count, byX);
    const int firstColumn = firstCentre(sides.first->x(), clip.left(), clip.right() + 1);
    const int endColumn = firstCentre(sides.second->x(), clip.left(), clip.right() + 1);
    for (int column = firstColumn; column < endColumn; ++column) {
        const double x = column + 0.5;
        double top = clip.bottom() + 1;
        double bottom = clip.top();
        for (int corner = 0; corner < count; ++corner) {
            const QPointF& a = corners[corner];
            const QPointF& b = corners[corner + 1 == count ? 0 : corner + 1];
            if ((a.x() <= x) == (b.x() <= x))
                continue;
            const double y = a.y() + (x - a.x()) * (b.y() - a.y()) / (b.x() - a.x());
            top = std::min(top, y);
            bottom = std::max(bottom, y);
        }
        const int firstRow = firstCentre(top, clip.top(), clip.bottom() + 1);
        const int endRow = firstCentre(bottom, clip.top(), clip.bottom() + 1);
        if (firstRow < endRow)
            ink.add(column, firstRow, endRow);
    }
}

} // namespace

QVector<QRect> rasterizeWideLine(const QPointF* points, int count, double width, const QRect& clip)
{
    Strokes strokes(width, clip);
    for (int point = 1; point < count; ++point)
        strokes.addSegment(points[point - 1], points[point], point == 1, point == count - 1);
    return strokes.runs();
}
