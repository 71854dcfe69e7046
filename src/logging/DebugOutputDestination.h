#pragma once

#include "logging/Destination.h"

namespace QsLogging {

/// Prints each line to stderr in the local 8-bit encoding.
class DebugOutputDestination : public Destination
{
public:
    void write(const LogMessage& message) override;
    bool isValid() const override;
    QString type() const override; ///< "console"
};

} // namespace QsLogging
