#include "double/DoubleInternals.h"

#include <unistd.h>

#include <cstdio>
#include <utility>

namespace koralink_double {

namespace {

using Lock = std::lock_guard<std::recursive_mutex>;

bool startsWith(const std::string& text, const char* prefix)
{
    return text.rfind(prefix, 0) == 0;
}

bool isCommand(const Call& call)
{
    if (call.name == "ioctl")
        return call.texts.at(0) == outputDevicePath;
    return startsWith(call.name, "set") || startsWith(call.name, "commit") || startsWith(call.name, "funcGen") ||
           startsWith(call.name, "ionbar");
}

} // namespace

std::string Call::text() const
{
    std::string line = name + "(";
    std::string separator;
    for (const std::string& item : texts) {
        line += separator + item;
        separator = ", ";
    }
    for (double argument : arguments) {
        char number[40];
        std::snprintf(number, sizeof number, "%.12g", argument);
        line += separator + number;
        separator = ", ";
    }
    return line + ")";
}

Double& Double::instance()
{
    static Double theDouble;
    return theDouble;
}

int Double::record(const std::string& name, std::vector<double> arguments, std::vector<std::string> texts)
{
    calls.push_back({name, std::move(arguments), std::move(texts)});
    if (onCall)
        onCall(calls.back());
    const auto failure = failures.find(name);
    if (failure == failures.end() || failure->second == 0)
        return 0;
    if (failure->second > 0)
        --failure->second;
    return -1;
}

void reset()
{
    Double& self = Double::instance();
    Lock lock(self.mutex);
    self.answers = Answers();
    self.calls.clear();
    self.failures.clear();
    self.absentDevices.clear();
    // What a test left open is told by that test: the next one starts without it.
    const std::map<int, std::string> left = std::exchange(self.descriptors, {});
    for (const auto& [fd, path] : left)
        close(fd);
}

Answers& answers()
{
    return Double::instance().answers;
}

void fail(const std::string& function, int times)
{
    Double& self = Double::instance();
    Lock lock(self.mutex);
    self.failures[function] = times;
}

void setDevicePresent(const std::string& path, bool present)
{
    Double& self = Double::instance();
    Lock lock(self.mutex);
    if (present)
        self.absentDevices.erase(path);
    else
        self.absentDevices.insert(path);
}

int openDescriptors()
{
    Double& self = Double::instance();
    Lock lock(self.mutex);
    return int(self.descriptors.size());
}

std::vector<Call> calls()
{
    Double& self = Double::instance();
    Lock lock(self.mutex);
    return self.calls;
}

std::vector<std::string> commands()
{
    std::vector<std::string> texts;
    for (const Call& call : calls()) {
        if (isCommand(call))
            texts.push_back(call.text());
    }
    return texts;
}

std::vector<std::string> callsOf(const std::string& name)
{
    std::vector<std::string> texts;
    for (const Call& call : calls()) {
        if (call.name == name)
            texts.push_back(call.text());
    }
    return texts;
}

void clearCalls()
{
    Double& self = Double::instance();
    Lock lock(self.mutex);
    self.calls.clear();
}

} // namespace koralink_double
