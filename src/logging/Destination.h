#pragma once

#include "logging/LogMessage.h"

#include <QString>

#include <memory>

namespace QsLogging {

/// Where log lines go. Owned by the logger, whose thread alone calls write(), under the destination mutex.
/// A destination reports its own failures to std::cerr, since logging them would recurse.
class Destination
{
public:
    Destination() = default;
    Destination(const Destination&) = delete;
    Destination& operator=(const Destination&) = delete;
    virtual ~Destination() = default;

    virtual void write(const LogMessage& message) = 0;
    /// Whether lines can arrive anywhere.
    virtual bool isValid() const = 0;
    /// Kind of destination, by which the logger finds it.
    virtual QString type() const = 0;
};

using DestinationPtr = std::unique_ptr<Destination>;

} // namespace QsLogging
