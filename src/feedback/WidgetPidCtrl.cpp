#include "feedback/WidgetPidCtrl.h"

#include "app/Globals.h"
#include "feedback/WidgetPIDparams.h"
#include "hardware/ConfigFile.h"
#include "hardware/LoopConfiguration.h"
#include "hardware/LoopParameters.h"
#include "hardware/MailboxComm.h"
#include "logging/Log.h"
#include "support/FieldGuard.h"
#include "support/UnsentFields.h"
#include "ui_WidgetPidCtrl.h"

#include <QDoubleSpinBox>

namespace {

constexpr int adminLevel = 2;

} // namespace

WidgetPidCtrl::WidgetPidCtrl(QWidget* parent)
    : QWidget(parent), ui(std::make_unique<Ui::WidgetPidCtrl>()), unsent(new UnsentFields(this))
{
    ui->setupUi(this);
    new FieldGuard(this);
    params[LoopXlf] = ui->posXlfwidget;
    params[LoopXhf] = ui->posXhfwidget;
    params[LoopYlf] = ui->posYlfwidget;
    params[LoopYhf] = ui->posYhfwidget;
    enableAndDisableFields();
    showStoredParams();
    for (QDoubleSpinBox* field : findChildren<QDoubleSpinBox*>())
        unsent->watch(field);
    connect(ui->pushButtonUpdate, SIGNAL(released()), this, SLOT(savePIDparams()));
}

WidgetPidCtrl::~WidgetPidCtrl() = default;

void WidgetPidCtrl::showStoredParams()
{
    for (int loop = 0; loop < loopCount; ++loop)
        params[loop]->setParameters(configFile->readLoop(loop));
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
    mailbox->setOffset(params[LoopXlf]->parameters().Offset, params[LoopXhf]->parameters().Offset,
                       params[LoopYlf]->parameters().Offset, params[LoopYhf]->parameters().Offset);
    for (int loop = 0; loop < loopCount; ++loop) {
        const LoopParameters p = params[loop]->parameters();
        mailbox->setPIDparams(static_cast<signed char>(loop), p.Kp, p.Ki, p.Kd, p.emin, p.Imax, p.Omin, p.Omax,
                              p.Ogain);
        configFile->writeLoop(loop, p);
    }
    unsent->markSent();
}
