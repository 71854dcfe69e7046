#include "simulation/processor/FeedbackLoops.h"

#include <algorithm>

namespace kora::simulation {

namespace {

/// Loops that run under each configuration code: Xlf 1, Xhf 2, Ylf 4, Yhf 8.
constexpr int loopsOfCode[FeedbackLoops::noLoop + 1] = {1, 3, 5, 9, 7, 11, 13, 15, 2, 6, 10, 14, 4, 12, 8, 0};

PID_Status_Type statusOf(Interlock::Verdict verdict)
{
    switch (verdict) {
    case Interlock::Verdict::OutOfRegion:
        return PidStatusOutOfRoc;
    case Interlock::Verdict::BeamOff:
        return PidStatusBeamOff;
    case Interlock::Verdict::Good:
        break;
    }
    return PidStatusOn;
}

} // namespace

void FeedbackLoops::tick(const PositionReading readings[2], const PositionMonitor monitors[2],
                         Interlock::Verdict verdict, double period)
{
    if (state == PidStatusOn || state == PidStatusBeamOff)
        state = statusOf(verdict);
    for (int loop = 0; loop < count; ++loop) {
        const int bpm = bpmOf[loop];
        const bool isX = loop < 2;
        paths[loop] = filters[loop].process(isX ? readings[bpm].x : readings[bpm].y);
        const double scale = isX ? monitors[bpm].scaleX() : monitors[bpm].scaleY();
        if (state == PidStatusOn && regulates(loop))
            controllers[loop].sample(paths[loop] * scale, period);
        else
            controllers[loop].pause();
    }
}

void FeedbackLoops::enable(bool on)
{
    if (!on)
        state = PidStatusOff;
    else if (state == PidStatusOff || state == PidStatusOutOfRoc)
        state = PidStatusOn;
}

void FeedbackLoops::resetControllers()
{
    for (PidController& controller : controllers)
        controller.reset();
}

bool FeedbackLoops::setConfiguration(int newCode)
{
    if (newCode < 0 || newCode > noLoop)
        return false;
    code = newCode;
    mask = loopsOfCode[newCode];
    return true;
}

bool FeedbackLoops::setSelectors(const int bpm[count])
{
    if (!std::all_of(bpm, bpm + count, [](int index) { return index == 0 || index == 1; }))
        return false;
    std::copy(bpm, bpm + count, bpmOf);
    return true;
}

bool FeedbackLoops::setOutputs(const int output[count])
{
    if (!std::all_of(output, output + count, [](int number) { return number >= 0 && number <= 3; }))
        return false;
    std::copy(output, output + count, outputOf);
    return true;
}

} // namespace kora::simulation
