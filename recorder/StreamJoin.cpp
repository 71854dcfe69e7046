#include "recorder/StreamJoin.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace kora::recorder {

namespace {

bool isSame(const DisplayRecord& a, const DisplayRecord& b)
{
    return std::memcmp(&a, &b, sizeof a) == 0;
}

} // namespace

int StreamJoin::fresh(const DisplayRecord* window, int count, double expected) const
{
    if (known.empty() || count < 1)
        return -1;
    const bool standsStill = count > 1 && isSame(window[count - 1], window[count - 2]);
    if (standsStill && endsAt(window, count - 1))
        return 0;
    int best = -1;
    for (int place = count - 1; place >= 0; --place) {
        const int candidate = count - 1 - place;
        if (best >= 0 && std::fabs(candidate - expected) >= std::fabs(best - expected)) {
            if (candidate > expected)
                break;
            continue;
        }
        if (isSame(window[place], known.back()) && endsAt(window, place))
            best = candidate;
    }
    return best;
}

bool StreamJoin::endsAt(const DisplayRecord* window, int place) const
{
    const std::size_t compared = std::min(known.size(), std::size_t(place) + 1);
    return std::memcmp(window + std::size_t(place) + 1 - compared, known.data() + known.size() - compared,
                       compared * sizeof(DisplayRecord)) == 0;
}

void StreamJoin::follow(const DisplayRecord* records, int count)
{
    if (count >= comparedRecords) {
        known.assign(records + count - comparedRecords, records + count);
        return;
    }
    known.insert(known.end(), records, records + count);
    if (known.size() > comparedRecords)
        known.erase(known.begin(), known.end() - comparedRecords);
}

} // namespace kora::recorder
