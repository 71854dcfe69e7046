// The operations of the control library as the program finds them: on the installation of this process, or on the
// served one that it has joined.

#include "simulation/boundary/Access.h"

using namespace kora::simulation;

#define KORALINK_EXPORT __attribute__((visibility("default")))

namespace {

/// One call out of its arguments.
template <typename Target, typename Result, typename... Parameters, typename... Arguments>
Result perform(Operation operation, Result (Target::*member)(Parameters...), Result failure,
               const std::tuple<Arguments...>& arguments)
{
    return std::apply([&](auto... each) { return access().perform(operation, member, failure, each...); }, arguments);
}

} // namespace

extern "C" {

KORALINK_EXPORT SimulationControl* kora_simulation_control()
{
    return &access().control();
}

#define KORA_DEFINE(result, name, failure, parameters, arguments)                                                      \
    KORALINK_EXPORT result name parameters                                                                             \
    {                                                                                                                  \
        return perform<ControlLibrary, result>(Operation::name, &ControlLibrary::name, failure,                        \
                                               std::make_tuple arguments);                                             \
    }
KORA_OPERATIONS(KORA_DEFINE)
#undef KORA_DEFINE
}
