#include "simulation/service/Dispatcher.h"

#include "simulation/Installation.h"
#include "simulation/service/Parameters.h"

namespace kora::simulation {

Dispatcher::Dispatcher(Installation& installation) : library(installation), board(installation), control(installation)
{
}

bool Dispatcher::carryOut(const Request& request, Reply& reply)
{
    switch (request.operation) {
#define KORA_CARRY_OUT(target, type, name)                                                                             \
    case Operation::name: {                                                                                            \
        using Carried = Call<decltype(&type::name)>;                                                                   \
        Carried::carryOut(target, &type::name, request, reply);                                                        \
        return Carried::travels;                                                                                       \
    }
#define KORA_LIBRARY(result, name, ...) KORA_CARRY_OUT(library, ControlLibrary, name)
#define KORA_BOARD(result, name, ...) KORA_CARRY_OUT(board, AcquisitionBoard, name)
#define KORA_CONTROL(result, name, ...) KORA_CARRY_OUT(control, SimulationControl, name)
        KORA_OPERATIONS(KORA_LIBRARY)
        KORA_BOARD_OPERATIONS(KORA_BOARD)
        KORA_CONTROL_OPERATIONS(KORA_CONTROL)
#undef KORA_CONTROL
#undef KORA_BOARD
#undef KORA_LIBRARY
#undef KORA_CARRY_OUT
    case Operation::join:
        break;
    }
    return false;
}

} // namespace kora::simulation
