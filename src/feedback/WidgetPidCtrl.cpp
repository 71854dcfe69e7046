#include "feedback/WidgetPidCtrl.h"

#include "app/Globals.h"
#include "feedback/WidgetPIDparams.h"
#include "hardware/ConfigFile.h"
#include "hardware/LoopConfiguration.h"
#include "hardware/MailboxComm.h"
#include "logging/Log.h"
#include "ui_WidgetPidCtrl.h"

namespace {

struct Accessors
{
    decltype(&ConfigFile::readPIDXlf) read;
    decltype(&ConfigFile::writePIDXlf) write;
};

constexpr Accessors accessors[loopCount] = {
    {&ConfigFile::readPIDXlf, &ConfigFile::writePIDXlf},
    {&ConfigFile::readPIDXhf, &ConfigFile::writePIDXhf},
    {&ConfigFile::readPIDYlf, &ConfigFile::writePIDYlf},
    {&ConfigFile::readPIDYhf, &ConfigFile::writePIDYhf},
};

constexpr int adminLevel = 2;

} // namespace

WidgetPidCtrl::WidgetPidCtrl(QWidget* parent) : QWidget(parent), ui(new Ui::WidgetPidCtrl)
{
    ui->setupUi(this);
    params[LoopXlf] = ui->posXlfwidget;
    params[LoopXhf] = ui->posXhfwidget;
    params[LoopYlf] = ui->posYlfwidget;
    params[LoopYhf] = ui->posYhfwidget;
    enableAndDisableFields();
    showStoredParams();
    connect(ui->pushButtonUpdate, SIGNAL(released()), this, SLOT(savePIDparams()));
}

WidgetPidCtrl::~WidgetPidCtrl() = default;

void WidgetPidCtrl::showStoredParams()
{
    for (int loop = 0; loop < loopCount; ++loop) {
        double Freq, Kp, Ki, Kd, emin, Imax, Omin, Omax, Ogain, Offset;
        const auto read = accessors[loop].read;
        (configFile->*read)(&Freq, &Kp, &Ki, &Kd, &emin, &Imax, &Omin, &Omax, &Ogain, &Offset);
        params[loop]->setFreq(Freq);
        params[loop]->setParams(Kp, Ki, Kd, emin, Imax, Omin, Omax, Ogain, Offset);
    }
}

void WidgetPidCtrl::enableAndDisableFields()
{
    if (userLevel < adminLevel)
        ui->verticalTabWidget->setEnabled(false);
    else if (userLevel == adminLevel)
        ui->verticalTabWidget->setEnabled(true);
}

void WidgetPidCtrl::savePIDparams()
{
    KORA_LOG_TRACE << "Loading PID parameters to FPGA and config_koralink.ini";
    for (int loop = 0; loop < loopCount; ++loop)
        mailbox->setWindAvg(loop, params[loop]->divider());
    mailbox->setOffset(params[LoopXlf]->offset(), params[LoopXhf]->offset(), params[LoopYlf]->offset(),
                       params[LoopYhf]->offset());
    for (int loop = 0; loop < loopCount; ++loop) {
        const WidgetPIDparams& p = *params[loop];
        mailbox->setPIDparams(static_cast<signed char>(loop), p.Kp(), p.Ki(), p.Kd(), p.emin(), p.Imax(), p.Omin(),
                              p.Omax(), p.Ogain());
        const auto write = accessors[loop].write;
        (configFile->*write)(p.freq(), p.Kp(), p.Ki(), p.Kd(), p.emin(), p.Imax(), p.Omin(), p.Omax(), p.Ogain(),
                             p.offset());
    }
}
