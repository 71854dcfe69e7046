#include "feedback/WindowBeamlineConf.h"

#include "app/Globals.h"
#include "feedback/BPM.h"
#include "feedback/DialogButtons.h"
#include "hardware/ConfigFile.h"
#include "hardware/MailboxComm.h"
#include "hardware/VersionText.h"
#include "stream/Updater.h"
#include "support/FieldGuard.h"
#include "ui_WindowBeamlineConf.h"

#include <QTimer>

namespace {

constexpr int refreshIntervalMs = 770;

} // namespace

WindowBeamlineConf::WindowBeamlineConf(QWidget* parent)
    : QDialog(parent), ui(std::make_unique<Ui::WindowBeamlineConf>())
{
    ui->setupUi(this);
    new FieldGuard(this);
    ui->boxBPM1->setEnabled(true);
    ui->boxBPM2->setEnabled(true);
    ui->boxBPM2->hide();
    for (int bpm = 0; bpm < 2; ++bpm) {
        panel(bpm)->bpmIndex = static_cast<unsigned char>(bpm);
        panel(bpm)->showOffsets(firmwareHasVariableRate(swVersionText));
    }
    connect(ui->buttonBox, SIGNAL(clicked(QAbstractButton*)), this, SLOT(sendSettings(QAbstractButton*)));
    nr_ionbars_changed(mailbox->nrIonBars);

    auto* timer = new QTimer(this);
    connect(timer, SIGNAL(timeout()), this, SLOT(refreshFields()));
    timer->start(refreshIntervalMs);
}

WindowBeamlineConf::~WindowBeamlineConf() = default;

BPM* WindowBeamlineConf::panel(int bpm) const
{
    return bpm == 0 ? ui->boxBPM1 : ui->boxBPM2;
}

void WindowBeamlineConf::showAndRefresh()
{
    checkUserLevel();
    for (int bpm = 0; bpm < 2; ++bpm)
        loadBPM(bpm);
    nr_ionbars_changed(mailbox->nrIonBars);
    show();
}

void WindowBeamlineConf::nr_ionbars_changed(int mask)
{
    ui->boxBPM1->setVisible(mask != 2);
    ui->boxBPM2->setVisible(mask != 1);
    // Always the high voltage: the encoder settings stay out of the operator's reach, also with an encoder
    // box.
    for (int bpm = 0; bpm < 2; ++bpm)
        panel(bpm)->showHVpanel(false);
}

void WindowBeamlineConf::checkUserLevel()
{
    if (userLevel > 2)
        return;
    // Save stays active: below level 2 it rewrites the unchanged values.
    for (int bpm = 0; bpm < 2; ++bpm)
        panel(bpm)->setEnabled(userLevel == 2);
}

void WindowBeamlineConf::loadBPM(int bpm)
{
    BPM* const fields = panel(bpm);
    fields->setOrientation(configFile->readOrient(bpm));
    int top = 0;
    int right = 0;
    int bottom = 0;
    int left = 0;
    configFile->readChannels(&top, &right, &bottom, &left, bpm);
    fields->setChannels(top, right, bottom, left);
    fields->setScale(configFile->readScaleX(bpm), configFile->readScaleY(bpm));
}

void WindowBeamlineConf::sendSettings(QAbstractButton* button)
{
    if (!isSave(button))
        return;
    // BPM1 also while it is hidden.
    saveBPM(0);
    if (ui->boxBPM2->isVisible())
        saveBPM(1);
    emit BPMscaleChanged();
}

void WindowBeamlineConf::saveBPM(int bpm)
{
    const BPM* const fields = panel(bpm);
    const auto index = static_cast<unsigned char>(bpm);

    const int orientation = fields->orientation();
    configFile->writeOrient(orientation != 0, bpm);
    mailbox->setBPMorient(static_cast<unsigned char>(orientation), index);

    double x = 0.0;
    double y = 0.0;
    fields->scale(&x, &y);
    configFile->writeScaleX(bpm, x);
    configFile->writeScaleY(bpm, y);
    bpmScaleX[bpm] = x;
    bpmScaleY[bpm] = y;
    mailbox->setBPMscale(bpm, x, y);

    fields->offset(&x, &y);
    configFile->writeOffsetX(bpm, x);
    configFile->writeOffsetY(bpm, y);
    mailbox->setBPMoffset(bpm, x, y);

    int top = 0;
    int right = 0;
    int bottom = 0;
    int left = 0;
    fields->channels(&top, &right, &bottom, &left);
    configFile->writeChannels(top, right, bottom, left, bpm);
    mailbox->setCrossBar(static_cast<unsigned char>(top), static_cast<unsigned char>(right),
                         static_cast<unsigned char>(bottom), static_cast<unsigned char>(left), index);
}

void WindowBeamlineConf::refreshFields()
{
    refreshHighVoltage(0);
    if (ui->boxBPM2->isVisible())
        refreshHighVoltage(1);
}

void WindowBeamlineConf::refreshHighVoltage(int bpm)
{
    const AmplifierStatus& status = updater->ionbarStatus[bpm];
    panel(bpm)->setHVstatus(status.highVoltageCode(), double(status.highVoltageVolts()),
                            double(status.highVoltageMicroamps()));
    const bool present = (mailbox->nrIonBars & (1 << bpm)) != 0;
    panel(bpm)->setHVstatusOld(!present || !updater->ionbarStatusRead[bpm]);
}
