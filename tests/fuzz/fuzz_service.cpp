// Requests of programs and commands of consoles as a service takes them: whatever they say, the installation bears it.

#include "simulation/Installation.h"
#include "simulation/console/Commands.h"
#include "simulation/service/Dispatcher.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

using namespace kora::simulation;

namespace {

/// Bytes of one request of the input: the operation and its arguments. The rest is what every request must have.
constexpr std::size_t stepBytes = 2 + requestPayload;
/// A request of this operation is a line of a console instead, which its arguments hold.
constexpr std::uint16_t consoleLine = 999;

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const MonotonicClock clock;
    static Installation installation(clock, 1000);
    static Dispatcher dispatcher(installation);
    installation.useDrivenClock();
    installation.reset();
    for (; size >= stepBytes; data += stepBytes, size -= stepBytes) {
        Request request = {};
        std::uint16_t operation;
        std::memcpy(&operation, data, sizeof operation);
        std::memcpy(request.payload, data + sizeof operation, requestPayload);
        if (operation == consoleLine) {
            const char* const text = reinterpret_cast<const char*>(request.payload);
            answerTo(std::string(text, strnlen(text, requestPayload)) + '\n', installation);
            continue;
        }
        request.operation = Operation(operation);
        Reply reply = {};
        dispatcher.carryOut(request, reply);
    }
    // Still an installation: the stream is as long as ever, and the beam can be switched on again.
    static DisplayRecord block[DisplayStream::largestBlock];
    installation.setGarbageBlocks(false);
    installation.truncateBlocks(0);
    if (installation.newestRecords(block, DisplayStream::largestBlock) != DisplayStream::largestBlock)
        std::abort();
    installation.advance(0.01);
    return 0;
}
