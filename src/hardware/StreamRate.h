#pragma once

extern "C" {
/// Rate of the display stream, Hz. The control library reads it out of the executable, which exports it under this
/// name; it is written before every setDisplayFreq(). Read and written without a lock.
extern __attribute__((visibility("default"))) int SAMP_FREQ;
}
