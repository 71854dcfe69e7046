#pragma once

namespace kora::simulation {

/// Seconds since some fixed moment.
class Clock
{
public:
    virtual double seconds() const = 0;

protected:
    ~Clock() = default;
};

/// The system's monotonic clock. Safe from any thread.
class MonotonicClock final : public Clock
{
public:
    double seconds() const override;
};

} // namespace kora::simulation
