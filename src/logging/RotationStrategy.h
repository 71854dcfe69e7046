#pragma once

#include <QIODevice>
#include <QString>

#include <memory>

class QByteArray;
class QFile;

namespace QsLogging {

/// Decides when a log file is full and makes room for a new one. Called by its FileDestination only.
class RotationStrategy
{
public:
    RotationStrategy() = default;
    RotationStrategy(const RotationStrategy&) = delete;
    RotationStrategy& operator=(const RotationStrategy&) = delete;
    virtual ~RotationStrategy() = default;

    /// The log file has been opened, at the start or after a rotation.
    virtual void fileOpened(const QFile& file) = 0;
    /// A line, without its line end, is about to be written.
    virtual void countMessage(const QString& message) = 0;
    virtual void countMessage(const QByteArray& message) = 0;
    virtual bool needsRotation() = 0;
    /// Moves the closed log file out of the way.
    virtual void rotate() = 0;
    /// Whether an existing file is continued or overwritten; the destination adds the rest.
    virtual QIODevice::OpenMode openMode() = 0;
};

/// One file, begun anew at each opening, that grows without bound.
class NullRotationStrategy : public RotationStrategy
{
public:
    void fileOpened(const QFile&) override {}
    void countMessage(const QString&) override {}
    void countMessage(const QByteArray&) override {}
    bool needsRotation() override { return false; }
    void rotate() override {}
    QIODevice::OpenMode openMode() override { return QIODevice::Truncate; }
};

using RotationStrategyPtr = std::unique_ptr<RotationStrategy>;

} // namespace QsLogging
