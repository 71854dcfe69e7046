#include "stream/TraceDecoder.h"

#include "stream/GraphDataWriter.h"

#include <algorithm>

namespace {

/// Records decoded into all traces before the next ones are looked at. They lie within one page of memory, which
/// matters when the block has left the caches since the last window.
constexpr int tileRecords = 8;

double timeKey(int record, int rate)
{
    return double(float(record) / float(rate));
}

void decodeTile(const DisplayRecord* tile, int count, const double* keys, const TraceTarget& target,
                QCPGraphData* points)
{
    for (int record = 0; record < count; ++record) {
        points[record].key = keys[record];
        points[record].value = target.factor * slotValue(tile[record], target.slot);
    }
}

void decodeInTiles(const DisplayRecord* block, int count, int rate, const std::vector<TraceTarget>& targets)
{
    std::vector<QCPGraphData*> points;
    points.reserve(targets.size());
    for (const TraceTarget& target : targets)
        points.push_back(pointsForWriting(target.map, count));

    double keys[tileRecords];
    for (int first = 0; first < count; first += tileRecords) {
        const int inTile = std::min(tileRecords, count - first);
        for (int record = 0; record < inTile; ++record)
            keys[record] = timeKey(first + record, rate);
        for (std::size_t trace = 0; trace < targets.size(); ++trace)
            decodeTile(block + first, inTile, keys, targets[trace], points[trace] + first);
    }
}

void decodeUnordered(const DisplayRecord* block, int count, int rate, const TraceTarget& target)
{
    QCPGraphData* points = pointsForWriting(target.map, count);
    for (int record = 0; record < count; ++record) {
        points[record].key = timeKey(record, rate);
        points[record].value = target.factor * slotValue(block[record], target.slot);
    }
    orderAsMap(target.map);
}

} // namespace

void decodeTimeTraces(const DisplayRecord* block, int count, int rate, const std::vector<TraceTarget>& targets)
{
    // Below 2^24 records the quotients of a positive rate ascend strictly: they are in a map's order as they come.
    if (count > 0 && rate > 0) {
        decodeInTiles(block, count, rate, targets);
        return;
    }
    for (const TraceTarget& target : targets)
        decodeUnordered(block, count, rate, target);
}

void decodeCloud(const DisplayRecord* block, int count, int slotX, int slotY, double factorX, double factorY,
                 QCPDataMap* map)
{
    const int taken = std::clamp(count, 0, cloudRecords);
    const DisplayRecord* first = block + (count - taken);
    QCPGraphData* points = pointsForWriting(map, taken);
    for (int record = 0; record < taken; ++record) {
        points[record].key = factorX * slotValue(first[record], slotX);
        points[record].value = factorY * slotValue(first[record], slotY);
    }
    orderAsMap(map);
}
