#include "simulation/processor/PidController.h"

#include <algorithm>
#include <cmath>

namespace kora::simulation {

bool PidController::setGains(const PidGains& values)
{
    for (const double value :
         {values.kp, values.ki, values.kd, values.emin, values.imax, values.omin, values.omax, values.ogain})
        if (std::isnan(value))
            return false;
    gains = values;
    integral = std::clamp(integral, -std::fabs(gains.imax), std::fabs(gains.imax));
    updateOutput();
    return true;
}

bool PidController::setOffset(double value)
{
    if (!std::isfinite(value))
        return false;
    offset = value;
    updateOutput();
    return true;
}

bool PidController::setWindow(int samples)
{
    if (samples < 1)
        return false;
    window = samples;
    pause();
    return true;
}

bool PidController::setSetpoint(double micrometres)
{
    if (!std::isfinite(micrometres))
        return false;
    target = micrometres;
    return true;
}

void PidController::reset()
{
    integral = 0;
    action = 0;
    pause();
    updateOutput();
}

void PidController::pause()
{
    collected = 0;
    sum = 0;
    hasPrevious = false;
}

void PidController::sample(double micrometres, double period)
{
    sum += micrometres;
    if (++collected < window)
        return;
    regulate(sum / collected, collected * period);
    sum = 0;
    collected = 0;
}

void PidController::regulate(double average, double period)
{
    double error = target - average;
    if (std::fabs(error) < gains.emin)
        error = 0;
    const double limit = std::fabs(gains.imax);
    integral = std::clamp(integral + gains.ki * error * period, -limit, limit);
    action = gains.kp * error + integral;
    if (hasPrevious)
        action += gains.kd * (error - previousError) / period;
    previousError = error;
    hasPrevious = true;
    updateOutput();
}

void PidController::updateOutput()
{
    // Limits may stand the wrong way round; the upper one is then applied last.
    const double wanted = gains.ogain * action + offset;
    if (std::isfinite(wanted))
        volts = std::min(std::max(wanted, gains.omin), gains.omax);
}

} // namespace kora::simulation
