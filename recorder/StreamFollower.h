#pragma once

#include "recorder/PieceQueue.h"
#include "recorder/StreamJoin.h"

#include <optional>
#include <vector>

namespace kora::recorder {

/// Follows the display stream: asks for windows that overlap, and hands on what is new. One thread calls it.
class StreamFollower
{
public:
    StreamFollower(const Clock& clock, PieceQueue& queue);

    /// Asks once. Without room in the queue it asks nothing: the driver keeps the records meanwhile.
    void poll();
    /// How long to wait until the next poll: a third of the largest window at most.
    double interval() const;

private:
    void readRate();
    int askFor(int records);
    int wanted(double elapsed) const;
    void takeFirst(Moment now, int count);
    /// @param fresh new records, at the end of the window's `count`
    void handOn(StreamPiece piece, int count, int fresh);
    void noticeStandstill(Moment now);

    const Clock& clock;
    PieceQueue& queue;
    StreamJoin join;
    std::vector<DisplayRecord> window;
    int rate = 0;
    bool rateChanged = false;
    std::optional<Moment> lastTaken;
    double lastMoved = 0;
    bool stands = false;
    bool missing = false;
    std::string pendingNotice;
};

} // namespace kora::recorder
