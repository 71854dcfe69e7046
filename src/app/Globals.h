#pragma once

#include "hardware/StreamRate.h"

#include <QString>

class ConfigFile;
class DialogLogin;
class MailboxComm;
class Updater;

/// The shared state through which the objects of the program find each other, with SAMP_FREQ, the rate of the display
/// stream. Plain variables without a lock:
/// the GUI thread owns them all but for sampFreq and the four BPM selectors, which the poll of MailboxComm also
/// writes; the last writer wins.

/// Rate of the control loops, Hz.
extern int sampFreq;

/// Length of one display window in bytes; a multiple of 256.
extern int dispBufferBytes;

/// Per BPM, the factor from a raw position to micrometres.
extern double bpmScaleX[2];
extern double bpmScaleY[2];

/// Per controller, the BPM that feeds it: 0 BPM1, 1 BPM2.
extern int bpmSelXlf;
extern int bpmSelXhf;
extern int bpmSelYlf;
extern int bpmSelYhf;

/// Texts of the three system versions, compared as texts.
extern QString hwTimestampText;
extern QString swVersionText;
extern QString pidVersionText;

/// Access level of the operator: 0 "cruise", 1 "user", 2 "admin".
extern int userLevel;

extern ConfigFile* configFile;
extern Updater* updater;
extern MailboxComm* mailbox;
extern DialogLogin* loginDialog;

/// Version of this interface, in the main window's title and the about box.
extern const char guiVersion[];
