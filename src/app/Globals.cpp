#include "app/Globals.h"

int sampFreq = 10000;
int dispBufferBytes = 0x380000;
double bpmScaleX[2] = {1.0, 1.0};
double bpmScaleY[2] = {1.0, 1.0};
int bpmSelXlf = 0;
int bpmSelXhf = 0;
int bpmSelYlf = 0;
int bpmSelYhf = 0;
QString hwTimestampText;
QString swVersionText;
QString pidVersionText;
int userLevel = 0;
ConfigFile* configFile = nullptr;
Updater* updater = nullptr;
MailboxComm* mailbox = nullptr;
DialogLogin* loginDialog = nullptr;
const char guiVersion[] = KORA_VERSION;
