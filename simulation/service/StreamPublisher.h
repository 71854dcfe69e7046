#pragma once

#include "simulation/service/StreamMemory.h"

#include <optional>

namespace kora::simulation {

class Installation;

/// The writer of the stream's shared memory. Used by one thread.
class StreamPublisher
{
public:
    /// @throw std::system_error when the memory cannot be had
    StreamPublisher();
    /// Tells the readers that the service has ended.
    ~StreamPublisher();

    /// Brings the installation up to its clock, and the memory up to the installation.
    void publish(Installation& installation);

    /// The memory's file, sealed: nobody can shrink it, or write to it but through the mapping of this process.
    int file() const { return fd; }

private:
    void writeRecords(const DisplayStream& stream, int resets);

    int fd;
    std::optional<StreamMapping> mapping;
    std::uint64_t position = 0;
    /// What was written of the present plant, and which plant that was.
    std::int64_t published = 0;
    int publishedResets = 0;
};

} // namespace kora::simulation
