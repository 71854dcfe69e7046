#include "tango/DisplayWindow.h"

#include "hardware/koralink.h"
#include "tango/InstallationReader.h"

#include <memory>

namespace kora {

DisplayWindow fetchWindow(CallRunner& calls, int records, std::chrono::milliseconds patience)
{
    // Owned by the calls, which may write into it after this function has given up.
    struct Answer
    {
        std::vector<DisplayRecord> records;
        int delivered = -1;
        int rate = 0;
        int rateResult = -1;
    };
    const auto answer = std::make_shared<Answer>();
    answer->records.resize(std::size_t(records));

    DisplayWindow window;
    ::gettimeofday(&window.time, nullptr);
    const auto fetched = calls.run(
        "getBuffer", [answer] { answer->delivered = ::getBuffer(answer->records.data(), int(answer->records.size())); },
        patience);
    if (fetched != CallRunner::Outcome::Returned || answer->delivered != records)
        return window;
    const auto asked = calls.run(
        "getDisplayFreq",
        [answer] {
            unsigned char filter = 0;
            answer->rateResult = ::getDisplayFreq(&answer->rate, &filter);
        },
        patience);
    window.records = std::move(answer->records);
    window.valid = true;
    if (asked == CallRunner::Outcome::Returned && answer->rateResult >= 0 && answer->rate > 0)
        window.rate = answer->rate;
    window.settings = readBeamlineSettings();
    return window;
}

} // namespace kora
