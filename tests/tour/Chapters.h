#pragma once

#include "tour/Stage.h"

/// The day of an operator, in this order. Each chapter leaves the windows as the next one expects them.
namespace tour {

void watch(Stage& stage);
void logIn(Stage& stage);
void driveOutputsByHand(Stage& stage);
void configure(Stage& stage);
void enableFeedback(Stage& stage);
void placeSetPoint(Stage& stage);
void sweepFrequencies(Stage& stage);
void step(Stage& stage);
void scan(Stage& stage);
void scanSurface(Stage& stage);
void save(Stage& stage);
void loseAndRegainTheBeam(Stage& stage);
void unplugAndReplugAnAmplifier(Stage& stage);
void lookAround(Stage& stage);
void goHome(Stage& stage);

} // namespace tour
