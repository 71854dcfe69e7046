#include "feedback/BPM.h"

#include "app/Globals.h"
#include "feedback/EncoderScale.h"
#include "hardware/ConfigFile.h"
#include "hardware/MailboxComm.h"
#include "stream/DeviceRecords.h"
#include "support/Legibility.h"
#include "ui_BPM.h"

#include <algorithm>
#include <iterator>

namespace {

const QLatin1String text90("90\xb0");
constexpr int index90 = 0;
constexpr int index45 = 1;

QString highVoltageText(int code)
{
    switch (HighVoltageState(code)) {
    case HighVoltageState::Off:
        return QStringLiteral("HV OFF");
    case HighVoltageState::On:
        return QStringLiteral("HV ON");
    case HighVoltageState::Rising:
        return QStringLiteral("HV rising");
    case HighVoltageState::Falling:
        return QStringLiteral("HV falling");
    }
    return QString();
}

} // namespace

BPM::BPM(QWidget* parent) : QGroupBox(parent), ui(std::make_unique<Ui::BPM>())
{
    ui->setupUi(this);
    // The warning comes and goes; the panel keeps its size.
    QSizePolicy policy = ui->textInvalidConf->sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    ui->textInvalidConf->setSizePolicy(policy);

    connect(ui->BPMorientation, SIGNAL(currentIndexChanged(QString)), this, SLOT(changeBPMorient(QString)));
    connect(ui->enableHVbutton, SIGNAL(released()), this, SLOT(HVenable()));
    connect(ui->setHVbutton, SIGNAL(released()), this, SLOT(HVsetV()));
    connect(ui->encoderSetButton, SIGNAL(released()), this, SLOT(encoderSetPressed()));
    for (QComboBox* box : {ui->BPM90_top, ui->BPM90_right, ui->BPM90_bottom, ui->BPM90_left, ui->BPM45_top,
                           ui->BPM45_right, ui->BPM45_bottom, ui->BPM45_left})
        connect(box, SIGNAL(currentIndexChanged(int)), this, SLOT(checkConfiguration()));

    changeBPMorient(ui->BPMorientation->currentText());
    checkConfiguration();
    setHVstatusOld(false);
}

BPM::~BPM() = default;

int BPM::orientation() const
{
    return ui->BPMorientation->currentText() == text90 ? 1 : 0;
}

void BPM::setOrientation(int value)
{
    if (value == 1)
        ui->BPMorientation->setCurrentIndex(index90);
    else if (value == 0)
        ui->BPMorientation->setCurrentIndex(index45);
    changeBPMorient(ui->BPMorientation->currentText());
}

void BPM::changeBPMorient(QString str)
{
    const bool upright = str == text90;
    ui->BPMvisual90->setVisible(upright);
    ui->BPMvisual45->setVisible(!upright);
}

BPM::ChannelBoxes BPM::channelBoxes() const
{
    if (orientation() == 1)
        return {{ui->BPM90_top, ui->BPM90_right, ui->BPM90_bottom, ui->BPM90_left}};
    return {{ui->BPM45_top, ui->BPM45_right, ui->BPM45_bottom, ui->BPM45_left}};
}

void BPM::channels(int* top, int* right, int* bottom, int* left) const
{
    const ChannelBoxes shown = channelBoxes();
    int* const targets[4] = {top, right, bottom, left};
    for (int i = 0; i < 4; ++i)
        *targets[i] = shown.box[i]->currentIndex();
}

void BPM::setChannels(int top, int right, int bottom, int left)
{
    const ChannelBoxes shown = channelBoxes();
    const int indices[4] = {top, right, bottom, left};
    for (int i = 0; i < 4; ++i)
        shown.box[i]->setCurrentIndex(indices[i]);
}

void BPM::checkConfiguration()
{
    int indices[4];
    channels(&indices[0], &indices[1], &indices[2], &indices[3]);
    std::sort(std::begin(indices), std::end(indices));
    const bool twice = std::adjacent_find(std::begin(indices), std::end(indices)) != std::end(indices);
    ui->textInvalidConf->setVisible(twice);
}

void BPM::scale(double* x, double* y) const
{
    *x = ui->xGain->value();
    *y = ui->yGain->value();
}

void BPM::setScale(double x, double y)
{
    ui->xGain->setValue(x);
    ui->yGain->setValue(y);
    ui->horNradCountDoubleSpinBox->setValue(nanoradiansPerCount(x));
    ui->vertNradCountDoubleSpinBox->setValue(nanoradiansPerCount(y));
    ui->xOffset->setValue(configFile->readOffsetX(bpmIndex));
    ui->yOffset->setValue(configFile->readOffsetY(bpmIndex));
    double ox = 0.0;
    double oy = 0.0;
    offset(&ox, &oy);
    QSpinBox* const hor = ui->horOffsetCountsSpinBox;
    hor->setValue(offsetCounts(ox, x, hor->minimum(), hor->maximum()));
    QSpinBox* const vert = ui->vertOffsetCountsSpinBox;
    vert->setValue(offsetCounts(oy, y, vert->minimum(), vert->maximum()));
}

void BPM::encoderSetPressed()
{
    const double sx = scaleOfNanoradians(ui->horNradCountDoubleSpinBox->value());
    const double sy = scaleOfNanoradians(ui->vertNradCountDoubleSpinBox->value());
    ui->xGain->setValue(sx);
    ui->xOffset->setValue(offsetOfCounts(ui->horOffsetCountsSpinBox->value(), sx));
    ui->yGain->setValue(sy);
    ui->yOffset->setValue(offsetOfCounts(ui->vertOffsetCountsSpinBox->value(), sy));
}

void BPM::offset(double* x, double* y) const
{
    *x = ui->xOffset->value();
    *y = ui->yOffset->value();
}

void BPM::showOffsets(bool visible)
{
    ui->labelOffsetX->setVisible(visible);
    ui->xOffset->setVisible(visible);
    ui->labelOffsetY->setVisible(visible);
    ui->yOffset->setVisible(visible);
}

void BPM::HVenable()
{
    hvEnabled = hvEnabled ? 0 : 1;
    mailbox->ionbarHVenable(hvEnabled, bpmIndex);
}

void BPM::HVsetV()
{
    mailbox->ionbarHVSetVoltage(bpmIndex, float(ui->biasVoltageDoubleSpinBox->value()));
}

void BPM::setHVstatus(int code, double volts, double microamps)
{
    ui->voltageReadoutLineEdit->setText(QString::number(volts, 'f', 2) + QLatin1Char('V'));
    ui->currentReadoutLineEdit->setText(QString::number(microamps, 'f', 2) + QLatin1String("uA"));
    ui->statusLabel->setText(highVoltageText(code));
}

void BPM::setHVstatusOld(bool old)
{
    ui->voltageReadoutLineEdit->setOld(old);
    ui->currentReadoutLineEdit->setOld(old);
    ui->statusLabel->setPalette(old ? legibility::oldValue() : legibility::liveValue());
}

void BPM::showHVpanel(bool hideHV)
{
    ui->hv_widget->setVisible(!hideHV);
    ui->label_2->setVisible(hideHV);
    ui->encoderWidget->setVisible(hideHV);
}
