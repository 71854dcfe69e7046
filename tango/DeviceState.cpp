#include "tango/KoraInstallation.h"

#include "hardware/LoopConfiguration.h"

namespace kora {

namespace {

std::string joined(const std::vector<std::string>& parts, const char* separator)
{
    std::string text;
    for (const std::string& part : parts)
        text += (text.empty() ? "" : separator) + part;
    return text;
}

/// The loops of the configuration, such as "Xlf, Ylf".
std::string regulatingLoops(const Snapshot& snapshot)
{
    std::vector<std::string> names;
    if (const LoopConfiguration* row = loopConfiguration(snapshot.configuration.value)) {
        for (int loop = 0; loop < loopCount; ++loop) {
            if (row->runs(loop))
                names.push_back(loopNames[loop]);
        }
    }
    return names.empty() ? "no loop" : joined(names, ", ");
}

bool libraryFails(const Snapshot& snapshot)
{
    return !snapshot.failures.empty() || !snapshot.status.valid;
}

} // namespace

Tango::DevState stateOf(const Snapshot& snapshot)
{
    if (libraryFails(snapshot))
        return Tango::UNKNOWN;
    switch (snapshot.status.value) {
    case PidStatusOff:
        return Tango::STANDBY;
    case PidStatusOn:
        return Tango::RUNNING;
    case PidStatusBeamOff:
        return Tango::ALARM;
    case PidStatusOutOfRoc:
        return Tango::FAULT;
    }
    return Tango::UNKNOWN;
}

std::string statusOf(const Snapshot& snapshot)
{
    if (libraryFails(snapshot)) {
        const std::string reason = snapshot.failures.empty() ? "no poll has ended" : joined(snapshot.failures, ", ");
        return "The control library does not answer as it should: " + reason + ".";
    }
    switch (snapshot.status.value) {
    case PidStatusOff:
        return "The feedback is off.";
    case PidStatusOn:
        return "The feedback is on and regulates with " + regulatingLoops(snapshot) + ".";
    case PidStatusBeamOff:
        return "The beam is off: the feedback is on and waits for it.";
    case PidStatusOutOfRoc:
        return "Fault: the beam left the region of confidence, and the feedback has stopped.";
    }
    return "The control library tells a feedback status that does not exist.";
}

} // namespace kora
