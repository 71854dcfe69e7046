#pragma once

#include "recorder/Options.h"

namespace kora::recorder {

/// The commands on recordings that lie there. Each writes to the standard output and returns the exit status; what
/// fails is said on one line of the standard error.
int listRecordings(const Options& options);
int showSegments(const Options& options);
int verifySegments(const Options& options);
int markNow(const Options& options);
int forgetKept(const Options& options);

/// Writes a stretch of the recording to one file. @return exit status
int exportStretch(const Options& options);

} // namespace kora::recorder
