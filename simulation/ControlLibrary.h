#pragma once

#include "simulation/Operations.h"

namespace kora::simulation {

class Installation;

/// The operations of the control library, carried out on an installation of this process. The members are the functions
/// of hardware/koralink.h, with their arguments and results. May be called from any thread.
class ControlLibrary
{
public:
    explicit ControlLibrary(Installation& operated) : installation(operated) {}

#define KORA_DECLARE(result, name, failure, parameters, arguments) result name parameters;
    KORA_OPERATIONS(KORA_DECLARE)
#undef KORA_DECLARE

private:
    Installation& installation;
};

} // namespace kora::simulation
