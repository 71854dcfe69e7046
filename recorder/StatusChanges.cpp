#include "recorder/StatusChanges.h"

#include <algorithm>
#include <cstdio>
#include <iterator>

namespace kora::recorder {

using archive::StatusSample;

namespace {

constexpr const char* loops[] = {"Xlf", "Xhf", "Ylf", "Yhf"};

struct NamedItem
{
    archive::UnreadableItem item;
    const char* name;
};
constexpr NamedItem items[] = {
    {archive::UnreadableConfiguration, "configuration"},  {archive::UnreadableSetpoints, "set-points"},
    {archive::UnreadableOutputs, "outputs of the loops"}, {archive::UnreadableSelectors, "BPMs of the loops"},
    {archive::UnreadableOutputSource, "output source"},   {archive::UnreadableRegions, "regions"},
    {archive::UnreadableStatistics, "statistics"},        {archive::UnreadablePorts, "ports"},
    {archive::UnreadableAmplifier1, "amplifier 1"},       {archive::UnreadableAmplifier2, "amplifier 2"},
    {archive::UnreadableRate, "rate of the stream"},
};

std::string number(double value)
{
    char text[32];
    std::snprintf(text, sizeof text, "%g", value);
    return text;
}

std::string product(int code)
{
    char text[16];
    std::snprintf(text, sizeof text, "%04x", unsigned(code));
    return code == 0 ? "nothing" : text;
}

std::string step(const std::string& before, const std::string& now)
{
    return before + " -> " + now;
}

void addLoopChanges(std::vector<Change>& changes, const char* what, const std::int32_t (&before)[4],
                    const std::int32_t (&now)[4])
{
    for (int loop = 0; loop < 4; ++loop) {
        if (before[loop] != now[loop])
            changes.push_back({"selector", std::string(loops[loop]) + ' ' + what + ' ' +
                                               step(std::to_string(before[loop] + 1), std::to_string(now[loop] + 1))});
    }
}

void addReadingChanges(std::vector<Change>& changes, std::uint32_t before, std::uint32_t now)
{
    for (const NamedItem& item : items) {
        const bool could = (before & item.item) == 0;
        const bool can = (now & item.item) == 0;
        if (could != can)
            changes.push_back({"reading", std::string(item.name) + (can ? " can be read again" : " cannot be read")});
    }
}

} // namespace

std::string feedbackText(int status)
{
    switch (status) {
    case PidStatusOff:
        return "Feedback OFF";
    case PidStatusOutOfRoc:
        return "FAULT: Out of ROC";
    case PidStatusBeamOff:
        return "Beam OFF";
    case PidStatusOn:
        return "Feedback ON";
    }
    return "status " + std::to_string(status);
}

std::vector<Change> changesBetween(const StatusSample& before, const StatusSample& now)
{
    std::vector<Change> changes;
    if (before.feedback != now.feedback)
        changes.push_back({now.feedback == PidStatusOutOfRoc ? "fault" : "status", feedbackText(now.feedback)});
    if (before.configuration != now.configuration)
        changes.push_back(
            {"configuration", "code " + step(std::to_string(before.configuration), std::to_string(now.configuration))});
    for (int loop = 0; loop < 4; ++loop) {
        if (before.setpoints[loop] != now.setpoints[loop])
            changes.push_back({"set-point", std::string(loops[loop]) + ' ' +
                                                step(number(before.setpoints[loop]), number(now.setpoints[loop])) +
                                                " um"});
    }
    addLoopChanges(changes, "output", before.outputs, now.outputs);
    addLoopChanges(changes, "BPM", before.selectors, now.selectors);
    if (before.outputSource != now.outputSource)
        changes.push_back({"selector", now.outputSource ? "outputs from the loops" : "outputs by hand"});
    for (int port = 0; port < 4; ++port) {
        if (before.ports[port].deviceId != now.ports[port].deviceId)
            changes.push_back(
                {"device", std::string("port ") + char('A' + port) + ' ' +
                               step(product(before.ports[port].deviceId), product(now.ports[port].deviceId))});
    }
    addReadingChanges(changes, before.unreadable, now.unreadable);
    return changes;
}

} // namespace kora::recorder
