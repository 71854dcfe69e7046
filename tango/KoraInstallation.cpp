#include "tango/KoraInstallation.h"

#include "hardware/LoopConfiguration.h"
#include "tango/ClientName.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>
#include <ctime>
#include <iostream>

namespace kora {

namespace {

/// How long a client's own request waits for the library: less than a client waits for its answer (3 s).
constexpr std::chrono::milliseconds clientPatience{2000};
constexpr int shortestPeriodMs = 100;
constexpr int longestPeriodMs = 60000;

template <typename T>
void readProperty(const Tango::DbData& data, std::size_t index, T& value)
{
    // Extraction takes a variable datum, though it changes nothing.
    Tango::DbDatum datum = data[index];
    if (!datum.is_empty())
        datum >> value;
}

/// One line of the server's log: commands are told whatever the level of TANGO's own log.
void logAccepted(const std::string& what, const std::string& client)
{
    char time[32];
    const std::time_t now = std::time(nullptr);
    std::tm utc = {};
    ::gmtime_r(&now, &utc);
    std::strftime(time, sizeof time, "%Y-%m-%dT%H:%M:%SZ", &utc);
    std::cout << time << ' ' << what << " by " << client << std::endl;
}

[[noreturn]] void refuse(const char* reason, const std::string& description, const std::string& origin)
{
    Tango::Except::throw_exception(std::string(reason), description, origin);
    std::abort(); // the line above does not return
}

} // namespace

KoraInstallation::KoraInstallation(Tango::DeviceClass* deviceClass, const char* name)
    : Tango::Device_5Impl(deviceClass, name), readBuffers(scalarTable().size()), pushBuffers(scalarTable().size())
{
    init_device();
    for (const Scalar& scalar : scalarTable()) {
        set_change_event(scalar.name, true, true);
        set_archive_event(scalar.name, true, true);
    }
    for (const Array& array : arrayTable()) {
        set_change_event(array.name, true, false);
        set_archive_event(array.name, true, false);
    }
    set_change_event("State", true, false);
    set_change_event("Status", true, false);
    poller = std::thread([this] { poll(); });
}

KoraInstallation::~KoraInstallation()
{
    {
        const std::lock_guard<std::mutex> lock(mutex);
        ending = true;
    }
    wakeUp.notify_all();
    poller.join();
    delete_device();
}

void KoraInstallation::init_device()
{
    readProperties();
    set_state(Tango::UNKNOWN);
    set_status(statusOf(Snapshot()));
}

// The poll goes on through an Init command, which only reads the properties anew.
void KoraInstallation::delete_device() {}

void KoraInstallation::readProperties()
{
    Tango::DevLong periodMs = 1000;
    Tango::DevBoolean allowed = false;
    Tango::DevLong records = largestBlockRecords;
    Tango::DbData data = {Tango::DbDatum("PollPeriod"), Tango::DbDatum("AllowCommands"),
                          Tango::DbDatum("WindowRecords")};
    if (Tango::Util::_UseDb) {
        get_db_device()->get_property(data);
        readProperty(data, 0, periodMs);
        readProperty(data, 1, allowed);
        readProperty(data, 2, records);
    }
    const std::lock_guard<std::mutex> lock(mutex);
    period = std::chrono::milliseconds(std::min(std::max(int(periodMs), shortestPeriodMs), longestPeriodMs));
    allowCommands = allowed;
    windowRecords = std::min(std::max(int(records), 1), largestBlockRecords);
}

Snapshot KoraInstallation::current() const
{
    const std::lock_guard<std::mutex> lock(mutex);
    if (std::chrono::steady_clock::now() - newestAt <= period + longestCall)
        return newest;
    Snapshot nothing;
    ::gettimeofday(&nothing.time, nullptr);
    nothing.settings = newest.settings;
    nothing.failures = {"no poll has ended in time"};
    return nothing;
}

void KoraInstallation::always_executed_hook()
{
    const Snapshot snapshot = current();
    set_state(stateOf(snapshot));
    set_status(statusOf(snapshot));
}

void KoraInstallation::read_attr_hardware(std::vector<long>& attributes)
{
    for (const long index : attributes) {
        if (findArray(get_device_attr()->get_attr_by_ind(index).get_name())) {
            fetchIfOld(period);
            return;
        }
    }
}

void KoraInstallation::readScalar(Tango::Attribute& attribute, const Scalar& scalar)
{
    const Snapshot snapshot = current();
    timeval time = snapshot.time;
    ScalarBuffer& buffer = readBuffers[std::size_t(&scalar - scalarTable().data())];
    handValue(buffer, scalar, snapshot, [&](auto* value, bool valid) {
        attribute.set_value_date_quality(value, time, valid ? Tango::ATTR_VALID : Tango::ATTR_INVALID);
    });
}

void KoraInstallation::fetchIfOld(std::chrono::milliseconds age)
{
    if (window.valid && std::chrono::steady_clock::now() - windowFetched < age)
        return;
    int records;
    {
        const std::lock_guard<std::mutex> lock(mutex);
        records = windowRecords;
    }
    window = fetchWindow(calls, records, clientPatience);
    windowFetched = std::chrono::steady_clock::now();
}

void KoraInstallation::readArray(Tango::Attribute& attribute, const Array& array)
{
    arrayBuffer = array.values(window);
    const bool valid = !arrayBuffer.empty();
    arrayBuffer.resize(std::max<std::size_t>(arrayBuffer.size(), 1));
    attribute.set_value_date_quality(arrayBuffer.data(), window.time, valid ? Tango::ATTR_VALID : Tango::ATTR_INVALID,
                                     valid ? long(arrayBuffer.size()) : 0);
}

void KoraInstallation::refuseUnlessAllowed(const char* command)
{
    const std::lock_guard<std::mutex> lock(mutex);
    if (!allowCommands)
        refuse("KORA_CommandsNotAllowed",
               std::string(command) +
                   " is refused: this device only shows. Its property AllowCommands lets it command.",
               command);
}

void KoraInstallation::callLibrary(const char* function, std::function<int()> call)
{
    const auto result = std::make_shared<int>(-1);
    const auto outcome = calls.run(
        function, [result, call = std::move(call)] { *result = call(); }, clientPatience);
    if (outcome == CallRunner::Outcome::Hangs)
        refuse("KORA_CallHangs", std::string(function) + "() of the control library does not return", function);
    if (*result < 0)
        refuse("KORA_CallFailed", std::string(function) + "() of the control library failed", function);
}

void KoraInstallation::command(const char* command, const char* function, std::function<int()> call)
{
    refuseUnlessAllowed(command);
    callLibrary(function, std::move(call));
    logAccepted(command, clientName(get_client_ident()));
    pollNow();
}

void KoraInstallation::enableFeedback()
{
    command("EnableFeedback", "setFBenable", [] { return ::setFBenable(1); });
}

void KoraInstallation::disableFeedback()
{
    command("DisableFeedback", "setFBenable", [] { return ::setFBenable(0); });
}

void KoraInstallation::resetController()
{
    command("ResetController", "setCtrlReset", ::setCtrlReset);
}

void KoraInstallation::writeSetpoint(int loop, double micrometres)
{
    const bool horizontal = loop == LoopXlf;
    const char* const name = horizontal ? "SetpointX" : "SetpointY";
    refuseUnlessAllowed(name);
    const Reading<int> code = commandReader.configuration();
    const Reading<std::array<int, 4>> sources = commandReader.sources();
    if (!code.valid || !sources.valid)
        refuse("KORA_CallFailed", "The configuration of the loops cannot be read", name);
    const LoopConfiguration* const row = loopConfiguration(code.value);
    if (!row || !row->runs(loop))
        refuse("KORA_NoLoop", std::string("The configuration does not let ") + loopNames[loop] + " regulate", name);
    // The limit of the monitor that feeds the loop, and a value on the limit is accepted, as for a click of the
    // operator.
    const BeamlineSettings settings = readBeamlineSettings();
    const int bpm = sources.value[std::size_t(loop)] != 0 ? 1 : 0;
    const double limit = horizontal ? settings.roiX[bpm] : settings.roiY[bpm];
    if (!(std::fabs(micrometres) <= limit))
        refuse("KORA_OutsideRegionOfInterest",
               "Set-point " + std::to_string(micrometres) + " um is outside the region of interest of BPM" +
                   std::to_string(bpm + 1) + ", +-" + std::to_string(limit) + " um",
               name);

    callLibrary("setSetpoint", [loop, micrometres] { return ::setSetpoint(loop, micrometres); });
    // The high-frequency loop of the axis works around zero, as with a click.
    const int fast = loop + 1;
    if (row->runs(fast) && sources.value[std::size_t(fast)] == sources.value[std::size_t(loop)])
        callLibrary("setSetpoint", [fast] { return ::setSetpoint(fast, 0.0); });
    logAccepted(name + (" = " + std::to_string(micrometres) + " um"), clientName(get_client_ident()));
    pollNow();
}

std::string KoraInstallation::snapshotAsJson()
{
    const Snapshot snapshot = current();
    QJsonObject attributes;
    ScalarBuffer buffer;
    for (const Scalar& scalar : scalarTable()) {
        QJsonObject entry;
        bool valid;
        if (scalar.type == ScalarType::Text) {
            const Reading<std::string> reading = scalar.text(snapshot);
            valid = reading.valid;
            entry[QStringLiteral("value")] = QString::fromStdString(reading.value);
        } else {
            const Reading<double> reading = scalar.number(snapshot);
            valid = reading.valid;
            if (valid && scalar.type == ScalarType::Enumeration)
                entry[QStringLiteral("value")] = QString::fromStdString(scalar.choices[std::size_t(reading.value)]);
            else if (scalar.type == ScalarType::Boolean)
                entry[QStringLiteral("value")] = reading.value != 0;
            else if (std::isfinite(reading.value))
                entry[QStringLiteral("value")] = reading.value;
        }
        if (!valid || !entry.contains(QStringLiteral("value")))
            entry[QStringLiteral("value")] = QJsonValue(QJsonValue::Null);
        entry[QStringLiteral("quality")] = valid ? QStringLiteral("VALID") : QStringLiteral("INVALID");
        if (!scalar.unit.empty())
            entry[QStringLiteral("unit")] = QString::fromStdString(scalar.unit);
        attributes[QString::fromStdString(scalar.name)] = entry;
    }
    QJsonObject whole;
    whole[QStringLiteral("time")] = double(snapshot.time.tv_sec) + 1e-6 * double(snapshot.time.tv_usec);
    whole[QStringLiteral("state")] = QString::fromLatin1(Tango::DevStateName[stateOf(snapshot)]);
    whole[QStringLiteral("status")] = QString::fromStdString(statusOf(snapshot));
    whole[QStringLiteral("attributes")] = attributes;
    return QJsonDocument(whole).toJson(QJsonDocument::Compact).toStdString();
}

} // namespace kora
