#pragma once

#include "simulation/service/Parameters.h"
#include "simulation/service/StreamReader.h"

#include <sys/types.h>

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>

namespace kora::simulation {

/// This program's place in a served installation. All members may be called from any thread. When the service ends or
/// does not answer, every call fails within a second; one that has ended stays so, one that was stopped may go on.
class Client
{
public:
    /// What became of an attempt to join.
    enum class Outcome
    {
        Joined,
        NotServed,
        NoAnswer ///< served, but stopped, of another version, or not for this user
    };
    /// @param name of the served installation; @param[out] client where joined
    static Outcome join(const std::string& name, std::unique_ptr<Client>& client);

    /// Has an operation carried out by the service. @return `failure` if that cannot be had
    template <typename Target, typename Result, typename... Arguments>
    Result call(Operation operation, Result (Target::*)(Arguments...), Result failure, Given<Arguments>... arguments)
    {
        using Carried = Call<Result (Target::*)(Arguments...)>;
        Request request = {};
        request.operation = operation;
        Carried::pack(request, arguments...);
        Reply reply;
        return exchange(request, reply) ? Carried::unpack(reply, arguments...) : failure;
    }
    /// The same for an operation without a result, which a missing service leaves undone.
    template <typename Target, typename... Arguments>
    void call(Operation operation, void (Target::*)(Arguments...), Given<Arguments>... arguments)
    {
        Request request = {};
        request.operation = operation;
        Call<void (Target::*)(Arguments...)>::pack(request, arguments...);
        Reply reply;
        exchange(request, reply);
    }

    /// As getBuffer(). @return records delivered, negative on a failure
    int newestRecords(void* destination, int count);
    /// The same, when as many records as asked for exist since the last setting of the rate, as a read of the device
    /// file has it. @return records delivered, -1 without the service
    int awaitedRecords(void* destination, int count);
    /// @param device index in the order of devicePaths; none is present without the service
    bool isDevicePresent(int device);

    /// In a forked child, whose parent's this is: closes the connection without a word to the service.
    void abandon();

private:
    explicit Client(int socket);
    bool isServiceAtWork();
    bool exchange(Request& request, Reply& reply);
    bool converse(const Request& request, Reply& reply, std::int64_t deadline);
    bool receiveStream();
    bool ownsDescriptor() const;

    const int fd;
    ino_t inode = 0; ///< of the socket: the program may close descriptors that it does not know
    std::unique_ptr<StreamReader> stream;
    std::atomic<bool> ended{false}; ///< the connection is gone

    std::mutex mutex; ///< guards what follows
    std::condition_variable turn;
    bool inUse = false;
    std::int64_t givenUpAt = -1; ///< heartbeat of the service when it last kept a call waiting for too long
    std::uint64_t sequence = 0;
};

} // namespace kora::simulation
