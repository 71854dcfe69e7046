#pragma once

#include "logging/RotationStrategy.h"

namespace QsLogging {

/// One file, begun anew at each opening, that grows without bound.
class NullRotationStrategy : public RotationStrategy
{
public:
    void fileOpened(const QFile& file) override;
    void countMessage(const QString& message) override;
    void countMessage(const QByteArray& message) override;
    bool needsRotation() override;
    void rotate() override;
    QIODevice::OpenMode openMode() override;
};

} // namespace QsLogging
