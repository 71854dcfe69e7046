#pragma once

#include "logging/Destination.h"
#include "logging/RotationStrategy.h"

#include <QFile>
#include <QTextStream>

namespace QsLogging {

/// Writes lines to a UTF-8 text file, flushed one by one, so that nothing is lost when the program dies.
class FileDestination : public Destination
{
public:
    /// Opens the file; if that fails, says so on std::cerr and stays invalid.
    FileDestination(const QString& filePath, RotationStrategyPtr rotation);

    /// The line that finds the file full becomes the first of the new one. Goes nowhere while invalid; a file that
    /// was lost in a rotation is tried again by the next one.
    void write(const LogMessage& message) override;
    bool isValid() const override; ///< whether the file is open
    QString type() const override; ///< "file"

private:
    bool open();
    void attach();
    void rotate();

    RotationStrategyPtr rotation;
    QFile file;
    QTextStream stream;
};

} // namespace QsLogging
