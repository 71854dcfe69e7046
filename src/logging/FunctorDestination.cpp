#include "logging/FunctorDestination.h"

namespace QsLogging {

FunctorDestination::FunctorDestination(LogFunction receiver) : function(receiver) {}

void FunctorDestination::write(const LogMessage& message)
{
    if (function)
        function(message);
    if (message.level > TraceLevel)
        emit logMessageReady(message);
}

bool FunctorDestination::isValid() const
{
    return true;
}

QString FunctorDestination::type() const
{
    return QStringLiteral("functor");
}

} // namespace QsLogging
