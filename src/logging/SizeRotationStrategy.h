#pragma once

#include "logging/RotationStrategy.h"

namespace QsLogging {

/// Begins a new file once the lines, without their line ends, exceed a size, and keeps old files beside it as
/// NAME.1 (the newest), NAME.2, ...
class SizeRotationStrategy : public RotationStrategy
{
public:
    /// @param maxSize  bytes that a file may hold; exactly so many do not rotate yet
    /// @param backups  old files kept; 0 removes the full file
    SizeRotationStrategy(qint64 maxSize, int backups);

    void fileOpened(const QFile& file) override;
    void countMessage(const QString& message) override;
    void countMessage(const QByteArray& message) override;
    bool needsRotation() override;
    /// Failures are reported to std::cerr, and the rest is tried nevertheless.
    void rotate() override;
    QIODevice::OpenMode openMode() override;

protected:
    virtual bool removeFile(const QString& path);
    virtual bool fileExists(const QString& path);
    virtual bool renameFile(const QString& from, const QString& to);

private:
    QString backupName(int number) const;
    int lastMovableBackup();

    QString fileName;
    qint64 currentSize = 0;
    qint64 maxSize;
    int backups;
};

} // namespace QsLogging
