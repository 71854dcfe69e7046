#include "simulation/beam/Beam.h"

#include "simulation/Rates.h"

namespace kora::simulation {

namespace {

/// Places in the bank of oscillators.
constexpr int drift = 0;
constexpr int firstLine = 1;

} // namespace

Beam::Beam(std::uint64_t seed) : noise(seed)
{
    kickDecay = std::exp(-physicsPeriod / settings.kickTimeS);
    applySettings();
    // Spread phases, so that the lines do not start in step.
    for (int i = 0; i < int(settings.lines.size()); ++i)
        oscillators.setPhase(firstLine + i, 1.3 * i);
}

void Beam::Walk::set(double rms, double timeS)
{
    // The stationary variance of value * keep + push * noise is push^2 / (1 - keep^2).
    keep = 1 - physicsPeriod / timeS;
    push = rms * std::sqrt(1 - keep * keep);
}

void Beam::applySettings()
{
    oscillators.setFrequency(drift, 1 / settings.driftPeriodS, physicsRate);
    walkX.set(settings.walkMicrometres, settings.walkTimeS);
    walkY.set(settings.walkMicrometres, settings.walkTimeS);
    fluxWalk.set(settings.fluxWalk, settings.fluxWalkTimeS);
    activeLines = 0;
    for (std::size_t i = 0; i < settings.lines.size(); ++i) {
        oscillators.setFrequency(firstLine + int(i), settings.lines[i].frequencyHz, physicsRate);
        if (settings.lines[i].xMicrometres != 0 || settings.lines[i].yMicrometres != 0)
            activeLines = int(i) + 1;
    }
}

BeamSample Beam::next()
{
    oscillators.step(firstLine + activeLines, 1);
    decayKick(1);
    BeamSample sample;
    sample.x = settings.driftMicrometres * oscillators.cosine(drift) + walkX.step(noise.next()) +
               settings.noiseMicrometres * noise.next() + kickX;
    sample.y = settings.driftMicrometres * oscillators.sine(drift) + walkY.step(noise.next()) +
               settings.noiseMicrometres * noise.next() + kickY;
    for (int i = 0; i < activeLines; ++i) {
        const VibrationLine& line = settings.lines[std::size_t(i)];
        sample.x += line.xMicrometres * oscillators.cosine(firstLine + i);
        sample.y += line.yMicrometres * oscillators.sine(firstLine + i);
    }
    const double flux = 1 + fluxWalk.step(noise.next()) + settings.fluxNoise * noise.next();
    sample.flux = isOn ? flux : 0;
    return sample;
}

void Beam::skip(int steps)
{
    oscillators.step(firstLine + activeLines, steps);
    decayKick(steps);
    // Of the six values that next() draws in a step the walks keep the first, the third and the fifth.
    for (int i = 0; i < steps; ++i) {
        for (Walk* walk : {&walkX, &walkY, &fluxWalk}) {
            walk->step(noise.next());
            noise.skip(1);
        }
    }
}

void Beam::decayKick(int steps)
{
    if (kickX == 0 && kickY == 0)
        return;
    for (int i = 0; i < steps; ++i) {
        kickX *= kickDecay;
        kickY *= kickDecay;
    }
}

void Beam::kick(double xMicrometres, double yMicrometres)
{
    kickX += xMicrometres;
    kickY += yMicrometres;
}

void Beam::setDrift(double amplitudeMicrometres, double periodS, double walkMicrometres)
{
    settings.driftMicrometres = amplitudeMicrometres;
    settings.driftPeriodS = periodS > 0 ? periodS : settings.driftPeriodS;
    settings.walkMicrometres = walkMicrometres;
    applySettings();
}

void Beam::setVibration(int line, const VibrationLine& vibration)
{
    if (line < 0 || line >= int(settings.lines.size()))
        return;
    settings.lines[std::size_t(line)] = vibration;
    applySettings();
}

void Beam::quiet()
{
    settings.driftMicrometres = 0;
    settings.walkMicrometres = 0;
    settings.noiseMicrometres = 0;
    settings.fluxNoise = 0;
    settings.fluxWalk = 0;
    for (VibrationLine& line : settings.lines)
        line = {0, 0, 0};
    applySettings();
    walkX.value = 0;
    walkY.value = 0;
    fluxWalk.value = 0;
    kickX = 0;
    kickY = 0;
}

} // namespace kora::simulation
