#pragma once

#include "archive/UtcTime.h"

namespace kora::recorder {

/// One moment by two clocks: the monotonic one measures, the wall clock only names.
struct Moment
{
    double monotonic; ///< s
    archive::UtcNanoseconds wall;
};

class Clock
{
public:
    virtual ~Clock() = default;
    virtual Moment now() const = 0;
};

class SystemClock final : public Clock
{
public:
    Moment now() const override;
};

} // namespace kora::recorder
