#include "recorder/PieceQueue.h"

#include <algorithm>

namespace kora::recorder {

bool PieceQueue::hasRoom() const
{
    const std::lock_guard<std::mutex> lock(mutex);
    return capacity - held >= largestBlockRecords;
}

void PieceQueue::push(const StreamPiece& piece, const DisplayRecord* records)
{
    const std::lock_guard<std::mutex> lock(mutex);
    const int start = (first + held) % capacity;
    const int untilEnd = std::min(piece.records, capacity - start);
    std::copy_n(records, untilEnd, ring.begin() + start);
    std::copy_n(records + untilEnd, piece.records - untilEnd, ring.begin());
    held += piece.records;
    pieces.push_back(piece);
}

bool PieceQueue::pop(StreamPiece& piece, std::vector<DisplayRecord>& records)
{
    const std::lock_guard<std::mutex> lock(mutex);
    if (pieces.empty())
        return false;
    piece = pieces.front();
    pieces.pop_front();
    records.resize(std::size_t(piece.records));
    const int untilEnd = std::min(piece.records, capacity - first);
    std::copy_n(ring.begin() + first, untilEnd, records.begin());
    std::copy_n(ring.begin(), piece.records - untilEnd, records.begin() + untilEnd);
    first = (first + piece.records) % capacity;
    held -= piece.records;
    return true;
}

} // namespace kora::recorder
