#include "recorder/BeamWatch.h"

#include <algorithm>

namespace kora::recorder {

void BeamWatch::look(const DisplayRecord* records, int number, int rate,
                     const std::function<void(bool isLost, std::int64_t index)>& changed)
{
    if (!(threshold > 0))
        return;
    // A millisecond, so that a single spike is no loss.
    const std::int64_t needed = std::max<std::int64_t>(3, rate / 1000);
    for (int i = 0; i < number; ++i) {
        const bool isLow = !(records[i].int1 >= threshold);
        if (!known) {
            known = true;
            lost = isLow;
        }
        opposite = isLow != lost ? opposite + 1 : 0;
        if (opposite < needed)
            continue;
        lost = isLow;
        opposite = 0;
        changed(lost, i - needed + 1);
    }
}

} // namespace kora::recorder
