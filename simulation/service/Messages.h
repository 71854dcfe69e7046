#pragma once

#include "simulation/AcquisitionBoard.h"
#include "simulation/Operations.h"
#include "simulation/service/ControlOperations.h"

#include <cstdint>
#include <type_traits>

/// What a program and a service say to each other: plain records of fixed size, one a packet. A program sends a
/// request and gets one reply, of the same sequence. Both sides run on one machine, so that the bytes are those of the
/// processor. The reply to `join` brings the shared memory of the stream along, as a file descriptor.
namespace kora::simulation {

#define KORA_ENUMERATE(result, name, ...) name,
enum class Operation : std::uint16_t
{
    join,
    KORA_OPERATIONS(KORA_ENUMERATE) KORA_BOARD_OPERATIONS(KORA_ENUMERATE) KORA_CONTROL_OPERATIONS(KORA_ENUMERATE)
};
#undef KORA_ENUMERATE

constexpr std::size_t requestPayload = 96;
constexpr std::size_t replyPayload = 704;

struct Request
{
    static constexpr std::uint32_t rightMagic = 0xff00cba5;
    /// Counts the changes of these records and of the tables of operations.
    static constexpr std::uint16_t rightVersion = 1;

    std::uint32_t magic;
    std::uint16_t version;
    Operation operation;
    std::uint64_t sequence;
    /// By kernelNanoseconds(). A request that is found later has been given up, and is not carried out.
    std::int64_t deadline;
    unsigned char payload[requestPayload];
};
static_assert(std::is_trivially_copyable_v<Request> && sizeof(Request) == 24 + requestPayload);

struct Reply
{
    std::uint64_t sequence;
    unsigned char payload[replyPayload];
};
static_assert(std::is_trivially_copyable_v<Reply> && sizeof(Reply) == 8 + replyPayload);

} // namespace kora::simulation
