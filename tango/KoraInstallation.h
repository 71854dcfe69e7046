#pragma once

#include "tango/ArrayTable.h"
#include "tango/DisplayWindow.h"
#include "tango/InstallationReader.h"
#include "tango/ScalarBuffer.h"

#include <tango/tango.h>

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

namespace kora {

/// One installation as a TANGO device. A thread of its own polls the control library and pushes events; what clients
/// read is the newest poll, with its time. Arrays are fetched when a client asks for them, or at each poll while a
/// client has subscribed to one.
///
/// The members that TANGO calls run on its threads, one at a time for a device, under the device's monitor. A value
/// that could not be read, or that is older than a poll may be, has the quality INVALID.
class KoraInstallation : public Tango::Device_5Impl
{
public:
    KoraInstallation(Tango::DeviceClass* deviceClass, const char* name);
    ~KoraInstallation() override;

    void init_device() override;
    void delete_device() override;
    void always_executed_hook() override;
    void read_attr_hardware(std::vector<long>& attributes) override;

    void readScalar(Tango::Attribute& attribute, const Scalar& scalar);
    void readArray(Tango::Attribute& attribute, const Array& array);
    /// @param loop LoopXlf or LoopYlf
    /// @throw Tango::DevFailed where it is refused, and nothing was written
    void writeSetpoint(int loop, double micrometres);

    /// @throw Tango::DevFailed where commands are not allowed, and where the call fails or hangs
    void enableFeedback();
    void disableFeedback();
    void resetController();
    /// All scalars as one JSON object: value, quality and unit of each, and the time of the poll.
    std::string snapshotAsJson();

private:
    /// The newest poll, all of it invalid once it is too old.
    Snapshot current() const;
    void readProperties();
    void poll();
    void pushEvents(const Snapshot& snapshot);
    void pushScalars(const Snapshot& snapshot);
    void pushState(const Snapshot& snapshot);
    void pushArrays();
    bool arrayIsWanted();
    void fetchIfOld(std::chrono::milliseconds age);
    void refuseUnlessAllowed(const char* command);
    void command(const char* command, const char* function, std::function<int()> call);
    void callLibrary(const char* function, std::function<int()> call);
    void pollNow();

    CallRunner calls;
    InstallationReader pollReader{calls};
    InstallationReader commandReader{calls};
    std::vector<ScalarBuffer> readBuffers; ///< of reads, by row of the table of scalars
    std::vector<ScalarBuffer> pushBuffers; ///< of events

    // Under the device's monitor.
    DisplayWindow window;
    std::chrono::steady_clock::time_point windowFetched;
    std::vector<double> arrayBuffer;
    Tango::DevState pushedState = Tango::UNKNOWN;
    std::string pushedStatus;

    mutable std::mutex mutex; ///< of what follows
    std::condition_variable wakeUp;
    Snapshot newest;
    std::chrono::steady_clock::time_point newestAt;
    std::chrono::milliseconds period{1000};
    bool allowCommands = false;
    int windowRecords = largestBlockRecords;
    bool pollWanted = false;
    bool ending = false;

    std::thread poller;
};

/// State and the sentence of Status that a poll stands for.
Tango::DevState stateOf(const Snapshot& snapshot);
std::string statusOf(const Snapshot& snapshot);

} // namespace kora
