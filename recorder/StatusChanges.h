#pragma once

#include "archive/StatusSample.h"

#include <string>
#include <vector>

namespace kora::recorder {

/// Something to be written down as an event.
struct Change
{
    std::string kind; ///< "fault", "status", "configuration", "set-point", "selector", "device" or "reading"
    std::string text;
};

/// What differs between two moments, in the words of the operator interface.
std::vector<Change> changesBetween(const archive::StatusSample& before, const archive::StatusSample& now);

/// "Feedback ON" and so on.
std::string feedbackText(int status);

} // namespace kora::recorder
