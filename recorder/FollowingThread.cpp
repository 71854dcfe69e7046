#include "recorder/FollowingThread.h"

#include <chrono>

namespace kora::recorder {

FollowingThread::FollowingThread(const Clock& clock, PieceQueue& queue)
    : follower(clock, queue), thread(&FollowingThread::run, this)
{
}

FollowingThread::~FollowingThread()
{
    stop();
}

void FollowingThread::stop()
{
    stopWanted = true;
    if (thread.joinable())
        thread.join();
}

void FollowingThread::run()
{
    while (!stopWanted) {
        follower.poll();
        std::this_thread::sleep_for(std::chrono::duration<double>(follower.interval()));
    }
    follower.poll();
}

} // namespace kora::recorder
