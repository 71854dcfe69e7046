#pragma once

#include "tango/CallRunner.h"
#include "tango/Snapshot.h"

#include "stream/DisplayRecord.h"

#include <vector>

namespace kora {

/// The newest window of the display stream as a client asked for it. A plain value.
struct DisplayWindow
{
    timeval time = {};
    bool valid = false;
    int rate = 0; ///< records a second; 0 where it could not be read
    std::vector<DisplayRecord> records;
    BeamlineSettings settings; ///< whose factors scale the positions
};

/// Fetches a window of so many records with its rate. A stream that comes short, a call that fails and one that hangs
/// give a window that is not valid. Any thread.
/// @param patience for each of the two calls
DisplayWindow fetchWindow(CallRunner& calls, int records, std::chrono::milliseconds patience);

} // namespace kora
