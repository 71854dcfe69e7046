#pragma once

#include "logging/Level.h"
#include "logging/LogStatement.h"
#include "logging/Logger.h"

/// How the program logs: KORA_LOG_WARN << "text" << value;
/// A suppressed statement costs one comparison and evaluates none of its arguments. A loop rather than an
/// `if`, so that an `else` behind the statement keeps its own `if`.
#define KORA_LOG(level_)                                                                                               \
    for (bool koraLogs = QsLogging::Logger::instance().currentLevel() < (level_) + 1; koraLogs; koraLogs = false)      \
    QsLogging::LogStatement(level_).stream()

#define KORA_LOG_TRACE KORA_LOG(QsLogging::TraceLevel)
#define KORA_LOG_DEBUG KORA_LOG(QsLogging::DebugLevel)
#define KORA_LOG_INFO KORA_LOG(QsLogging::InfoLevel)
#define KORA_LOG_WARN KORA_LOG(QsLogging::WarnLevel)
#define KORA_LOG_ERROR KORA_LOG(QsLogging::ErrorLevel)
#define KORA_LOG_FATAL KORA_LOG(QsLogging::FatalLevel)
