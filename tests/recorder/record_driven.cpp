// Records the simulated installation in driven time, and keeps every record of its stream beside it, fetched apart from
// the recorder.
//
// usage: record_driven FOLDER RATE SECONDS RAW_FILE [compress]

#include "hardware/koralink.h"
#include "recorder/Recording.h"
#include "recorder/StatusReader.h"
#include "recorder/StreamFollower.h"
#include "simulation/SimulationControl.h"

#include <cstdio>
#include <cstdlib>
#include <random>

using namespace kora::recorder;

namespace {

/// 2026-11-21T21:04:58.3Z
constexpr kora::archive::UtcNanoseconds began = 1795295098300000000;

class SimulatedClock final : public Clock
{
public:
    explicit SimulatedClock(kora::simulation::SimulationControl& plant) : plant(plant) {}
    Moment now() const override
    {
        const double seconds = plant.time();
        return {seconds, began + kora::archive::nanosecondsOf(seconds)};
    }

private:
    kora::simulation::SimulationControl& plant;
};

} // namespace

int main(int argc, char** argv)
{
    kora::simulation::SimulationControl* plant = kora::simulation::findControl();
    std::FILE* raw = argc > 4 ? std::fopen(argv[4], "w") : nullptr;
    if (!plant || !raw)
        return 2;
    const int rate = std::atoi(argv[2]);
    const double seconds = std::atof(argv[3]);
    plant->useDrivenClock();
    if (setDisplayFreq(rate, 1) < 0)
        return 2;

    const SimulatedClock clock(*plant);
    RecordingOptions options;
    options.folder = argv[1];
    options.ring.segmentSeconds = 5;
    options.compress = argc > 5;
    options.settingsPath = std::getenv("KORA_SETTINGS");
    options.version = "driven";
    PieceQueue queue;
    Recording recording(clock, options, [](const std::string&) {});
    StreamFollower follower(clock, queue);
    StatusReader status;
    StreamPiece piece;
    std::vector<DisplayRecord> records;
    std::vector<DisplayRecord> apart(largestBlockRecords);
    // Windows of many sizes, some of which reach back farther than the newest known record by little.
    std::mt19937 dice(1);
    std::uniform_int_distribution<int> step(1, largestBlockRecords / 4);
    const auto total = long(rate * seconds);
    long sinceStatus = 0;
    follower.poll();
    for (long done = 0; done < total;) {
        const int fresh = step(dice);
        plant->advance(double(fresh) / rate);
        if (getBuffer(apart.data(), fresh) != fresh ||
            std::fwrite(apart.data(), sizeof(DisplayRecord), std::size_t(fresh), raw) != std::size_t(fresh))
            return 1;
        done += fresh;
        sinceStatus += fresh;
        if (dice() % 3 == 0)
            continue;
        follower.poll();
        while (queue.pop(piece, records))
            recording.take(piece, records.data());
        if (sinceStatus < rate)
            continue;
        sinceStatus = 0;
        recording.takeStatus(status.read());
        recording.flush();
    }
    follower.poll();
    while (queue.pop(piece, records))
        recording.take(piece, records.data());
    recording.finish();
    std::printf("%ld samples, %ld gaps\n", long(recording.samples()), long(recording.gaps()));
    return std::fclose(raw) == 0 ? 0 : 1;
}
