#include "logging/Level.h"

#include <QObject>

namespace QsLogging {

QString levelText(int level)
{
    switch (level) {
    case TraceLevel:
        return QStringLiteral("TRACE");
    case DebugLevel:
        return QStringLiteral("DEBUG");
    case WarnLevel:
        return QStringLiteral("WARN ");
    case ErrorLevel:
        return QStringLiteral("ERROR");
    case FatalLevel:
        return QStringLiteral("FATAL");
    case OffLevel:
        return QString();
    case InfoLevel:
    default:
        return QStringLiteral("INFO ");
    }
}

QString levelName(int level)
{
    switch (level) {
    case TraceLevel:
        return QObject::tr("Trace");
    case DebugLevel:
        return QObject::tr("Debug");
    case WarnLevel:
        return QObject::tr("Warning");
    case ErrorLevel:
        return QObject::tr("Error");
    case FatalLevel:
        return QObject::tr("Fatal");
    case OffLevel:
        return QString();
    case InfoLevel:
    default:
        return QObject::tr("Info");
    }
}

} // namespace QsLogging
