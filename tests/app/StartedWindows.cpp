#include "app/StartedWindows.h"

#include "app/Globals.h"
#include "hardware/ConfigFile.h"
#include "hardware/MailboxComm.h"
#include "support/DialogLogin.h"

std::unique_ptr<MainWindow> startWindows()
{
    for (int bpm = 0; bpm < 2; ++bpm) {
        bpmScaleX[bpm] = configFile->readScaleX(bpm);
        bpmScaleY[bpm] = configFile->readScaleY(bpm);
    }
    mailbox->refreshData();
    mailbox->getSystemVersion(&hwTimestampText, &swVersionText, &pidVersionText);
    mailbox->getBPMselector(&bpmSelXlf, &bpmSelXhf, &bpmSelYlf, &bpmSelYhf);

    auto window = std::make_unique<MainWindow>();
    window->resize(1800, 980);
    window->show();
    loginDialog = new DialogLogin(window.get());
    loginDialog->connectToMainWindow();
    return window;
}
