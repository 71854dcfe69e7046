#pragma once

#include "stream/DisplayRecord.h"

#include <map>
#include <string>

namespace kora::simulation {

/// Faults that are injected into the installation.
class Faults
{
public:
    /// @param times calls that fail from now on, 0 none, -1 all
    void failFunction(const std::string& name, int times);
    /// Whether this call of the operation fails; counts it.
    bool takes(const char* name);
    /// Operations that fail, and how many times more; -1 until told otherwise.
    const std::map<std::string, int, std::less<>>& failures() const { return failing; }

    /// Records by which each block of the stream falls short.
    void truncateBlocks(int records) { missing = records; }
    int missingRecords() const { return missing; }
    /// What is delivered of a block of `count` records.
    int delivered(int count) const;

    void setGarbage(bool on) { garbage = on; }
    bool isGarbage() const { return garbage; }
    /// Replaces a block, at any address, by values that no beam has, while garbage is on.
    void spoil(void* block, int count) const;

private:
    std::map<std::string, int, std::less<>> failing;
    int missing = 0;
    bool garbage = false;
};

} // namespace kora::simulation
