#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace kora {

/// Makes calls that may never return, without waiting for them for ever. Each call runs on a thread of its own pool;
/// one that does not return in time is left behind with its thread, and its name is refused until it comes back.
///
/// All members may be called from any thread. A call that was left behind goes on after the runner is gone: it must own
/// all that it writes to.
class CallRunner
{
public:
    enum class Outcome
    {
        Returned, ///< the call has ended
        Hangs,    ///< it did not end in time, or an earlier one of the same name has not ended yet
    };

    CallRunner();
    ~CallRunner();
    CallRunner(const CallRunner&) = delete;
    CallRunner& operator=(const CallRunner&) = delete;

    /// @param name tells calls apart: usually the function of the library
    /// @param patience how long the caller waits
    Outcome run(const std::string& name, std::function<void()> call, std::chrono::milliseconds patience);

    /// Names of the calls that have not come back, in alphabetical order, each once.
    std::vector<std::string> hanging() const;

private:
    struct Shared;
    std::shared_ptr<Shared> shared;
};

} // namespace kora
