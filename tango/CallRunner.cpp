#include "tango/CallRunner.h"

#include <condition_variable>
#include <map>
#include <mutex>
#include <thread>

namespace kora {

namespace {

struct Job
{
    std::string name;
    std::function<void()> call;
    bool done = false;
    bool leftBehind = false;
};

} // namespace

/// What the threads share with the runner. It outlives the runner while a call hangs.
struct CallRunner::Shared
{
    mutable std::mutex mutex;
    std::condition_variable jobWaits;
    std::condition_variable jobEnded; ///< or was taken
    std::shared_ptr<Job> waiting;     ///< taken by the next idle thread
    int idleThreads = 0;
    bool ending = false;
    std::map<std::string, int> hanging; ///< calls left behind, by name

    void work();
};

void CallRunner::Shared::work()
{
    std::unique_lock<std::mutex> lock(mutex);
    for (;;) {
        ++idleThreads;
        jobWaits.wait(lock, [this] { return waiting || ending; });
        --idleThreads;
        if (ending)
            return;
        const std::shared_ptr<Job> job = std::move(waiting);
        waiting.reset();
        jobEnded.notify_all();
        lock.unlock();
        job->call();
        lock.lock();
        job->done = true;
        if (job->leftBehind) {
            // Its place was taken by another thread long ago.
            if (--hanging[job->name] == 0)
                hanging.erase(job->name);
            return;
        }
        jobEnded.notify_all();
    }
}

CallRunner::CallRunner() : shared(std::make_shared<Shared>()) {}

CallRunner::~CallRunner()
{
    const std::lock_guard<std::mutex> lock(shared->mutex);
    shared->ending = true;
    shared->jobWaits.notify_all();
}

CallRunner::Outcome CallRunner::run(const std::string& name, std::function<void()> call,
                                    std::chrono::milliseconds patience)
{
    const auto job = std::make_shared<Job>();
    job->name = name;
    job->call = std::move(call);

    std::unique_lock<std::mutex> lock(shared->mutex);
    if (shared->hanging.count(name))
        return Outcome::Hangs;
    // Another caller's job is taken at once, since there is an idle thread for each.
    shared->jobEnded.wait(lock, [this] { return !shared->waiting; });
    if (shared->idleThreads == 0)
        std::thread([kept = shared] { kept->work(); }).detach();
    shared->waiting = job;
    shared->jobWaits.notify_one();
    if (shared->jobEnded.wait_for(lock, patience, [&] { return job->done; }))
        return Outcome::Returned;
    job->leftBehind = true;
    ++shared->hanging[name];
    return Outcome::Hangs;
}

std::vector<std::string> CallRunner::hanging() const
{
    const std::lock_guard<std::mutex> lock(shared->mutex);
    std::vector<std::string> names;
    for (const auto& entry : shared->hanging)
        names.push_back(entry.first);
    return names;
}

} // namespace kora
