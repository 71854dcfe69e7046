// The poll of the device and what it tells its subscribers.

#include "tango/ArrayTable.h"
#include "tango/KoraInstallation.h"

#include <iostream>

namespace kora {

void KoraInstallation::poll()
{
    // TANGO's locks know their threads by omniORB's identity.
    const omni_thread::ensure_self identity;
    auto due = std::chrono::steady_clock::now();
    for (;;) {
        const Snapshot snapshot = pollReader.read();
        {
            const std::lock_guard<std::mutex> lock(mutex);
            if (ending)
                return;
            newest = snapshot;
            newestAt = std::chrono::steady_clock::now();
        }
        pushEvents(snapshot);

        std::unique_lock<std::mutex> lock(mutex);
        due += period;
        const auto now = std::chrono::steady_clock::now();
        if (due < now)
            due = now;
        wakeUp.wait_until(lock, due, [this] { return ending || pollWanted; });
        if (pollWanted)
            due = std::chrono::steady_clock::now();
        pollWanted = false;
        if (ending)
            return;
    }
}

void KoraInstallation::pollNow()
{
    {
        const std::lock_guard<std::mutex> lock(mutex);
        pollWanted = true;
    }
    wakeUp.notify_all();
}

void KoraInstallation::pushEvents(const Snapshot& snapshot)
{
    if (Tango::Util::instance()->is_svr_starting() || Tango::Util::instance()->is_svr_shutting_down())
        return;
    try {
        Tango::AutoTangoMonitor monitor(this);
        pushScalars(snapshot);
        pushState(snapshot);
        if (arrayIsWanted())
            pushArrays();
    } catch (const Tango::DevFailed& failure) {
        // A client that holds the device for long, for one. The next poll tells the change.
        std::cerr << "Events of one poll could not be sent: " << failure.errors[0].desc.in() << std::endl;
    }
}

void KoraInstallation::pushScalars(const Snapshot& snapshot)
{
    timeval time = snapshot.time;
    for (const Scalar& scalar : scalarTable()) {
        Tango::Attribute& attribute = get_device_attr()->get_attr_by_name(scalar.name.c_str());
        ScalarBuffer& buffer = pushBuffers[std::size_t(&scalar - scalarTable().data())];
        handValue(buffer, scalar, snapshot, [&](auto* value, bool valid) {
            const Tango::AttrQuality quality = valid ? Tango::ATTR_VALID : Tango::ATTR_INVALID;
            if (attribute.change_event_subscribed())
                push_change_event(scalar.name, value, time, quality);
            if (attribute.archive_event_subscribed())
                push_archive_event(scalar.name, value, time, quality);
        });
    }
}

void KoraInstallation::pushState(const Snapshot& snapshot)
{
    const Tango::DevState state = stateOf(snapshot);
    const std::string status = statusOf(snapshot);
    set_state(state);
    set_status(status);
    if (state != pushedState) {
        pushedState = state;
        push_change_event("State", &pushedState);
    }
    if (status != pushedStatus) {
        pushedStatus = status;
        Tango::DevString text = pushedStatus.data();
        push_change_event("Status", &text);
    }
}

bool KoraInstallation::arrayIsWanted()
{
    for (const Array& array : arrayTable()) {
        Tango::Attribute& attribute = get_device_attr()->get_attr_by_name(array.name.c_str());
        if (attribute.change_event_subscribed() || attribute.archive_event_subscribed())
            return true;
    }
    return false;
}

void KoraInstallation::pushArrays()
{
    fetchIfOld(std::chrono::milliseconds(0));
    for (const Array& array : arrayTable()) {
        Tango::Attribute& attribute = get_device_attr()->get_attr_by_name(array.name.c_str());
        const bool change = attribute.change_event_subscribed();
        const bool archive = attribute.archive_event_subscribed();
        if (!change && !archive)
            continue;
        std::vector<double> values = array.values(window);
        const Tango::AttrQuality quality = values.empty() ? Tango::ATTR_INVALID : Tango::ATTR_VALID;
        // An address is asked for also where there is no value.
        values.resize(std::max<std::size_t>(values.size(), 1));
        const long length = quality == Tango::ATTR_VALID ? long(values.size()) : 0;
        if (change)
            push_change_event(array.name, values.data(), window.time, quality, length);
        if (archive)
            push_archive_event(array.name, values.data(), window.time, quality, length);
    }
}

} // namespace kora
