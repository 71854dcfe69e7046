#pragma once

#include "double/KoralinkDouble.h"

#include <map>
#include <mutex>
#include <set>

namespace koralink_double {

/// What both halves of the double share, under one lock.
struct Double
{
    std::recursive_mutex mutex;
    Answers answers;
    std::vector<Call> calls;
    std::map<std::string, int> failures;
    std::set<std::string> absentDevices;
    std::map<int, std::string> descriptors;
    /// Told of every call as it is made, under the lock; null for nothing.
    std::function<void(const Call&)> onCall;

    static Double& instance();

    /// Records a call. @return -1 if it is to fail, 0 otherwise
    int record(const std::string& name, std::vector<double> arguments = {}, std::vector<std::string> texts = {});
};

} // namespace koralink_double
