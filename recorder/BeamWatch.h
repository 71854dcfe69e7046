#pragma once

#include "stream/DisplayRecord.h"

#include <cstdint>
#include <functional>

namespace kora::recorder {

/// Sees the beam go and come by the intensity of BPM1, to the sample.
class BeamWatch
{
public:
    /// @param threshold A; 0 or less watches nothing
    void setThreshold(double amps) { threshold = amps; }

    /// @param lost called as (isLost, index) for each change; the index of its first sample counts from the first
    /// record of this call and may lie before it
    void look(const DisplayRecord* records, int number, int rate,
              const std::function<void(bool isLost, std::int64_t index)>& changed);

private:
    double threshold = 0;
    bool known = false;
    bool lost = false;
    /// Samples in a row that say the opposite.
    std::int64_t opposite = 0;
};

} // namespace kora::recorder
