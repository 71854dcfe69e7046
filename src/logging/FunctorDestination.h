#pragma once

#include "logging/Destination.h"

#include <QElapsedTimer>
#include <QObject>

namespace QsLogging {

/// Hands each line to a plain function, on the logger's thread, and to whoever is connected to its signal.
class FunctorDestination : public QObject, public Destination
{
    Q_OBJECT

public:
    using LogFunction = void (*)(const LogMessage& message);

    /// @param function  called for every line; may be null
    explicit FunctorDestination(LogFunction function);

    void write(const LogMessage& message) override;
    bool isValid() const override;
    QString type() const override; ///< "functor"

signals:
    /// Emitted on the logger's thread for every line above trace: trace never reaches a window.
    void logMessageReady(QsLogging::LogMessage message);

private:
    void pause();

    LogFunction function;
    QElapsedTimer slice; ///< since the first line of the present time slice; of the logger's thread
    int emittedInSlice = 0;
};

} // namespace QsLogging
