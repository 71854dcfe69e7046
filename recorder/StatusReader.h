#pragma once

#include "archive/StatusSample.h"

namespace kora::recorder {

/// Reads everything but the stream, by functions that change nothing. What cannot be read keeps its last value and is
/// marked. One thread calls it.
class StatusReader
{
public:
    const archive::StatusSample& read();

private:
    void readAmplifier(int amplifier);
    /// @param result of the library, negative for a failure
    bool accept(int result, archive::UnreadableItem item);

    archive::StatusSample sample;
};

} // namespace kora::recorder
