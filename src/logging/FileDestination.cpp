#include "logging/FileDestination.h"

#include <iostream>
#include <utility>

namespace QsLogging {

FileDestination::FileDestination(const QString& filePath, RotationStrategyPtr strategy)
    : rotation(std::move(strategy)), file(filePath)
{
    if (!open()) {
        std::cerr << "QsLog: could not open log file " << qPrintable(filePath) << std::endl;
        return;
    }
    attach();
}

void FileDestination::write(const LogMessage& message)
{
    // A strategy that never saw the file open has no name to rotate. One that did goes on counting when the file
    // could not be reopened, so that the next rotation tries again.
    if (!stream.device())
        return;
    const QByteArray line = message.formatted.toUtf8();
    rotation->countMessage(line);
    if (rotation->needsRotation())
        rotate();
    if (isValid())
        stream << line << Qt::endl;
}

bool FileDestination::isValid() const
{
    return file.isOpen();
}

QString FileDestination::type() const
{
    return QStringLiteral("file");
}

bool FileDestination::open()
{
    return file.open(rotation->openMode() | QIODevice::WriteOnly | QIODevice::Text);
}

void FileDestination::attach()
{
    rotation->fileOpened(file);
    stream.setDevice(&file);
    stream.setCodec("UTF-8");
}

void FileDestination::rotate()
{
    stream.setDevice(nullptr);
    file.close();
    rotation->rotate();
    if (!open())
        std::cerr << "QsLog: could not reopen log file " << qPrintable(file.fileName()) << std::endl;
    attach();
}

} // namespace QsLogging
