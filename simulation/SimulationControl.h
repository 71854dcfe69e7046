#pragma once

#include "simulation/InstallationState.h"

#include <dlfcn.h>

#include <cstdint>

namespace kora::simulation {

/// What a test or a training console does to the simulated installation behind the back of the program: time,
/// beam, devices and faults. All members may be called from any thread. Amplitudes are peak values.
class SimulationControl
{
public:
    /// From now on the simulated time stands still but for advance(), and reads of the stream that would wait
    /// advance it by what is missing.
    virtual void useDrivenClock() = 0;
    /// From now on the simulated time follows the monotonic clock.
    virtual void useRealClock() = 0;
    /// Computes the plant for so many seconds, with either clock.
    virtual void advance(double seconds) = 0;
    /// Simulated seconds since power-on.
    virtual double time() = 0;

    virtual void setBeamOn(bool on) = 0;
    /// Displaces the beam at once; the displacement decays with a time constant of half a second.
    virtual void kick(double xMicrometres, double yMicrometres) = 0;
    /// RMS values of the beam's own white position noise and of the noise of each amplifier channel in range 0.
    virtual void setNoise(double positionMicrometres, double currentAmps) = 0;
    /// @param line 0 to 7
    virtual void setVibration(int line, double frequencyHz, double xMicrometres, double yMicrometres) = 0;
    /// Periodic drift of both axes, and the RMS value of the random walk on top of it.
    virtual void setDrift(double amplitudeMicrometres, double periodSeconds, double walkMicrometres) = 0;
    /// No drift, no vibration, no noise: what remains is what the outputs do.
    virtual void quietBeam() = 0;

    /// @param port 0 to 3 for SFP A to D; @param deviceId product code, 0 unplugs
    virtual void plug(int port, std::uint16_t deviceId) = 0;
    /// @param path one of the four device files; an absent one cannot be opened and answers with ENODEV
    virtual void setDevicePresent(const char* path, bool present) = 0;
    /// Makes an operation of the control library fail without an effect.
    /// @param times number of calls that fail, 0 to stop failing, -1 until told otherwise
    /// @return false when the library has no operation of this name
    virtual bool failFunction(const char* name, int times) = 0;
    /// Blocks of the display stream lack this many records from now on; 0 delivers them whole.
    virtual void truncateBlocks(int missingRecords) = 0;
    /// Blocks of the display stream hold NaN, infinities, denormals and huge values from now on.
    virtual void setGarbageBlocks(bool garbage) = 0;

    /// True position of the beam at BPM1.
    virtual BeamPosition beamPosition() = 0;
    /// @param output 0 to 3; @return V
    virtual double outputVolts(int output) = 0;
    /// Back to the state of power-on, faults cleared; the clock stays real or driven, its time starts at 0.
    virtual void reset() = 0;

    /// Everything of this moment at once.
    virtual InstallationState state() = 0;
    /// Puts the cables of a detector on other channels of its amplifier.
    /// @param bpm 0 or 1
    /// @return false, and nothing changes, for channels that do not exist or that two cables would share
    virtual bool connectCables(int bpm, const ElectrodeChannels& channels) = 0;

protected:
    ~SimulationControl() = default;
};

/// The control interface of the simulation that this process runs on; null on any other control library.
inline SimulationControl* findControl()
{
    using Getter = SimulationControl* (*)();
    const auto getter = reinterpret_cast<Getter>(dlsym(RTLD_DEFAULT, "kora_simulation_control"));
    return getter ? getter() : nullptr;
}

} // namespace kora::simulation
