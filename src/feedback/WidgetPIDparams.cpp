#include "feedback/WidgetPIDparams.h"

#include "app/Globals.h"
#include "ui_WidgetPIDparams.h"

#include <cmath>

namespace {

long samplesPerPeriod(double freq)
{
    return std::lround(sampFreq / freq);
}

} // namespace

WidgetPIDparams::WidgetPIDparams(QWidget* parent) : QWidget(parent), ui(new Ui::WidgetPIDparams)
{
    ui->setupUi(this);
    connect(ui->curFreqBox, SIGNAL(valueChanged(double)), this, SLOT(calcRealFreq(double)));
    calcRealFreq(freq());
}

WidgetPIDparams::~WidgetPIDparams() = default;

double WidgetPIDparams::freq() const
{
    return ui->curFreqBox->value();
}

void WidgetPIDparams::setFreq(double freq)
{
    ui->curFreqBox->setValue(freq);
    // Also where the field does not change: the loop rate may have.
    calcRealFreq(ui->curFreqBox->value());
}

int WidgetPIDparams::divider() const
{
    return int(samplesPerPeriod(freq()));
}

double WidgetPIDparams::Kp() const
{
    return ui->boxKp->value();
}

double WidgetPIDparams::Ki() const
{
    return ui->boxKi->value();
}

double WidgetPIDparams::Kd() const
{
    return ui->boxKd->value();
}

double WidgetPIDparams::emin() const
{
    return ui->boxemin->value();
}

double WidgetPIDparams::Imax() const
{
    return ui->boxImax->value();
}

double WidgetPIDparams::Omin() const
{
    return ui->boxOmin->value();
}

double WidgetPIDparams::Omax() const
{
    return ui->boxOmax->value();
}

double WidgetPIDparams::Ogain() const
{
    return ui->boxOgain->value();
}

double WidgetPIDparams::offset() const
{
    return ui->offsetDoubleSpinBox->value();
}

void WidgetPIDparams::setParams(double Kp, double Ki, double Kd, double emin, double Imax, double Omin, double Omax,
                                double Ogain, double offset)
{
    ui->boxKp->setValue(Kp);
    ui->boxKi->setValue(Ki);
    ui->boxKd->setValue(Kd);
    ui->boxemin->setValue(emin);
    ui->boxImax->setValue(Imax);
    ui->boxOmin->setValue(Omin);
    ui->boxOmax->setValue(Omax);
    ui->boxOgain->setValue(Ogain);
    ui->offsetDoubleSpinBox->setValue(offset);
}

void WidgetPIDparams::calcRealFreq(double val)
{
    const float real = float(sampFreq) / float(samplesPerPeriod(val));
    ui->realFreqLine->setText(QString::number(double(real), 'f', 2) + QStringLiteral(" Hz"));
}
