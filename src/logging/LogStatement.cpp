#include "logging/LogStatement.h"

#include "logging/LogMessage.h"
#include "logging/Logger.h"

#include <QDateTime>

#include <exception>
#include <iostream>

namespace QsLogging {

LogStatement::LogStatement(int severity) : level(severity), debug(&buffer) {}

LogStatement::~LogStatement()
{
    try {
        Logger::instance().pushMessage(LogMessage(buffer, QDateTime::currentDateTimeUtc(), level));
    } catch (const std::exception& failure) {
        std::cerr << "QsLog: could not log a message: " << failure.what() << std::endl;
    } catch (...) {
        std::cerr << "QsLog: could not log a message" << std::endl;
    }
}

} // namespace QsLogging
