#include "simulation/Installation.h"

#include "simulation/Operations.h"
#include "simulation/Rates.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <thread>

namespace kora::simulation {

namespace {

/// Longest time that a late call makes good, s.
constexpr double longestDebtS = 2;
/// The installation has been running for so long when the program comes, s: the largest window at the rate of
/// power-on, and a little more than the second of the statistics.
constexpr double longestHistoryS = 15;
constexpr double statisticsHistoryS = 1.1;
/// A waiting read looks again after this time at the latest, s.
constexpr double longestNapS = 0.02;

} // namespace

Installation::Installation(const Clock& plantClock, int powerOnDisplayRate)
    : clock(plantClock), displayRate(powerOnDisplayRate), plant(std::in_place, powerOnDisplayRate),
      debt(physicsRate, longestDebtS)
{
    debt.start(clock.seconds());
}

void Installation::catchUp()
{
    if (!driven)
        plant->run(debt.collect(clock.seconds()));
}

void Installation::ensureHistory(double seconds)
{
    const std::int64_t missing = std::int64_t(seconds * physicsRate) - plant->stepsDone();
    if (missing > 0) {
        plant->run(missing);
        historySteps += missing;
    }
}

void Installation::ensureStreamHistory(int count)
{
    const DisplayStream& stream = plant->stream();
    if (!stream.wasRateSet() && stream.total() < count && stream.rate() > 0)
        ensureHistory(std::min((count + 1.0) / stream.rate(), longestHistoryS));
}

BPMStats Installation::statistics()
{
    const std::lock_guard<std::mutex> lock(mutex);
    catchUp();
    ensureHistory(statisticsHistoryS);
    return plant->statistics();
}

int Installation::deliver(void* destination, int count)
{
    const int delivered = faults.delivered(count);
    plant->stream().copyNewest(destination, delivered);
    faults.spoil(destination, delivered);
    return delivered;
}

int Installation::newestRecords(void* destination, int count)
{
    const std::lock_guard<std::mutex> lock(mutex);
    catchUp();
    ensureStreamHistory(count);
    return deliver(destination, std::min(count, DisplayStream::largestBlock));
}

StreamConditions Installation::conditions() const
{
    const DisplayStream& stream = plant->stream();
    StreamConditions now = {};
    now.kept = std::min<std::int64_t>(stream.total(), DisplayStream::largestBlock);
    now.awaited = stream.wasRateSet() ? stream.sinceRateSet() : stream.total();
    now.hertz = stream.rate();
    now.missingRecords = faults.missingRecords();
    now.garbageBlocks = faults.isGarbage();
    now.drivenClock = driven;
    now.bufferFails = faults.failures().count("getBuffer") > 0;
    now.devicePresent = devicePresent;
    return now;
}

int Installation::awaitedRecords(void* destination, int count)
{
    count = std::min(count, DisplayStream::largestBlock);
    for (;;) {
        double nap = 0;
        {
            const std::lock_guard<std::mutex> lock(mutex);
            catchUp();
            ensureStreamHistory(count);
            if (driven)
                plant->run(conditions().missingSteps(count));
            const std::int64_t missing = conditions().missingSteps(count);
            if (missing == 0)
                return deliver(destination, count);
            nap = std::min(double(missing) / physicsRate, longestNapS);
        }
        std::this_thread::sleep_for(std::chrono::duration<double>(nap));
    }
}

void Installation::computeRecords(int count)
{
    const std::lock_guard<std::mutex> lock(mutex);
    catchUp();
    ensureStreamHistory(count);
    if (driven)
        plant->run(std::min(conditions().missingSteps(count), std::int64_t(longestSliceS * physicsRate)));
}

bool Installation::isDevicePresent(int device)
{
    const std::lock_guard<std::mutex> lock(mutex);
    return devicePresent[std::size_t(device)];
}

template <typename Act>
auto Installation::manipulate(Act act)
{
    const std::lock_guard<std::mutex> lock(mutex);
    catchUp();
    ensureHistory(longestHistoryS);
    return act(*plant);
}

void Installation::useDrivenClock()
{
    manipulate([this](Plant&) { driven = true; });
}

void Installation::useRealClock()
{
    manipulate([this](Plant&) {
        driven = false;
        debt.start(clock.seconds());
    });
}

void Installation::advance(double seconds)
{
    std::int64_t left = std::llround(seconds * physicsRate);
    while (left > 0) {
        const std::int64_t slice = std::min(left, std::int64_t(longestSliceS * physicsRate));
        manipulate([slice](Plant& advanced) { advanced.run(slice); });
        left -= slice;
    }
}

double Installation::time()
{
    return manipulate([this](Plant&) { return runningTime(); });
}

void Installation::setBeamOn(bool on)
{
    manipulate([on](Plant& changed) { changed.beam().setOn(on); });
}

void Installation::kick(double xMicrometres, double yMicrometres)
{
    manipulate([=](Plant& changed) { changed.beam().kick(xMicrometres, yMicrometres); });
}

void Installation::setNoise(double positionMicrometres, double currentAmps)
{
    manipulate([=](Plant& changed) {
        changed.beam().setNoise(positionMicrometres);
        changed.amplifier(0).setNoise(currentAmps);
        changed.amplifier(1).setNoise(currentAmps);
    });
}

void Installation::setVibration(int line, double frequencyHz, double xMicrometres, double yMicrometres)
{
    manipulate([=](Plant& changed) { changed.beam().setVibration(line, {frequencyHz, xMicrometres, yMicrometres}); });
}

void Installation::setDrift(double amplitudeMicrometres, double periodSeconds, double walkMicrometres)
{
    manipulate([=](Plant& changed) { changed.beam().setDrift(amplitudeMicrometres, periodSeconds, walkMicrometres); });
}

void Installation::quietBeam()
{
    manipulate([](Plant& changed) {
        changed.beam().quiet();
        changed.amplifier(0).setNoise(0);
        changed.amplifier(1).setNoise(0);
    });
}

void Installation::plug(int port, std::uint16_t deviceId)
{
    manipulate([=](Plant& changed) { changed.ports().plug(port, deviceId); });
}

void Installation::setDevicePresent(const char* path, bool present)
{
    manipulate([=](Plant&) {
        for (int device = 0; device < deviceCount; ++device)
            if (std::strcmp(path, devicePaths[device]) == 0)
                devicePresent[std::size_t(device)] = present;
    });
}

bool Installation::failFunction(const char* name, int times)
{
    if (!isOperation(name))
        return false;
    const std::lock_guard<std::mutex> lock(mutex);
    faults.failFunction(name, times);
    return true;
}

void Installation::truncateBlocks(int missingRecords)
{
    const std::lock_guard<std::mutex> lock(mutex);
    faults.truncateBlocks(missingRecords);
}

void Installation::setGarbageBlocks(bool garbage)
{
    const std::lock_guard<std::mutex> lock(mutex);
    faults.setGarbage(garbage);
}

BeamPosition Installation::beamPosition()
{
    return manipulate([](Plant& observed) -> BeamPosition {
        const BeamSample sample = observed.beamAtMonitor();
        return {sample.x, sample.y};
    });
}

double Installation::outputVolts(int output)
{
    return manipulate(
        [output](Plant& observed) { return output < 0 || output > 3 ? 0 : observed.outputs().volts()[output]; });
}

void Installation::reset()
{
    const std::lock_guard<std::mutex> lock(mutex);
    if (!switchedOn) {
        switchedOn.emplace(displayRate);
        switchedOn->run(std::int64_t(longestHistoryS * physicsRate));
    }
    plant.emplace(*switchedOn);
    historySteps = plant->stepsDone();
    faults = Faults();
    devicePresent.fill(true);
    ++resets;
    debt.start(clock.seconds());
}

InstallationState Installation::state()
{
    return manipulate([this](Plant& observed) {
        InstallationState now = {};
        now.time = runningTime();
        now.drivenClock = driven;
        const BeamSample sample = observed.beamAtMonitor();
        now.beamOn = observed.beam().isSwitchedOn();
        now.flux = sample.flux;
        now.position = {sample.x, sample.y};
        const BeamSettings& motion = observed.beam().motion();
        now.driftMicrometres = motion.driftMicrometres;
        now.driftPeriodS = motion.driftPeriodS;
        now.walkMicrometres = motion.walkMicrometres;
        now.noiseMicrometres = motion.noiseMicrometres;
        now.currentNoiseAmps = observed.amplifier(0).noiseLevel();
        now.lines = motion.lines;
        now.feedbackStatus = observed.loops().status();
        now.configuration = observed.loops().configuration();
        now.streamRate = observed.stream().rate();
        std::copy_n(observed.outputs().volts(), 4, now.outputVolts.begin());
        for (int port = 0; port < SfpPorts::count; ++port)
            now.ports[std::size_t(port)] = observed.ports().info(port).deviceId;
        now.cables = {observed.cables(0).connected(), observed.cables(1).connected()};
        now.devicePresent = devicePresent;
        for (std::size_t i = 0; i < operationCount; ++i) {
            const auto failure = faults.failures().find(operationNames[i]);
            now.failing[i] = failure == faults.failures().end() ? 0 : failure->second;
        }
        now.missingRecords = faults.missingRecords();
        now.garbageBlocks = faults.isGarbage();
        return now;
    });
}

bool Installation::connectCables(int bpm, const ElectrodeChannels& channels)
{
    return manipulate([&](Plant& changed) { return (bpm == 0 || bpm == 1) && changed.cables(bpm).connect(channels); });
}

} // namespace kora::simulation
