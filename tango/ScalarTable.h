#pragma once

#include "tango/Snapshot.h"

#include <functional>
#include <string>
#include <vector>

namespace kora {

enum class ScalarType
{
    Double,
    Integer,
    Boolean,
    Enumeration,
    Text
};

/// One scalar attribute of the server.
struct Scalar
{
    std::string name;
    ScalarType type;
    std::string label;
    std::string description;
    std::string unit;   ///< of doubles
    std::string format; ///< of doubles, as C's printf has it
    /// Change that is told to subscribers unless the attribute's own properties say otherwise; of doubles, in their
    /// unit.
    std::string change;
    std::vector<std::string> choices; ///< of enumerations
    /// The value of a number or a flag, or the position in the enumeration; not of texts.
    std::function<Reading<double>(const Snapshot&)> number;
    std::function<Reading<std::string>(const Snapshot&)> text;
};

/// All scalar attributes, in the order in which clients see them. Any thread.
const std::vector<Scalar>& scalarTable();

/// The four texts of the feedback's status, by PID_Status_Type, as the operator interface shows them.
extern const char* const feedbackTexts[4];

} // namespace kora
