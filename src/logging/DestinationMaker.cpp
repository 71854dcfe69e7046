#include "logging/DestinationMaker.h"

#include "logging/DebugOutputDestination.h"
#include "logging/FileDestination.h"
#include "logging/SizeRotationStrategy.h"

#include <utility>

namespace QsLogging {

namespace {

constexpr int sizeRotation = 1;

} // namespace

DestinationPtr DestinationMaker::newFileDestination(const QString& filePath, int rotation,
                                                    qint64 sizeInBytesToRotateAfter, int oldLogsToKeep)
{
    RotationStrategyPtr strategy;
    if (rotation == sizeRotation)
        strategy = std::make_unique<SizeRotationStrategy>(sizeInBytesToRotateAfter, oldLogsToKeep);
    else
        strategy = std::make_unique<NullRotationStrategy>();
    return std::make_unique<FileDestination>(filePath, std::move(strategy));
}

DestinationPtr DestinationMaker::newDebugOutputDestination()
{
    return std::make_unique<DebugOutputDestination>();
}

DestinationPtr DestinationMaker::newFunctorDestination(FunctorDestination::LogFunction function)
{
    return std::make_unique<FunctorDestination>(function);
}

DestinationPtr DestinationMaker::newFunctorDestination(QObject* receiver, const char* slotSignature)
{
    auto destination = std::make_unique<FunctorDestination>(nullptr);
    QObject::connect(destination.get(), SIGNAL(logMessageReady(QsLogging::LogMessage)), receiver, slotSignature,
                     Qt::QueuedConnection);
    return destination;
}

} // namespace QsLogging
