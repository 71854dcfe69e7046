#include "support/World.h"

#include "app/Globals.h"
#include "hardware/ConfigFile.h"
#include "hardware/MailboxComm.h"
#include "stream/Updater.h"
#include "support/DrivenPause.h"
#include "support/ScratchSettings.h"

World::World()
{
    scratch_settings::clear();
    driven_pause::clear();
    SAMP_FREQ = 1000;
    sampFreq = 10000;
    dispBufferBytes = 0x380000;
    for (int bpm = 0; bpm < 2; ++bpm) {
        bpmScaleX[bpm] = 1.0;
        bpmScaleY[bpm] = 1.0;
    }
    bpmSelXlf = bpmSelXhf = bpmSelYlf = bpmSelYhf = 0;
    hwTimestampText.clear();
    swVersionText.clear();
    pidVersionText.clear();
    userLevel = 0;
    configFile = new ConfigFile;
    updater = new Updater;
    mailbox = new MailboxComm(nullptr);
}

World::~World()
{
    delete mailbox;
    mailbox = nullptr;
    delete updater;
    updater = nullptr;
    delete configFile;
    configFile = nullptr;
}
