#pragma once

#include "simulation/Clock.h"
#include "simulation/Faults.h"
#include "simulation/FixedStepClock.h"
#include "simulation/Plant.h"
#include "simulation/Rates.h"
#include "simulation/SimulationControl.h"
#include "simulation/StreamConditions.h"

#include <mutex>
#include <optional>

namespace kora::simulation {

/// The four device files; the index is the device's number everywhere in the simulation.
constexpr const char* devicePaths[] = {streamDevicePath, amplifierDevicePath[0], amplifierDevicePath[1],
                                       outputDevicePath};
constexpr int deviceCount = 4;
/// Part of an advance during which other callers wait, s.
constexpr double longestSliceS = 0.1;

/// One plant under one lock, kept up to the clock by every call; no thread runs it. All members may be
/// called from any thread.
class Installation final : public SimulationControl
{
public:
    /// @param clock outlives the installation; @param displayRate of the stream at power-on, Hz
    Installation(const Clock& clock, int displayRate);

    /// Runs one operation on the plant of this moment. @param name under which failures are injected
    /// @param act called as act(Plant&), returns the operation's result
    /// @return -1 on an injected failure, which calls nothing
    template <typename Act>
    int operate(const char* name, Act act)
    {
        const std::lock_guard<std::mutex> lock(mutex);
        catchUp();
        return faults.takes(name) ? -1 : act(*plant);
    }

    /// The same for what is no operation of the library.
    template <typename Act>
    int operate(Act act)
    {
        const std::lock_guard<std::mutex> lock(mutex);
        catchUp();
        return act(*plant);
    }

    /// Statistics of the newest second.
    BPMStats statistics();

    /// Copies the newest records, the oldest first, at once.
    /// @param destination room for count * 256 bytes at any address; @return records delivered
    int newestRecords(void* destination, int count);
    /// The same, when as many records as asked for exist since the last setting of the rate. A stream of 0 Hz is
    /// not waited for, and with a driven clock the missing time is computed.
    int awaitedRecords(void* destination, int count);
    /// With a driven clock, computes what is missing until `count` records can be read, but a tenth of a second at
    /// most.
    void computeRecords(int count);
    /// Shows the stream of this moment, under the lock.
    /// @param act called as act(const DisplayStream&, const StreamConditions&, int resets), the last being the number
    /// of times that the installation was switched off and on again
    template <typename Act>
    void inspectStream(Act act)
    {
        const std::lock_guard<std::mutex> lock(mutex);
        catchUp();
        act(plant->stream(), conditions(), resets);
    }
    /// @param device index in the order of devicePaths
    bool isDevicePresent(int device);

    void useDrivenClock() override;
    void useRealClock() override;
    void advance(double seconds) override;
    double time() override;
    void setBeamOn(bool on) override;
    void kick(double xMicrometres, double yMicrometres) override;
    void setNoise(double positionMicrometres, double currentAmps) override;
    void setVibration(int line, double frequencyHz, double xMicrometres, double yMicrometres) override;
    void setDrift(double amplitudeMicrometres, double periodSeconds, double walkMicrometres) override;
    void quietBeam() override;
    void plug(int port, std::uint16_t deviceId) override;
    void setDevicePresent(const char* path, bool present) override;
    bool failFunction(const char* name, int times) override;
    void truncateBlocks(int missingRecords) override;
    void setGarbageBlocks(bool garbage) override;
    BeamPosition beamPosition() override;
    double outputVolts(int output) override;
    void reset() override;
    InstallationState state() override;
    bool connectCables(int bpm, const ElectrodeChannels& channels) override;

private:
    double runningTime() const { return double(plant->stepsDone() - historySteps) / physicsRate; }
    void catchUp();
    void ensureHistory(double seconds);
    void ensureStreamHistory(int count);
    StreamConditions conditions() const;
    int deliver(void* destination, int count);
    template <typename Act>
    auto manipulate(Act act);

    std::mutex mutex;
    const Clock& clock;
    const int displayRate;
    std::optional<Plant> plant;
    /// As every reset leaves the plant. Kept from the first one on, since its history takes a while to compute.
    std::optional<Plant> switchedOn;
    Faults faults;
    FixedStepClock debt;
    bool driven = false;
    /// Steps computed ahead of the visible time 0.
    std::int64_t historySteps = 0;
    std::array<bool, deviceCount> devicePresent = {true, true, true, true};
    int resets = 0;
};

} // namespace kora::simulation
