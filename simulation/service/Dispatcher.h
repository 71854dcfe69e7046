#pragma once

#include "simulation/AcquisitionBoard.h"
#include "simulation/ControlLibrary.h"
#include "simulation/service/Messages.h"

namespace kora::simulation {

class Installation;

/// Carries out requests on an installation. The bytes of a request are foreign: any are borne.
class Dispatcher
{
public:
    explicit Dispatcher(Installation& installation);

    /// @param reply filled but for its sequence
    /// @return false for a request that is none of those that travel; nothing has happened then
    bool carryOut(const Request& request, Reply& reply);

private:
    ControlLibrary library;
    AcquisitionBoard board;
    SimulationControl& control;
};

} // namespace kora::simulation
