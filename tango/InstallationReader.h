#pragma once

#include "tango/CallRunner.h"
#include "tango/Snapshot.h"

#include <chrono>

namespace kora {

/// A call of the control library that takes longer than this hangs.
constexpr std::chrono::milliseconds longestCall{3000};
/// How long a call may take once another one of the same poll hangs, so that a library which hangs as a whole is found
/// out in one longestCall. A call that only took longer is asked again at the next poll.
constexpr std::chrono::milliseconds nextCall{100};

/// Reads the whole state of the installation through the reading functions of the control library and the device files
/// of the amplifiers. It calls no function that commands. One thread; a hanging call costs longestCall once and is then
/// left out until it has come back.
class InstallationReader
{
public:
    explicit InstallationReader(CallRunner& calls) : calls(calls) {}

    Snapshot read();
    /// The code of the loops, and the monitor of each loop: what a command has to know at its moment.
    Reading<int> configuration();
    Reading<std::array<int, 4>> sources();

private:
    template <typename T, typename Call>
    Reading<T> call(const char* name, Call function);

    CallRunner& calls;
    std::chrono::milliseconds patience = longestCall;
    std::vector<std::string> failures;
};

/// Reads the settings file anew. Any thread.
BeamlineSettings readBeamlineSettings();

} // namespace kora
