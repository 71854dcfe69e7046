#include "support/DrivenPause.h"

#include "tools/Pause.h"

namespace {

std::vector<unsigned long> kept;
std::function<void(unsigned long)> pauseAction;

} // namespace

const std::vector<unsigned long>& driven_pause::pauses()
{
    return kept;
}

void driven_pause::clear()
{
    kept.clear();
    pauseAction = nullptr;
}

void driven_pause::setAction(std::function<void(unsigned long)> action)
{
    pauseAction = std::move(action);
}

void pauseMicroseconds(unsigned long microseconds)
{
    kept.push_back(microseconds);
    if (pauseAction)
        pauseAction(microseconds);
}

void pauseMilliseconds(unsigned long milliseconds)
{
    pauseMicroseconds(milliseconds * 1000);
}
