#pragma once

#include <QByteArray>
#include <QString>

class Dice;

namespace kora::simulation {
class SimulationControl;
}

/// What may go wrong around the program, by chance: beam, devices, library, stream, settings file.
class RandomFaults
{
public:
    RandomFaults(Dice& dice, kora::simulation::SimulationControl& plant) : dice(dice), plant(plant) {}

    /// Lets something happen. @return what, for the trace
    QString strike();
    /// Puts everything in order again but for what the program itself has set.
    void repair();

private:
    QString plugSomething();
    QString moveTheBeam();
    QString failSomeFunction();
    QString loseDevice();
    QString spoilSettings();
    QString spoilStream();

    Dice& dice;
    kora::simulation::SimulationControl& plant;
};
