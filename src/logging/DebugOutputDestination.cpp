#include "logging/DebugOutputDestination.h"

#include <cstdio>

namespace QsLogging {

void DebugOutputDestination::write(const LogMessage& message)
{
    std::fprintf(stderr, "%s\n", message.formatted.toLocal8Bit().constData());
    std::fflush(stderr);
}

bool DebugOutputDestination::isValid() const
{
    return true;
}

QString DebugOutputDestination::type() const
{
    return QStringLiteral("console");
}

} // namespace QsLogging
