#include "logging/NullRotationStrategy.h"

namespace QsLogging {

void NullRotationStrategy::fileOpened(const QFile&) {}

void NullRotationStrategy::countMessage(const QString&) {}

void NullRotationStrategy::countMessage(const QByteArray&) {}

bool NullRotationStrategy::needsRotation()
{
    return false;
}

void NullRotationStrategy::rotate() {}

QIODevice::OpenMode NullRotationStrategy::openMode()
{
    return QIODevice::Truncate;
}

} // namespace QsLogging
