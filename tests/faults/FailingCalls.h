#pragma once

/// What a test tells the library of failing_calls.cpp, which is loaded before all others.
namespace failing_calls {

enum Kind
{
    NoRoom,      ///< ENOSPC
    DiskError,   ///< EIO
    Refused,     ///< EACCES
    Short,       ///< a write takes half of its bytes, a read gives half
    Interrupted, ///< EINTR, the call repeated succeeds
    KindCount
};

/// Whether the library is there.
bool isLoaded();

/// From now on counts the system calls on files whose path begins with one of the two texts, and lets one of them fail.
/// Once one has failed, the next ftruncate() is interrupted once. @param number of the call, from 1; 0 lets all succeed
void begin(const char* firstPath, const char* secondPath, int number, Kind kind);
/// Ends that. @return how many calls were counted
int end();
/// Name of the function that failed last since begin(), and the path that it was called for; empty if none did.
const char* failedFunction();
const char* failedPath();

} // namespace failing_calls
