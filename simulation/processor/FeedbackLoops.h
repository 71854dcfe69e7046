#pragma once

#include "hardware/koralink.h"
#include "simulation/processor/Interlock.h"
#include "simulation/processor/PidController.h"
#include "simulation/processor/PositionFilter.h"

namespace kora::simulation {

/// The four control loops Xlf, Xhf, Ylf, Yhf (index 0 to 3) with their position filters, the choice which of them
/// regulate, from which BPM and onto which output, and the state of the feedback.
class FeedbackLoops
{
public:
    static constexpr int count = 4;
    /// Code under which no loop regulates.
    static constexpr int noLoop = 15;

    /// One tick at the loop rate. @param period s
    void tick(const PositionReading readings[2], const PositionMonitor monitors[2], Interlock::Verdict verdict,
              double period);

    /// Starts the loops, also out of a fault, or stops them.
    void enable(bool on);
    /// Puts all controllers back to their offsets.
    void resetControllers();
    PID_Status_Type status() const { return state; }

    /// @param code 0 to 14 for the combinations of loops, 15 for none; @return false for any other
    bool setConfiguration(int code);
    int configuration() const { return code; }
    /// @param bpm one index 0 or 1 for each loop; @return false for any other, which changes nothing
    bool setSelectors(const int bpm[count]);
    const int* selectors() const { return bpmOf; }
    /// @param output one number 0 to 3 for each loop; @return false for any other, which changes nothing
    bool setOutputs(const int output[count]);
    const int* outputs() const { return outputOf; }

    PidController& controller(int loop) { return controllers[loop]; }
    const PidController& controller(int loop) const { return controllers[loop]; }
    PositionFilter& filter(int loop) { return filters[loop]; }
    /// Raw position of one loop behind its filter.
    double path(int loop) const { return paths[loop]; }

private:
    bool regulates(int loop) const { return (mask & (1 << loop)) != 0; }

    PidController controllers[count];
    PositionFilter filters[count];
    double paths[count] = {};
    int bpmOf[count] = {};
    int outputOf[count] = {0, 1, 2, 3};
    int code = noLoop;
    int mask = 0;
    PID_Status_Type state = PidStatusOff;
};

} // namespace kora::simulation
