#include "hardware/StreamRate.h"

// In an object of the executable itself and constant-initialised: the control library looks it up in the
// executable's dynamic symbol table before main runs.
int SAMP_FREQ = 1000;
