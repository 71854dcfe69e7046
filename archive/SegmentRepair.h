#pragma once

#include <string>

namespace kora::archive {

/// Makes a segment whose writer was killed readable for everyone again: the mark of the writer goes, all columns get
/// the length of the shortest, and the overviews are completed. Does nothing to a file that was closed.
/// @return whether there was anything to repair
/// @throw hdf5::Error when the file cannot be repaired
bool repairSegment(const std::string& path);

/// Whether others can open the file as it is; a file that is being written counts as one that they cannot.
bool opensPlainly(const std::string& path);

} // namespace kora::archive
