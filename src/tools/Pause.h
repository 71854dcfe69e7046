#pragma once

/// The pauses of the measurement tools: they block the calling thread. In a file of its own, so that a test with a
/// driven clock can link another one.
void pauseMicroseconds(unsigned long microseconds);
void pauseMilliseconds(unsigned long milliseconds);
