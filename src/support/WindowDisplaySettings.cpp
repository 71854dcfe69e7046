#include "support/WindowDisplaySettings.h"

#include "app/Globals.h"
#include "graphs/PausedMark.h"
#include "hardware/MailboxComm.h"
#include "stream/DisplayRecord.h"
#include "stream/Updater.h"
#include "support/FieldGuard.h"

#include "ui_WindowDisplaySettings.h"

WindowDisplaySettings::WindowDisplaySettings(QWidget* parent)
    : QDialog(parent), ui(std::make_unique<Ui::WindowDisplaySettings>())
{
    ui->setupUi(this);
    new FieldGuard(this);
    ui->dispFreqBox->setValue(SAMP_FREQ);
    bool filterEnabled = false;
    mailbox->getDisplayFreq(&filterEnabled);
    ui->enableFilterCheckBox->setChecked(filterEnabled);
    connect(ui->buttonBox, SIGNAL(accepted()), this, SLOT(saveSettings()));
    connect(ui->pauseCheckBox, SIGNAL(toggled(bool)), this, SLOT(pauseButtonChanged(bool)));
}

WindowDisplaySettings::~WindowDisplaySettings() = default;

void WindowDisplaySettings::showAndRefresh()
{
    show();
    ui->pauseCheckBox->setChecked(updater->paused);
    ui->dispFreqBox->setValue(SAMP_FREQ);
    ui->bufferSamplesComboBox->setCurrentText(QString::number(dispBufferBytes / recordBytes));
}

void WindowDisplaySettings::saveSettings()
{
    SAMP_FREQ = int(ui->dispFreqBox->value());
    mailbox->setDisplayFreq(ui->enableFilterCheckBox->isChecked());
    bool converted = false;
    const int samples = ui->bufferSamplesComboBox->currentText().toInt(&converted, 10);
    if (converted)
        dispBufferBytes = samples * recordBytes;
}

void WindowDisplaySettings::pauseButtonChanged(bool checked)
{
    updater->paused = checked;
    PausedMark::refreshAll();
}
