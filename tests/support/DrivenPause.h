#pragma once

#include <functional>
#include <vector>

/// Takes the place of the pauses of the measurement tools: no time passes, every pause is kept, and a test may let
/// something happen in its course.
namespace driven_pause {

/// Pauses since clear(), in microseconds.
const std::vector<unsigned long>& pauses();
void clear();
/// Called in each pause with its length in microseconds, for example to advance a driven clock. Null for nothing.
void setAction(std::function<void(unsigned long microseconds)> action);

} // namespace driven_pause
