#include "stream/MapFill.h"

#include <algorithm>
#include <cmath>

namespace {

bool keyLess(const QCPGraphData& a, const QCPGraphData& b)
{
    return a.key < b.key;
}

/// Of neighbours with equal keys keeps the last. @return end of what is kept
QCPGraphData* keepLastOfEqualKeys(QCPGraphData* begin, QCPGraphData* end)
{
    QCPGraphData* kept = begin;
    for (QCPGraphData* point = begin; point != end; ++point) {
        if (point + 1 == end || point->key < (point + 1)->key)
            *kept++ = *point;
    }
    return kept;
}

} // namespace

void fillAsMap(QCPDataMap* map, QVector<QCPGraphData> points)
{
    QCPGraphData* const begin = points.data();
    QCPGraphData* end = std::remove_if(begin, begin + points.size(),
                                       [](const QCPGraphData& point) { return std::isnan(point.key); });
    if (!std::is_sorted(begin, end, keyLess))
        std::stable_sort(begin, end, keyLess);
    end = keepLastOfEqualKeys(begin, end);
    points.resize(int(end - begin));
    map->set(points, true);
}
