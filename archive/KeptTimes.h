#pragma once

#include "archive/UtcTime.h"

#include <string>
#include <vector>

namespace kora::archive {

/// A time around which the recording is kept for good.
struct KeptTime
{
    UtcNanoseconds moment;
    double seconds; ///< to either side
    std::string kind;
    std::string text;

    UtcNanoseconds from() const { return moment - nanosecondsOf(seconds); }
    UtcNanoseconds to() const { return moment + nanosecondsOf(seconds); }
};

/// The kept times of a folder: lines of a text file beside the segments, which several programs may add to. Every call
/// reads or writes the file.
class KeptTimes
{
public:
    explicit KeptTimes(const std::string& folder);

    /// Lines that make no sense are passed over.
    std::vector<KeptTime> all() const;
    /// @return false when the file cannot be written
    bool add(const KeptTime& time) const;
    /// Takes those out for which `goes` holds. @return how many, or -1 when the file cannot be written
    template <typename Goes>
    int removeIf(Goes goes) const
    {
        std::vector<KeptTime> kept;
        int removed = 0;
        for (const KeptTime& time : all()) {
            if (goes(time))
                ++removed;
            else
                kept.push_back(time);
        }
        return removed == 0 || replace(kept) ? removed : -1;
    }

private:
    bool replace(const std::vector<KeptTime>& times) const;

    std::string file;
};

} // namespace kora::archive
