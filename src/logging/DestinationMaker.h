#pragma once

#include "logging/Destination.h"
#include "logging/FunctorDestination.h"

class QObject;

namespace QsLogging {

/// Makes the destinations that the logger takes.
class DestinationMaker
{
public:
    /// @param rotation  1 rotates by size; any other value keeps one file and begins it anew
    /// @param sizeInBytesToRotateAfter, oldLogsToKeep  see SizeRotationStrategy
    static DestinationPtr newFileDestination(const QString& filePath, int rotation, qint64 sizeInBytesToRotateAfter,
                                             int oldLogsToKeep);

    static DestinationPtr newDebugOutputDestination();

    /// `function` is called on the logger's thread for every line.
    static DestinationPtr newFunctorDestination(FunctorDestination::LogFunction function);

    /// Every line above trace reaches the slot on the receiver's own thread.
    /// @param slotSignature  as SLOT() gives it, taking a QsLogging::LogMessage
    static DestinationPtr newFunctorDestination(QObject* receiver, const char* slotSignature);
};

} // namespace QsLogging
