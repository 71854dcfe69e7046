#pragma once

/// What the stream calls when it is not there. A floor above has it: the program tells the operator, and ends when
/// control is back in the event loop, the one failure of hardware that does so. GUI thread.
void reportMissingStreamAndQuit();
