#include "feedback/WidgetPIDparams.h"

#include "app/Globals.h"
#include "hardware/LoopParameters.h"
#include "ui_WidgetPIDparams.h"

#include <cmath>
#include <iterator>

namespace {

struct ParameterField
{
    QDoubleSpinBox* Ui::WidgetPIDparams::*box;
    double LoopParameters::*value;
};

constexpr ParameterField parameterFields[] = {
    {&Ui::WidgetPIDparams::curFreqBox, &LoopParameters::Freq},
    {&Ui::WidgetPIDparams::boxKp, &LoopParameters::Kp},
    {&Ui::WidgetPIDparams::boxKi, &LoopParameters::Ki},
    {&Ui::WidgetPIDparams::boxKd, &LoopParameters::Kd},
    {&Ui::WidgetPIDparams::boxemin, &LoopParameters::emin},
    {&Ui::WidgetPIDparams::boxImax, &LoopParameters::Imax},
    {&Ui::WidgetPIDparams::boxOmin, &LoopParameters::Omin},
    {&Ui::WidgetPIDparams::boxOmax, &LoopParameters::Omax},
    {&Ui::WidgetPIDparams::boxOgain, &LoopParameters::Ogain},
    {&Ui::WidgetPIDparams::offsetDoubleSpinBox, &LoopParameters::Offset},
};
static_assert(std::size(parameterFields) == std::size(loopParameters));

long samplesPerPeriod(double freq)
{
    return std::lround(sampFreq / freq);
}

} // namespace

WidgetPIDparams::WidgetPIDparams(QWidget* parent) : QWidget(parent), ui(std::make_unique<Ui::WidgetPIDparams>())
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

int WidgetPIDparams::divider() const
{
    return int(samplesPerPeriod(freq()));
}

LoopParameters WidgetPIDparams::parameters() const
{
    LoopParameters shown;
    for (const ParameterField& field : parameterFields)
        shown.*field.value = (ui.get()->*field.box)->value();
    return shown;
}

void WidgetPIDparams::setParameters(const LoopParameters& parameters)
{
    for (const ParameterField& field : parameterFields)
        (ui.get()->*field.box)->setValue(parameters.*field.value);
    // Also where the field does not change: the loop rate may have.
    calcRealFreq(freq());
}

void WidgetPIDparams::calcRealFreq(double val)
{
    const float real = float(sampFreq) / float(samplesPerPeriod(val));
    ui->realFreqLine->setText(QString::number(double(real), 'f', 2) + QStringLiteral(" Hz"));
}
