#include "simulation/console/StatusText.h"

#include "simulation/Installation.h"
#include "simulation/console/CommandLine.h"

#include <cmath>

namespace kora::simulation {

namespace {

constexpr const char* feedbackNames[] = {"off", "out of the region of confidence", "beam off", "on"};

std::string rounded(double value, int decimals)
{
    const double scale = std::pow(10, decimals);
    // Adding 0 makes a plain zero of a negative one.
    return textOf(std::nearbyint(value * scale) / scale + 0.0);
}

std::string codeText(std::uint16_t code)
{
    constexpr char digits[] = "0123456789abcdef";
    std::string text;
    for (int shift = 12; shift >= 0; shift -= 4)
        text += digits[code >> shift & 0xf];
    return text;
}

std::string portName(std::size_t port)
{
    return {char('A' + port)};
}

bool isActive(const VibrationLine& line)
{
    return line.xMicrometres != 0 || line.yMicrometres != 0;
}

/// Rows of a table whose left column has one width; rows of one topic name it once.
class Table
{
public:
    void add(const std::string& topic, const std::string& what)
    {
        constexpr std::size_t width = 14;
        const std::string shown = topic == newest ? std::string() : topic;
        text += shown + std::string(width - shown.size(), ' ') + what + '\n';
        newest = topic;
    }
    const std::string& result() const { return text; }

private:
    std::string text;
    std::string newest;
};

std::string blocksText(const InstallationState& state)
{
    std::string text =
        state.missingRecords == 0 ? "whole blocks" : "blocks lack " + std::to_string(state.missingRecords) + " records";
    return text + (state.garbageBlocks ? ", garbage" : "");
}

std::string channelText(int channel)
{
    return channel < 0 ? "loose" : std::to_string(channel + 1);
}

void addBeam(Table& table, const InstallationState& state)
{
    table.add("beam", std::string(state.beamOn ? "on" : "off") + ", flux " + rounded(state.flux, 4) + ", at x " +
                          rounded(state.position.x, 3) + " um, y " + rounded(state.position.y, 3) + " um");
    table.add("drift", textOf(state.driftMicrometres) + " um in " + textOf(state.driftPeriodS) + " s, random walk " +
                           textOf(state.walkMicrometres) + " um RMS");
    table.add("noise",
              textOf(state.noiseMicrometres) + " um RMS, amplifiers " + textOf(state.currentNoiseAmps) + " A RMS");
    bool still = true;
    for (std::size_t i = 0; i < state.lines.size(); ++i) {
        const VibrationLine& line = state.lines[i];
        if (!isActive(line))
            continue;
        still = false;
        table.add("vibration", std::to_string(i) + ": " + textOf(line.frequencyHz) + " Hz, x " +
                                   textOf(line.xMicrometres) + " um, y " + textOf(line.yMicrometres) + " um");
    }
    if (still)
        table.add("vibration", "none");
}

void addElectronics(Table& table, const InstallationState& state)
{
    table.add("feedback", std::string(feedbackNames[state.feedbackStatus]) + ", configuration " +
                              std::to_string(state.configuration));
    std::string volts;
    for (const double output : state.outputVolts)
        volts += (volts.empty() ? "" : ", ") + rounded(output, 3) + " V";
    table.add("outputs", volts);
    table.add("stream", std::to_string(state.streamRate) + " Hz, " + blocksText(state));
    for (std::size_t port = 0; port < state.ports.size(); ++port)
        table.add("SFP " + portName(port), state.ports[port] == 0 ? "empty" : codeText(state.ports[port]));
    for (std::size_t bpm = 0; bpm < state.cables.size(); ++bpm) {
        const ElectrodeChannels& cables = state.cables[bpm];
        table.add("BPM" + std::to_string(bpm + 1) + " cables",
                  "top " + channelText(cables[0]) + ", right " + channelText(cables[1]) + ", bottom " +
                      channelText(cables[2]) + ", left " + channelText(cables[3]));
    }
}

/// A JSON object or list, written from left to right.
class Json
{
public:
    explicit Json(char opening) : text(1, opening) {}
    Json& add(const std::string& key, const std::string& value) { return add('"' + key + "\": " + value); }
    Json& add(const std::string& value)
    {
        text += (text.size() > 1 ? ", " : "") + value;
        return *this;
    }
    std::string closed() const { return text + (text[0] == '{' ? '}' : ']'); }

private:
    std::string text;
};

const char* boolean(bool value)
{
    return value ? "true" : "false";
}

std::string beamJson(const InstallationState& state)
{
    Json lines('[');
    for (const VibrationLine& line : state.lines)
        lines.add(Json('{')
                      .add("frequency_hz", textOf(line.frequencyHz))
                      .add("x_um", textOf(line.xMicrometres))
                      .add("y_um", textOf(line.yMicrometres))
                      .closed());
    return Json('{')
        .add("on", boolean(state.beamOn))
        .add("flux", textOf(state.flux))
        .add("x_um", textOf(state.position.x))
        .add("y_um", textOf(state.position.y))
        .add("drift_um", textOf(state.driftMicrometres))
        .add("drift_period_s", textOf(state.driftPeriodS))
        .add("walk_um", textOf(state.walkMicrometres))
        .add("noise_um", textOf(state.noiseMicrometres))
        .add("vibration", lines.closed())
        .closed();
}

std::string streamJson(const InstallationState& state)
{
    return Json('{')
        .add("rate_hz", std::to_string(state.streamRate))
        .add("missing_records", std::to_string(state.missingRecords))
        .add("garbage", boolean(state.garbageBlocks))
        .closed();
}

std::string cablesJson(const InstallationState& state)
{
    Json bpms('[');
    for (const ElectrodeChannels& cables : state.cables) {
        Json channels('[');
        for (const int channel : cables)
            channels.add(std::to_string(channel + 1));
        bpms.add(channels.closed());
    }
    return bpms.closed();
}

} // namespace

std::string statusText(const InstallationState& state)
{
    Table table;
    table.add("time", rounded(state.time, 3) + " s" + (state.drivenClock ? ", driven clock" : ""));
    addBeam(table, state);
    addElectronics(table, state);
    for (std::size_t device = 0; device < state.devicePresent.size(); ++device)
        table.add("device files", std::string(devicePaths[device]) + (state.devicePresent[device] ? "" : " removed"));
    for (std::size_t i = 0; i < operationCount; ++i)
        if (state.failing[i] != 0)
            table.add("failing",
                      operationNames[i] + (state.failing[i] < 0 ? std::string(" until told")
                                                                : ' ' + std::to_string(state.failing[i]) + " times"));
    if (!state.isAnythingFailing())
        table.add("failing", "nothing");
    return table.result();
}

std::string statusJson(const InstallationState& state)
{
    Json volts('[');
    for (const double output : state.outputVolts)
        volts.add(textOf(output));
    Json ports('{');
    for (std::size_t port = 0; port < state.ports.size(); ++port)
        ports.add(portName(port), state.ports[port] == 0 ? "null" : '"' + codeText(state.ports[port]) + '"');
    Json devices('{');
    for (std::size_t device = 0; device < state.devicePresent.size(); ++device)
        devices.add(devicePaths[device], boolean(state.devicePresent[device]));
    Json failing('{');
    for (std::size_t i = 0; i < operationCount; ++i)
        if (state.failing[i] != 0)
            failing.add(operationNames[i], std::to_string(state.failing[i]));
    return Json('{')
               .add("time_s", textOf(state.time))
               .add("driven_clock", boolean(state.drivenClock))
               .add("beam", beamJson(state))
               .add("current_noise_a", textOf(state.currentNoiseAmps))
               .add("feedback_status", std::to_string(state.feedbackStatus))
               .add("configuration", std::to_string(state.configuration))
               .add("stream", streamJson(state))
               .add("outputs_v", volts.closed())
               .add("ports", ports.closed())
               .add("cables", cablesJson(state))
               .add("devices", devices.closed())
               .add("failing", failing.closed())
               .closed() +
           '\n';
}

} // namespace kora::simulation
