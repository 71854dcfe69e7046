#pragma once

#include <stdexcept>

namespace kora::simulation {

/// Wrong input of the trainer; the text is one line that says what is wanted.
class InputError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

} // namespace kora::simulation
