// Makes the double a control library of its own for the device server: every call is appended to the file that
// KORA_CALLS names, and the file that KORA_SCRIPT names says what the library answers. It is read again whenever it has
// changed, one statement a line:
//
//   fail FUNCTION           the function returns -1
//   hang FUNCTION           the function does not return until the line is gone
//   status N                what getPIDstatus() gives
//   conf N                  what getPIDconf() gives
//   source LOOP BPM         what getBPMselector() gives
//   output LOOP N           what getPIDoutSel() gives
//   rate HZ                 what getDisplayFreq() gives
//   figure BPM N VALUE      the N-th figure of the statistics, raw
//   port PORT CODE SERIAL   what sits in an SFP port
//   short N                 getBuffer() delivers so many records

#include "double/DoubleInternals.h"

#include <sys/stat.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <thread>

namespace {

using koralink_double::Double;

const char* fileOf(const char* variable)
{
    const char* const name = std::getenv(variable);
    return name ? name : "";
}

class Script
{
public:
    /// Reads the file where it has changed. Caller holds the double's lock.
    void update(Double& self)
    {
        struct stat state = {};
        if (::stat(fileOf("KORA_SCRIPT"), &state) != 0)
            return;
        if (state.st_ino == read.st_ino && state.st_mtim.tv_sec == read.st_mtim.tv_sec &&
            state.st_mtim.tv_nsec == read.st_mtim.tv_nsec)
            return;
        read = state;
        self.failures.clear();
        hanging.clear();
        self.answers.deliveredRecords = -1;
        std::ifstream file(fileOf("KORA_SCRIPT"));
        for (std::string line; std::getline(file, line);)
            apply(self, line);
    }

    bool hangs(const std::string& name) const { return hanging.count(name) != 0; }

private:
    void apply(Double& self, const std::string& line)
    {
        std::istringstream words(line);
        std::string what, name;
        words >> what;
        koralink_double::Answers& answers = self.answers;
        if (what == "fail" || what == "hang") {
            words >> name;
            if (what == "fail")
                self.failures[name] = -1;
            else
                hanging.insert(name);
            return;
        }
        double values[3] = {};
        for (double& value : values)
            words >> value;
        const auto first = std::size_t(values[0]);
        if (what == "status")
            answers.pidStatus = PID_Status_Type(int(values[0]));
        else if (what == "conf")
            answers.pidConf = static_cast<signed char>(values[0]);
        else if (what == "source")
            answers.bpmSel[first] = int(values[1]);
        else if (what == "output")
            answers.outSel[first] = static_cast<unsigned char>(values[1]);
        else if (what == "rate")
            answers.displayFreq = int(values[0]);
        else if (what == "figure")
            (&answers.stats.bpm[first].posXMean)[std::size_t(values[1])] = values[2];
        else if (what == "port")
            answers.sfp[first] = {std::uint16_t(values[1]), 1, {'1', '2', '3', '4'}, std::uint32_t(values[2])};
        else if (what == "short")
            answers.deliveredRecords = int(values[0]);
    }

    std::set<std::string> hanging;
    struct stat read = {};
};

/// Each record tells its number and its slot, so that a reader that mixes them up is found out.
void fillBlock(DisplayRecord* block, int count)
{
    for (int i = 0; i < count; ++i) {
        auto* const slots = reinterpret_cast<double*>(&block[i]);
        for (int slot = 0; slot < slotsPerRecord; ++slot)
            slots[slot] = 1e-6 * (slot + 1) + 1e-9 * i;
        block[i].funcGenRefA = float(i);
        block[i].funcGenRefB = float(-i);
    }
}

struct Library
{
    Script script;
    std::ofstream record;

    Library() : record(fileOf("KORA_CALLS"))
    {
        Double& self = Double::instance();
        self.answers.fillBlock = fillBlock;
        self.onCall = [this](const koralink_double::Call& call) { take(call); };
    }

    void take(const koralink_double::Call& call)
    {
        Double& self = Double::instance();
        const std::string name = call.name;
        record << call.text() << std::endl;
        script.update(self);
        while (script.hangs(name)) {
            // The caller holds the lock once: others go on meanwhile.
            self.mutex.unlock();
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
            self.mutex.lock();
            script.update(self);
        }
    }
};

Library library;

} // namespace
