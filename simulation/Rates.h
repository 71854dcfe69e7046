#pragma once

namespace kora::simulation {

/// Steps of the physics per second. Outputs are held and electrodes are read once a step.
constexpr int physicsRate = 50000;
/// Length of one step, s.
constexpr double physicsPeriod = 1.0 / physicsRate;
/// Control loops per second on amplifiers, and with an encoder box on any port.
constexpr int loopRate = 10000;
constexpr int encoderLoopRate = 5000;

} // namespace kora::simulation
