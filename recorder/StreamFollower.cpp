#include "recorder/StreamFollower.h"

#include "hardware/StreamRate.h"
#include "hardware/koralink.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace kora::recorder {

namespace {

constexpr double longestInterval = 0.25;
/// Records that a window reaches farther back than the clock asks for.
constexpr int overlap = 256;
/// A stream that brings nothing for so long stands still, s.
constexpr double standstillSeconds = 2;

std::string seconds(double value)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.1f s", value);
    return text;
}

} // namespace

StreamFollower::StreamFollower(const Clock& clock, PieceQueue& queue)
    : clock(clock), queue(queue), window(largestBlockRecords)
{
}

double StreamFollower::interval() const
{
    return rate > 0 ? std::min(longestInterval, largestBlockRecords / (3.0 * rate)) : longestInterval;
}

void StreamFollower::readRate()
{
    int hertz = 0;
    unsigned char filter = 0;
    if (getDisplayFreq(&hertz, &filter) < 0 || hertz < 0)
        return;
    rateChanged = rateChanged || hertz != rate;
    rate = hertz;
    // The control library reads the rate out of this program; it follows what the library tells.
    SAMP_FREQ = hertz;
}

int StreamFollower::wanted(double elapsed) const
{
    return int(std::min(double(largestBlockRecords), std::ceil(2 * elapsed * rate) + overlap));
}

int StreamFollower::askFor(int records)
{
    return std::min(getBuffer(window.data(), records), records);
}

void StreamFollower::poll()
{
    if (!queue.hasRoom())
        return;
    readRate();
    Moment now = clock.now();
    const double elapsed = lastTaken ? now.monotonic - lastTaken->monotonic : 0;
    // A source that has to fill up its past first does so here, and not between the first record and its time.
    if (!join.knowsARecord())
        askFor(largestBlockRecords);
    const int asked = join.knowsARecord() ? wanted(elapsed) : 1;
    int count = askFor(asked);
    now = clock.now();
    if (count < 1) {
        if (!missing)
            queue.push({now, rate, 0, 0, false, "the stream cannot be read"}, window.data());
        missing = true;
        return;
    }
    if (missing)
        pendingNotice = "the stream can be read again";
    missing = false;
    if (!join.knowsARecord()) {
        takeFirst(now, count);
        return;
    }
    const auto expected = [&] { return (now.monotonic - lastTaken->monotonic) * rate; };
    int fresh = join.fresh(window.data(), count, expected());
    if (fresh < 0 && asked < largestBlockRecords) {
        count = askFor(largestBlockRecords);
        now = clock.now();
        if (count < 1)
            return;
        fresh = join.fresh(window.data(), count, expected());
    }
    if (fresh == 0) {
        noticeStandstill(now);
        return;
    }
    StreamPiece piece;
    piece.taken = now;
    piece.startsAnew = rateChanged || stands;
    if (rateChanged)
        pendingNotice = "rate " + std::to_string(rate) + " Hz";
    else if (stands)
        pendingNotice = "the stream moves again after " + seconds(now.monotonic - lastMoved);
    if (fresh < 0) {
        fresh = count;
        const double lost = now.monotonic - lastTaken->monotonic - (rate > 0 ? double(count) / rate : 0.0);
        piece.gapSeconds = stands ? 0 : std::max(lost, 0.0);
    }
    handOn(piece, count, fresh);
}

void StreamFollower::takeFirst(Moment now, int count)
{
    StreamPiece piece;
    piece.taken = now;
    piece.startsAnew = true;
    // The window's older records may be from another time or rate.
    handOn(piece, count, 1);
}

void StreamFollower::handOn(StreamPiece piece, int count, int fresh)
{
    const DisplayRecord* records = window.data() + (count - fresh);
    piece.rate = rate;
    piece.records = fresh;
    piece.notice.swap(pendingNotice);
    queue.push(piece, records);
    join.follow(records, fresh);
    lastTaken = piece.taken;
    lastMoved = piece.taken.monotonic;
    stands = false;
    rateChanged = false;
}

void StreamFollower::noticeStandstill(Moment now)
{
    if (stands || now.monotonic - lastMoved < std::max(standstillSeconds, rate > 0 ? 5.0 / rate : 0.0))
        return;
    stands = true;
    queue.push({now, rate, 0, 0, false, "the stream stands still"}, window.data());
}

} // namespace kora::recorder
