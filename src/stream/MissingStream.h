#pragma once

/// Tells the operator that the display stream is not there, and ends the program when control is back in the event
/// loop: the one failure of hardware that does.
void reportMissingStreamAndQuit();
