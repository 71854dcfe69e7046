#pragma once

#include "recorder/StreamFollower.h"

#include <atomic>
#include <thread>

namespace kora::recorder {

/// Follows the stream on a thread of its own, so that neither the disk nor a slow status call makes a gap.
class FollowingThread
{
public:
    FollowingThread(const Clock& clock, PieceQueue& queue);
    ~FollowingThread();
    FollowingThread(const FollowingThread&) = delete;
    FollowingThread& operator=(const FollowingThread&) = delete;

    /// Fetches what is there, and ends the thread.
    void stop();

private:
    void run();

    StreamFollower follower;
    std::atomic<bool> stopWanted{false};
    std::thread thread;
};

} // namespace kora::recorder
