#include "tango/ScalarTable.h"

#include "hardware/LoopConfiguration.h"
#include "hardware/VersionText.h"

#include <cstdio>

namespace kora {

const char* const feedbackTexts[4] = {"Feedback OFF", "FAULT: Out of ROC", "Beam OFF", "Feedback ON"};

namespace {

enum class Factor
{
    X,
    Y,
    None
};

/// A figure of the statistics of one monitor, the same for both.
struct Figure
{
    const char* suffix; ///< of the attribute's name
    const char* description;
    double BPMStatsBlock::*raw;
    Factor factor;
    const char* change;
};

constexpr Figure figures[] = {
    {"XMean", "Mean horizontal position", &BPMStatsBlock::posXMean, Factor::X, "0.1"},
    {"XStd", "Standard deviation of the horizontal position", &BPMStatsBlock::posXStd, Factor::X, "0.05"},
    {"XStd1kHz", "Standard deviation of the horizontal position at 1000 Hz", &BPMStatsBlock::posXStdFilt, Factor::X,
     "0.05"},
    {"YMean", "Mean vertical position", &BPMStatsBlock::posYMean, Factor::Y, "0.1"},
    {"YStd", "Standard deviation of the vertical position", &BPMStatsBlock::posYStd, Factor::Y, "0.05"},
    {"YStd1kHz", "Standard deviation of the vertical position at 1000 Hz", &BPMStatsBlock::posYStdFilt, Factor::Y,
     "0.05"},
    {"I0Mean", "Mean intensity", &BPMStatsBlock::i0Mean, Factor::None, "1e-9"},
    {"I0Std", "Standard deviation of the intensity", &BPMStatsBlock::i0Std, Factor::None, "1e-9"},
    {"I0Std1kHz", "Standard deviation of the intensity at 1000 Hz", &BPMStatsBlock::i0StdFilt, Factor::None, "1e-9"},
};

/// In the unit of the screens. A raw position means nothing without its scale factor.
Reading<double> figureOf(const Snapshot& snapshot, const Figure& figure, int bpm)
{
    const double raw = snapshot.stats.value.bpm[bpm].*figure.raw;
    if (figure.factor == Factor::None)
        return {raw, snapshot.stats.valid};
    const BeamlineSettings& settings = snapshot.settings;
    const double scale = figure.factor == Factor::X ? settings.scaleX[bpm] : settings.scaleY[bpm];
    return {raw * scale, snapshot.stats.valid && settings.state == BeamlineSettings::Present};
}

Scalar real(const std::string& name, const std::string& label, const std::string& description, const char* unit,
            const char* format, const char* change, std::function<Reading<double>(const Snapshot&)> number)
{
    return {name, ScalarType::Double, label, description, unit, format, change, {}, std::move(number), {}};
}

Scalar discrete(const std::string& name, ScalarType type, const std::string& label, const std::string& description,
                std::vector<std::string> choices, std::function<Reading<double>(const Snapshot&)> number)
{
    return {name, type, label, description, "", "", "", std::move(choices), std::move(number), {}};
}

Scalar text(const std::string& name, const std::string& label, const std::string& description,
            std::function<Reading<std::string>(const Snapshot&)> text)
{
    return {name, ScalarType::Text, label, description, "", "", "", {}, {}, std::move(text)};
}

void addStatistics(std::vector<Scalar>& table)
{
    for (int bpm = 0; bpm < 2; ++bpm) {
        const std::string monitor = "BPM" + std::to_string(bpm + 1);
        const std::string prefix = "Bpm" + std::to_string(bpm + 1);
        for (const Figure& figure : figures) {
            const bool position = figure.factor != Factor::None;
            table.push_back(real(prefix + figure.suffix, monitor + ' ' + figure.suffix,
                                 figure.description + (" at " + monitor), position ? "um" : "A",
                                 position ? "%.6f" : "%.6e", figure.change,
                                 [figure, bpm](const Snapshot& snapshot) { return figureOf(snapshot, figure, bpm); }));
        }
    }
}

void addOtherNumbers(std::vector<Scalar>& table)
{
    table.push_back(real("SetpointX", "Set-point X", "Set-point of the loop Xlf, as the loop holds it", "um", "%.3f",
                         "0.001", [](const Snapshot& snapshot) { return snapshot.setpointX; }));
    table.push_back(real("SetpointY", "Set-point Y", "Set-point of the loop Ylf, as the loop holds it", "um", "%.3f",
                         "0.001", [](const Snapshot& snapshot) { return snapshot.setpointY; }));
    for (int amplifier = 0; amplifier < 2; ++amplifier) {
        const std::string number = std::to_string(amplifier + 1);
        table.push_back(real("HighVoltage" + number, "High voltage " + number,
                             "High voltage of the current amplifier of BPM" + number, "V", "%.2f", "1",
                             [amplifier](const Snapshot& snapshot) {
                                 const Reading<AmplifierStatus>& status = snapshot.amplifiers[amplifier];
                                 return Reading<double>{status.value.highVoltageVolts(), status.valid};
                             }));
    }
    table.push_back(real("DisplayRate", "Display rate", "Records a second of the display stream", "Hz", "%.0f", "0.5",
                         [](const Snapshot& snapshot) {
                             return Reading<double>{double(snapshot.displayRate.value), snapshot.displayRate.valid};
                         }));
}

/// A position outside the enumeration is not valid.
Reading<double> choice(int value, bool valid, int count)
{
    return {double(value), valid && value >= 0 && value < count};
}

void addLoops(std::vector<Scalar>& table)
{
    table.push_back(discrete("FeedbackStatus", ScalarType::Enumeration, "Feedback", "What the feedback does",
                             {feedbackTexts, feedbackTexts + 4}, [](const Snapshot& snapshot) {
                                 return choice(snapshot.status.value, snapshot.status.valid, 4);
                             }));
    table.push_back(
        discrete("Configuration", ScalarType::Integer, "Configuration",
                 "Code of the loops that regulate: 0 to 14, and 15 for none", {}, [](const Snapshot& snapshot) {
                     return Reading<double>{double(snapshot.configuration.value), snapshot.configuration.valid};
                 }));
    for (int loop = 0; loop < loopCount; ++loop) {
        const std::string name = loopNames[loop];
        table.push_back(discrete(
            "Loop" + name, ScalarType::Boolean, "Loop " + name,
            "Whether the configuration lets the loop " + name + " regulate", {}, [loop](const Snapshot& snapshot) {
                const LoopConfiguration* row = loopConfiguration(snapshot.configuration.value);
                return Reading<double>{row && row->runs(loop) ? 1.0 : 0.0, snapshot.configuration.valid};
            }));
    }
    for (int loop = 0; loop < loopCount; ++loop) {
        const std::string name = loopNames[loop];
        table.push_back(discrete("Source" + name, ScalarType::Enumeration, "Source " + name,
                                 "Monitor that feeds the loop " + name, {"BPM1", "BPM2"},
                                 [loop](const Snapshot& snapshot) {
                                     return choice(snapshot.sources.value[loop], snapshot.sources.valid, 2);
                                 }));
    }
    for (int loop = 0; loop < loopCount; ++loop) {
        const std::string name = loopNames[loop];
        table.push_back(discrete("Output" + name, ScalarType::Enumeration, "Output " + name,
                                 "Analogue output that the loop " + name + " drives", {"CH1", "CH2", "CH3", "CH4"},
                                 [loop](const Snapshot& snapshot) {
                                     return choice(snapshot.outputs.value[loop], snapshot.outputs.valid, 4);
                                 }));
    }
}

const char* productClass(const SFPinfo& port)
{
    switch (port.deviceId >> 8) {
    case 0x21:
        return "current amplifier";
    case 0x23:
        return "encoder box";
    default:
        return "other product";
    }
}

std::string portText(const SFPinfo& info)
{
    if (info.deviceId == 0)
        return "empty";
    char text[120];
    std::snprintf(text, sizeof text, "%s, product code %04x, serial number %u, hardware %u", productClass(info),
                  unsigned(info.deviceId), unsigned(info.serialNumber), unsigned(info.hwVersion));
    return text;
}

void addInstallation(std::vector<Scalar>& table)
{
    for (int port = 0; port < 4; ++port) {
        const std::string letter(1, char('A' + port));
        table.push_back(text("Port" + letter, "SFP " + letter, "What sits in the port SFP " + letter,
                             [port](const Snapshot& snapshot) {
                                 const Reading<SFPinfo>& info = snapshot.ports[port];
                                 return Reading<std::string>{portText(info.value), info.valid};
                             }));
    }
    table.push_back(text(
        "SoftwareVersion", "Software version", "Version of the installation's firmware", [](const Snapshot& snapshot) {
            const Reading<SystemVersions>& versions = snapshot.versions;
            return Reading<std::string>{versionText(versions.value.software).toStdString(), versions.valid};
        }));
    table.push_back(
        text("PidVersion", "PID version", "Version of the installation's controllers", [](const Snapshot& snapshot) {
            const Reading<SystemVersions>& versions = snapshot.versions;
            return Reading<std::string>{versionText(versions.value.pid).toStdString(), versions.valid};
        }));
    table.push_back(discrete("SettingsFile", ScalarType::Enumeration, "Settings file",
                             "Whether the settings file can be read; without it positions have no scale",
                             {"present", "missing", "unreadable"}, [](const Snapshot& snapshot) {
                                 return Reading<double>{double(snapshot.settings.state), true};
                             }));
}

std::vector<Scalar> makeTable()
{
    std::vector<Scalar> table;
    addStatistics(table);
    addOtherNumbers(table);
    addLoops(table);
    addInstallation(table);
    return table;
}

} // namespace

const std::vector<Scalar>& scalarTable()
{
    static const std::vector<Scalar> table = makeTable();
    return table;
}

} // namespace kora
