#include "simulation/service/RemoteControl.h"

#include "simulation/Installation.h"

#include <algorithm>
#include <cmath>

namespace kora::simulation {

namespace {

template <typename Result, typename... Parameters, typename... Arguments>
Result perform(Client& client, Operation operation, Result (SimulationControl::*member)(Parameters...),
               const std::tuple<Arguments...>& arguments)
{
    return std::apply(
        [&](auto... each) {
            if constexpr (std::is_void_v<Result>)
                client.call(operation, member, each...);
            else
                return client.call(operation, member, Result{}, each...);
        },
        arguments);
}

} // namespace

#define KORA_DEFINE(result, name, parameters, arguments)                                                               \
    result RemoteControl::name parameters                                                                              \
    {                                                                                                                  \
        return perform(client, Operation::name, &SimulationControl::name, std::make_tuple arguments);                  \
    }
KORA_CONTROL_OPERATIONS(KORA_DEFINE)
#undef KORA_DEFINE

void RemoteControl::advance(double seconds)
{
    // In parts, so that nobody else waits for the whole of it.
    std::int64_t left = std::llround(seconds * physicsRate);
    while (left > 0) {
        const int slice = int(std::min(left, std::int64_t(longestSliceS * physicsRate)));
        if (client.call(Operation::computeSteps, &AcquisitionBoard::computeSteps, -1, slice) != 0)
            return;
        left -= slice;
    }
}

} // namespace kora::simulation
