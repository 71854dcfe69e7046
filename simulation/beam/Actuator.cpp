#include "simulation/beam/Actuator.h"

#include "simulation/Rates.h"

namespace kora::simulation {

Actuator::Actuator(const ActuatorModel& actuatorModel, double volts)
    : model(actuatorModel), delayed(std::size_t(std::lround(actuatorModel.deadTime * physicsRate)), volts),
      heldFor(delayed.size()), held(volts), position(volts)
{
    const double w0 = 2 * M_PI * model.resonance;
    const double decay = model.damping * w0;
    const double w = w0 * std::sqrt(1 - model.damping * model.damping);
    const double shrink = std::exp(-decay * physicsPeriod);
    const double c = shrink * std::cos(w * physicsPeriod);
    const double s = shrink * std::sin(w * physicsPeriod);
    transition[0][0] = c + decay / w * s;
    transition[0][1] = s / w;
    transition[1][0] = -w0 * w0 / w * s;
    transition[1][1] = c - decay / w * s;
}

bool Actuator::isAtRest(double volts) const
{
    return volts == held && heldFor == delayed.size() && position == volts && velocity == 0;
}

void Actuator::hold(double volts, int steps)
{
    // At rest each step would give the same again.
    if (isAtRest(volts))
        return;
    for (int i = 0; i < steps; ++i)
        step(volts);
}

void Actuator::step(double volts)
{
    heldFor = volts == held ? std::min(heldFor + 1, delayed.size()) : 0;
    held = volts;
    double input = volts;
    if (!delayed.empty()) {
        std::swap(input, delayed[delayIndex]);
        delayIndex = delayIndex + 1 == delayed.size() ? 0 : delayIndex + 1;
    }
    const double distance = position - input;
    position = input + transition[0][0] * distance + transition[0][1] * velocity;
    velocity = transition[1][0] * distance + transition[1][1] * velocity;
}

std::complex<double> Actuator::response(const ActuatorModel& model, double hertz)
{
    const double ratio = hertz / model.resonance;
    const double delay = model.deadTime + physicsPeriod / 2;
    return model.gain * std::polar(1.0, -2 * M_PI * hertz * delay) /
           std::complex<double>(1 - ratio * ratio, 2 * model.damping * ratio);
}

} // namespace kora::simulation
