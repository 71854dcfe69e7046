#pragma once

#include "simulation/AcquisitionBoard.h"
#include "simulation/ControlLibrary.h"
#include "simulation/Installation.h"
#include "simulation/service/RemoteControl.h"

#include <memory>

namespace kora::simulation {

/// The installation that this process works on: a served one that it has joined, or one of its own. Made at the first
/// use and never destroyed; a forked child chooses anew where its parent had joined. All members may be called from any
/// thread.
class Access
{
public:
    /// On an installation of this process.
    explicit Access(int displayRate);
    /// On a served one.
    explicit Access(std::unique_ptr<Client> joined);

    /// Carries out an operation here, or has the service do it. @param failure the result without the service
    template <typename Target, typename Result, typename... Arguments>
    Result perform(Operation operation, Result (Target::*member)(Arguments...), Result failure,
                   Given<Arguments>... arguments)
    {
        if (!client)
            return (target(static_cast<Target*>(nullptr)).*member)(arguments...);
        if constexpr (Call<Result (Target::*)(Arguments...)>::travels)
            return client->call(operation, member, failure, arguments...);
        else
            return client->newestRecords(arguments...);
    }

    /// As Installation::awaitedRecords(); negative when the service is gone.
    int awaitedRecords(void* destination, int count);
    bool isDevicePresent(int device);
    SimulationControl& control();

    /// In a forked child. @return whether it must choose anew
    bool abandonInChild();

private:
    struct Own
    {
        explicit Own(int displayRate) : installation(clock, displayRate) {}

        MonotonicClock clock;
        Installation installation;
        ControlLibrary library{installation};
        AcquisitionBoard board{installation};
    };
    ControlLibrary& target(ControlLibrary*) { return own->library; }
    AcquisitionBoard& target(AcquisitionBoard*) { return own->board; }

    std::unique_ptr<Own> own;
    std::unique_ptr<Client> client;
    std::unique_ptr<RemoteControl> remote;
};

/// Chooses at the first call, by KORA_SIMULATION: the served installation of that name, which must exist, "default" if
/// it is not set or empty and that one is served, else an installation of this process, as for "own". Ends the process
/// with status 127 and a line on stderr where the name is not served.
Access& access();

SimulationControl& accessControl();

/// Before the first use: whether it would lead to an installation of this process.
bool isOwnExpected();

} // namespace kora::simulation
