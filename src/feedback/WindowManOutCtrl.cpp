#include "feedback/WindowManOutCtrl.h"

#include "app/Globals.h"
#include "hardware/MailboxComm.h"
#include "stream/DeviceRecords.h"
#include "support/FieldGuard.h"
#include "ui_WindowManOutCtrl.h"

#include <fcntl.h>

namespace {

constexpr unsigned char sourceDevice = 0;

} // namespace

WindowManOutCtrl::WindowManOutCtrl(QWidget* parent)
    : QDialog(parent), ui(std::make_unique<Ui::WindowManOutCtrl>()), fd(outputDevicePath, O_RDWR | O_SYNC)
{
    ui->setupUi(this);
    new FieldGuard(this);
    QSlider* const formSliders[channelCount] = {ui->ch1slider, ui->ch2slider, ui->ch3slider, ui->ch4slider};
    QDoubleSpinBox* const formBoxes[channelCount] = {ui->boxCh1, ui->boxCh2, ui->boxCh3, ui->boxCh4};
    connect(ui->checboxEnableMan, SIGNAL(toggled(bool)), this, SLOT(enableMan_changed(bool)));
    for (int channel = 0; channel < channelCount; ++channel) {
        sliders[channel] = formSliders[channel];
        boxes[channel] = formBoxes[channel];
        connect(sliders[channel], SIGNAL(valueChanged(int)), this, SLOT(sliders_changed()));
        connect(boxes[channel], SIGNAL(valueChanged(double)), this, SLOT(boxes_changed()));
    }
}

WindowManOutCtrl::~WindowManOutCtrl() = default;

void WindowManOutCtrl::showWindow()
{
    ui->checboxEnableMan->setChecked(mailbox->getOutputMux() == sourceDevice);
    show();
}

void WindowManOutCtrl::enableMan_changed(bool enable)
{
    mailbox->setOutputMux(enable ^ 1);
}

// The two slots below call each other through the signals of the controls, and stop because a control does
// not signal a value that it has already. Each turn writes, and a fraction in an earlier channel can put a
// later slider back.

void WindowManOutCtrl::sliders_changed()
{
    for (int channel = 0; channel < channelCount; ++channel)
        boxes[channel]->setValue(sliders[channel]->value());
    writeOutputs();
}

void WindowManOutCtrl::boxes_changed()
{
    for (int channel = 0; channel < channelCount; ++channel)
        sliders[channel]->setValue(int(boxes[channel]->value()));
    writeOutputs();
}

void WindowManOutCtrl::writeOutputs()
{
    OutputRecord record;
    for (int channel = 0; channel < channelCount; ++channel)
        record.volts[channel] = boxes[channel]->value();
    fd.control(requestSetOutputs, &record);
}
