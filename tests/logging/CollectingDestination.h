#pragma once

#include "logging/Destination.h"

#include <QStringList>

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

/// What a destination was given; outlives it and may be read from any thread.
class CollectedLines
{
public:
    void add(const QsLogging::LogMessage& message)
    {
        const std::lock_guard<std::mutex> locker(mutex);
        messages.push_back(message);
        grown.notify_all();
    }
    /// Waits until so many lines have come; false after half a minute.
    bool waitFor(std::size_t count)
    {
        std::unique_lock<std::mutex> locker(mutex);
        return grown.wait_for(locker, std::chrono::seconds(30), [&] { return messages.size() >= count; });
    }
    /// Waits until the newest line is this one.
    bool waitForText(const QString& text)
    {
        std::unique_lock<std::mutex> locker(mutex);
        return grown.wait_for(locker, std::chrono::seconds(30),
                              [&] { return !messages.empty() && messages.back().message == text; });
    }
    QStringList texts()
    {
        const std::lock_guard<std::mutex> locker(mutex);
        QStringList all;
        for (const QsLogging::LogMessage& each : messages)
            all += each.message;
        return all;
    }
    QsLogging::LogMessage first()
    {
        const std::lock_guard<std::mutex> locker(mutex);
        return messages.front();
    }

private:
    std::mutex mutex;
    std::condition_variable grown;
    std::vector<QsLogging::LogMessage> messages;
};

/// Keeps the lines, under a type of the test's choice.
class CollectingDestination : public QsLogging::Destination
{
public:
    explicit CollectingDestination(std::shared_ptr<CollectedLines> collected,
                                   const QString& typeName = QStringLiteral("collecting"))
        : lines(std::move(collected)), name(typeName)
    {
    }

    void write(const QsLogging::LogMessage& message) override { lines->add(message); }
    bool isValid() const override { return true; }
    QString type() const override { return name; }

private:
    std::shared_ptr<CollectedLines> lines;
    QString name;
};
