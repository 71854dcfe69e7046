#pragma once

#include "recorder/Clock.h"
#include "stream/DisplayRecord.h"

#include <deque>
#include <mutex>
#include <string>
#include <vector>

namespace kora::recorder {

/// A contiguous piece of the stream, and what was noticed when it was fetched.
struct StreamPiece
{
    Moment taken = {}; ///< when its last record was the newest
    int rate = 0;      ///< Hz
    int records = 0;
    double gapSeconds = 0;   ///< missing before it
    bool startsAnew = false; ///< its times do not follow from those before
    std::string notice;      ///< event of the kind "stream"; empty for none
};

/// Pieces on their way from the thread that follows the stream to the one that writes. Any thread. The room is taken
/// once, so that the memory of the process stays as it is.
class PieceQueue
{
public:
    /// Nearly two seconds of the highest rate: so long may the disk stand still.
    static constexpr int capacity = 98304;

    PieceQueue() : ring(capacity) {}

    /// Whether a window of the largest size has room.
    bool hasRoom() const;
    /// The caller has asked for room before.
    void push(const StreamPiece& piece, const DisplayRecord* records);
    /// @param[out] records of the piece
    /// @return false when there is none
    bool pop(StreamPiece& piece, std::vector<DisplayRecord>& records);

private:
    mutable std::mutex mutex;
    std::vector<DisplayRecord> ring;
    std::deque<StreamPiece> pieces;
    int first = 0;
    int held = 0;
};

} // namespace kora::recorder
