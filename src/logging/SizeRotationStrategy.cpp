#include "logging/SizeRotationStrategy.h"

#include <QByteArray>
#include <QFile>

#include <algorithm>
#include <iostream>

namespace QsLogging {

SizeRotationStrategy::SizeRotationStrategy(qint64 maximum, int oldFiles) : maxSize(maximum), backups(oldFiles) {}

void SizeRotationStrategy::fileOpened(const QFile& file)
{
    fileName = file.fileName();
    currentSize = file.size();
}

void SizeRotationStrategy::countMessage(const QString& message)
{
    countMessage(message.toUtf8());
}

void SizeRotationStrategy::countMessage(const QByteArray& message)
{
    currentSize += message.size();
}

bool SizeRotationStrategy::needsRotation()
{
    return currentSize > maxSize;
}

void SizeRotationStrategy::rotate()
{
    if (backups == 0) {
        if (!removeFile(fileName))
            std::cerr << "QsLog: backup delete failed " << qPrintable(fileName) << std::endl;
        return;
    }

    for (int number = lastMovableBackup(); number >= 1; --number) {
        const QString from = backupName(number);
        const QString to = backupName(number + 1);
        removeFile(to);
        if (!renameFile(from, to))
            std::cerr << "QsLog: could not rename backup " << qPrintable(from) << " to " << qPrintable(to) << std::endl;
    }

    const QString newest = backupName(1);
    if (fileExists(newest))
        removeFile(newest);
    if (!renameFile(fileName, newest))
        std::cerr << "QsLog: could not rename log " << qPrintable(fileName) << " to " << qPrintable(newest)
                  << std::endl;
}

QIODevice::OpenMode SizeRotationStrategy::openMode()
{
    return QIODevice::Append;
}

bool SizeRotationStrategy::removeFile(const QString& path)
{
    return QFile::remove(path);
}

bool SizeRotationStrategy::fileExists(const QString& path)
{
    return QFile::exists(path);
}

bool SizeRotationStrategy::renameFile(const QString& from, const QString& to)
{
    return QFile::rename(from, to);
}

QString SizeRotationStrategy::backupName(int number) const
{
    return fileName + QStringLiteral(".%1").arg(number);
}

/// The oldest file that still has a place to move to; 0 if there is none.
int SizeRotationStrategy::lastMovableBackup()
{
    int last = 0;
    for (int number = 1; number <= backups && fileExists(backupName(number)); ++number)
        last = std::min(number, backups - 1);
    return last;
}

} // namespace QsLogging
