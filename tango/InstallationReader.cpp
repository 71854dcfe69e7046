#include "tango/InstallationReader.h"

#include "hardware/ConfigFile.h"
#include "hardware/SettingsPath.h"
#include "stream/DeviceFile.h"

#include <QFile>

#include <fcntl.h>

namespace kora {

namespace {

template <typename T>
std::array<int, 4> asInts(const T (&values)[4])
{
    return {values[0], values[1], values[2], values[3]};
}

int readSources(std::array<int, 4>& sources)
{
    return ::getBPMselector(&sources[0], &sources[1], &sources[2], &sources[3]);
}

int readOutputs(std::array<int, 4>& outputs)
{
    unsigned char values[4] = {};
    const int result = ::getPIDoutSel(&values[0], &values[1], &values[2], &values[3]);
    outputs = asInts(values);
    return result;
}

int readConfiguration(int& configuration)
{
    signed char code = 0;
    const int result = ::getPIDconf(&code);
    configuration = code;
    return result;
}

int readDisplayRate(int& hertz)
{
    unsigned char filter = 0;
    return ::getDisplayFreq(&hertz, &filter);
}

int readVersions(SystemVersions& versions)
{
    return ::getSystemVersion(&versions.timestamp, &versions.software, &versions.pid);
}

int readAmplifier(int amplifier, AmplifierStatus& status)
{
    DeviceFile device(amplifierDevicePath[amplifier], O_RDONLY);
    return device.isOpen() ? device.control(requestAmplifierStatus, &status) : -1;
}

} // namespace

template <typename T, typename Call>
Reading<T> InstallationReader::call(const char* name, Call function)
{
    // Owned by the call, which may write into it long after this poll is over.
    struct Answer
    {
        T value{};
        int result = -1;
    };
    const auto answer = std::make_shared<Answer>();
    const auto outcome = calls.run(
        name, [answer, function] { answer->result = function(answer->value); }, patience);
    if (outcome == CallRunner::Outcome::Hangs) {
        patience = nextCall;
        failures.push_back(std::string(name) + "() does not return");
        return {};
    }
    if (answer->result < 0)
        failures.push_back(std::string(name) + "() failed");
    return {answer->value, answer->result >= 0};
}

Reading<int> InstallationReader::configuration()
{
    return call<int>("getPIDconf", readConfiguration);
}

Reading<std::array<int, 4>> InstallationReader::sources()
{
    return call<std::array<int, 4>>("getBPMselector", readSources);
}

Snapshot InstallationReader::read()
{
    failures.clear();
    patience = longestCall;
    Snapshot found;
    ::gettimeofday(&found.time, nullptr);
    found.configuration = configuration();
    found.status = call<PID_Status_Type>("getPIDstatus", [](PID_Status_Type& status) {
        status = ::getPIDstatus();
        return 0;
    });
    // This function alone cannot tell that it failed: off is also what a library says that reaches nothing.
    found.status.valid = found.status.valid && found.configuration.valid;
    found.setpointX = call<double>("getSetpoint", [](double& value) { return ::getSetpoint(0, &value); });
    found.setpointY = call<double>("getSetpoint", [](double& value) { return ::getSetpoint(2, &value); });
    found.sources = sources();
    found.outputs = call<std::array<int, 4>>("getPIDoutSel", readOutputs);
    found.displayRate = call<int>("getDisplayFreq", readDisplayRate);
    found.stats = call<BPMStats>("getBPMStats", [](BPMStats& stats) { return ::getBPMStats(&stats); });
    found.versions = call<SystemVersions>("getSystemVersion", readVersions);
    for (int port = 0; port < 4; ++port) {
        found.ports[port] = call<SFPinfo>("getSFPinfo", [port](SFPinfo& info) {
            return ::getSFPinfo(port, &info.deviceId, &info.hwVersion, info.version, &info.serialNumber);
        });
    }
    found.failures = failures;
    // An amplifier that is not there is no failure of the library: its values alone are not valid.
    for (int amplifier = 0; amplifier < 2; ++amplifier) {
        found.amplifiers[amplifier] =
            call<AmplifierStatus>(amplifierDevicePath[amplifier],
                                  [amplifier](AmplifierStatus& status) { return readAmplifier(amplifier, status); });
    }
    found.settings = readBeamlineSettings();
    return found;
}

BeamlineSettings readBeamlineSettings()
{
    BeamlineSettings settings;
    const QString path = settingsPath();
    if (!QFile::exists(path))
        return settings;
    if (!QFile(path).open(QIODevice::ReadOnly)) {
        settings.state = BeamlineSettings::Unreadable;
        return settings;
    }
    settings.state = BeamlineSettings::Present;
    ConfigFile file;
    for (int bpm = 0; bpm < 2; ++bpm) {
        settings.scaleX[bpm] = file.readScaleX(bpm);
        settings.scaleY[bpm] = file.readScaleY(bpm);
        double low, high, confidence;
        file.readROI(&settings.roiX[bpm], &settings.roiY[bpm], &low, &high, &confidence, bpm);
    }
    return settings;
}

} // namespace kora
