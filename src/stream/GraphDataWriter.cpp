#include "stream/GraphDataWriter.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

/// Also false when a key is NaN.
bool isStrictlyAscending(const QCPDataMap* map)
{
    return std::adjacent_find(map->constBegin(), map->constEnd(),
                              [](const QCPGraphData& a, const QCPGraphData& b) { return !(a.key < b.key); }) ==
               map->constEnd() &&
           (map->size() != 1 || !std::isnan(map->constBegin()->key));
}

/// Orders by key and keeps the order of equal keys. Sorting places instead of points takes half the time of
/// std::stable_sort.
void sortByKey(QCPGraphData* begin, QCPGraphData* end)
{
    struct Place
    {
        double key;
        std::ptrdiff_t index;
    };
    std::vector<Place> places;
    places.reserve(std::size_t(end - begin));
    for (const QCPGraphData* point = begin; point != end; ++point)
        places.push_back({point->key, point - begin});
    std::sort(places.begin(), places.end(),
              [](const Place& a, const Place& b) { return a.key < b.key || (a.key == b.key && a.index < b.index); });
    const std::vector<QCPGraphData> unordered(begin, end);
    std::transform(places.begin(), places.end(), begin,
                   [&](const Place& place) { return unordered[std::size_t(place.index)]; });
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

QCPGraphData* pointsForWriting(QCPDataMap* map, int count)
{
    if (map->size() != count)
        map->set(QVector<QCPGraphData>(count), true);
    return &*map->begin();
}

void orderAsMap(QCPDataMap* map)
{
    if (isStrictlyAscending(map))
        return;
    QCPGraphData* const begin = &*map->begin();
    QCPGraphData* end =
        std::remove_if(begin, begin + map->size(), [](const QCPGraphData& point) { return std::isnan(point.key); });
    sortByKey(begin, end);
    end = keepLastOfEqualKeys(begin, end);
    const int kept = int(end - begin);
    if (kept < map->size()) {
        QVector<QCPGraphData> points(kept);
        std::copy(begin, end, points.begin());
        map->set(points, true);
    }
}
