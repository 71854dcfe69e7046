#pragma once

#include "simulation/service/Client.h"

namespace kora::simulation {

/// What SimulationControl does, done to the served installation that this program has joined. Without the service
/// nothing happens, and what is read is 0.
class RemoteControl final : public SimulationControl
{
public:
    explicit RemoteControl(Client& joined) : client(joined) {}

    void advance(double seconds) override;
#define KORA_DECLARE(result, name, parameters, arguments) result name parameters override;
    KORA_CONTROL_OPERATIONS(KORA_DECLARE)
#undef KORA_DECLARE

private:
    Client& client;
};

} // namespace kora::simulation
