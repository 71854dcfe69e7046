#pragma once

#include <string>
#include <vector>

namespace kora::archive {

/// Holds a segment against the rules of its format: it opens for everyone, all columns have the same length, times
/// follow from rate and gaps, and the overviews are those of the samples.
/// @return what is wrong, one sentence each; nothing for a sound file
std::vector<std::string> checkSegment(const std::string& path);

} // namespace kora::archive
