#pragma once

#include "simulation/beam/Actuator.h"
#include "simulation/processor/FeedbackLoops.h"

#include <cstdint>

namespace kora::simulation::powerOn {

/// What the installation is built of and what it holds when it is switched on. The training settings file carries
/// the same values, so that the program's windows show at first what the installation runs on.

constexpr std::uint16_t devices[4] = {0x2101, 0x2101, 0x2200, 0};

/// Versions 1.1.04 and 1.0.12, one number a byte from the lowest address on.
constexpr std::uint32_t softwareVersion = 0x04000101;
constexpr std::uint32_t pidVersion = 0x02010001;
constexpr std::uint32_t hardwareTimestamp = 1718712000;

/// Both detectors stand at 90 degrees in a beam of 282 um RMS, so that a unit of raw position is 500 um.
constexpr int orientation = 1;
constexpr double beamSigma = 282.09479177387814;
constexpr double scale = 500;
/// Motion at each BPM per motion at BPM1: the second one stands farther from the mirrors.
constexpr double lever[2] = {1.0, 1.4};
/// Current of all four electrodes together with the full flux and full collection, A.
constexpr double totalCurrent = 5e-6;

/// Outputs at rest and the middle of every actuator, V.
constexpr double restVolts = 5;
/// Behind outputs 0 to 3: coarse X, fine X, coarse Y, fine Y.
constexpr ActuatorModel actuators[4] = {{200, restVolts, 300, 0.6, 200e-6, 250},
                                        {20, restVolts, 1200, 0.7, 100e-6, 25},
                                        {200, restVolts, 260, 0.6, 200e-6, 250},
                                        {20, restVolts, 1000, 0.7, 100e-6, 25}};
/// Outputs 0 and 1 also tune the flux: exp(-(v - peak)^2 / (2 width^2)).
constexpr double tuningPeak = 5;
constexpr double tuningWidth = 0.5;

/// Loops Xlf and Ylf regulate, all from BPM1, each onto the output of its number.
constexpr int configuration = 2;
constexpr double loopFrequency = 1000; ///< Hz
constexpr PidGains lowFrequencyGains = {0.002, 2.0, 0, 0, 2, 0, 10, 1};
constexpr PidGains highFrequencyGains = {0.015, 0, 0, 0, 2, 0, 10, 1};

/// Half widths of the region of interest, um, and the region of confidence as a share of it.
constexpr double regionOfInterest = 40;
constexpr double regionOfConfidence = 1.1;
constexpr double beamOffAmps = 0.5e-6;

/// Designs for a loop of 10 kHz: Butterworth low-pass of fourth order at 10 Hz, out of the path, and band-pass of
/// second order from 10 to 100 Hz (bilinear transform with prewarping, Oppenheim & Schafer, ch. 7), feedback terms
/// negated.
constexpr double lowPass[2][5] = {
    {9.6613966339886709e-11, 3.8645586535954684e-10, 5.7968379803932026e-10, 3.8645586535954684e-10,
     9.6613966339886709e-11},
    {0, 3.9835812586585213, -5.9508784292666998, 3.951012436572834, -0.98371526751047898}};
constexpr double bandPass[2][5] = {
    {0.00076851165467016184, 0, -2 * 0.00076851165467016184, 0, 0.00076851165467016184},
    {0, 3.9192942938946615, -5.7617613986675267, 3.7656092667314285, -0.92314231177400881}};

} // namespace kora::simulation::powerOn
