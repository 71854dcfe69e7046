#include "feedback/WindowFiltparams.h"

#include "app/Globals.h"
#include "feedback/DialogButtons.h"
#include "feedback/FilterDesign.h"
#include "hardware/ConfigFile.h"
#include "hardware/koralink.h"
#include "support/FieldGuard.h"
#include "ui_WindowFiltparams.h"

namespace {

constexpr int bandLf = 0;
constexpr int axisX = 0;
constexpr int axisY = 1;
constexpr int numerator = 0;
constexpr int denominator = 1;
constexpr int lowpassOrder = 4;
/// The band-pass doubles it to a digital order of 4.
constexpr int bandpassPrototypeOrder = 2;
constexpr int lastCoefficient = 4;

} // namespace

WindowFiltparams::WindowFiltparams(QWidget* parent) : QDialog(parent), ui(std::make_unique<Ui::WindowFiltparams>())
{
    ui->setupUi(this);
    new FieldGuard(this);
    connect(ui->comboBoxFilterXlf, SIGNAL(currentIndexChanged(int)), this, SLOT(updateFilterXlf()));
    connect(ui->comboBoxFilterYlf, SIGNAL(currentIndexChanged(int)), this, SLOT(updateFilterYlf()));
    connect(ui->buttonBox, SIGNAL(clicked(QAbstractButton*)), this, SLOT(buttonPressed(QAbstractButton*)));
}

WindowFiltparams::~WindowFiltparams() = default;

void WindowFiltparams::showWindow()
{
    checkUserLevel();
    loadFilterSettings();
    show();
}

WindowFiltparams::Filter WindowFiltparams::filter(int band, int axis)
{
    if (band == bandLf) {
        return axis == axisX ? Filter{ui->comboBoxFilterXlf, ui->doubleSpinBoxXlfLow, nullptr, &aXlf, &bXlf}
                             : Filter{ui->comboBoxFilterYlf, ui->doubleSpinBoxYlfLow, nullptr, &aYlf, &bYlf};
    }
    return axis == axisX
               ? Filter{ui->comboBoxFilterXhf, ui->doubleSpinBoxXhfLow, ui->doubleSpinBoxXhfHigh, &aXhf, &bXhf}
               : Filter{ui->comboBoxFilterYhf, ui->doubleSpinBoxYhfLow, ui->doubleSpinBoxYhfHigh, &aYhf, &bYhf};
}

void WindowFiltparams::loadFilterSettings()
{
    for (int band = 0; band < 2; ++band) {
        for (int axis = 0; axis < 2; ++axis) {
            const Filter fields = filter(band, axis);
            int type = 0;
            double low = 0.0;
            double high = 0.0;
            configFile->readPositionFilter(band, axis, &type, &low, &high);
            // A type that the combo does not offer leaves it as it is: an empty selection would send
            // coefficients that nobody designed to a filter that acts.
            if (type >= 0 && type < fields.type->count())
                fields.type->setCurrentIndex(type);
            fields.low->setValue(low);
            if (fields.high)
                fields.high->setValue(high);
        }
    }
}

void WindowFiltparams::saveFilterSettings()
{
    for (int band = 0; band < 2; ++band) {
        for (int axis = 0; axis < 2; ++axis) {
            const Filter fields = filter(band, axis);
            configFile->writePositionFilter(band, axis, unsigned(fields.type->currentIndex()), fields.low->value(),
                                            fields.high ? fields.high->value() : 0.0);
        }
    }
}

int WindowFiltparams::filterChanged(int band, int axis)
{
    const Filter fields = filter(band, axis);
    int type = 0;
    double low = 0.0;
    double high = 0.0;
    configFile->readPositionFilter(band, axis, &type, &low, &high);
    const bool same = fields.type->currentIndex() == type && fields.low->value() == low &&
                      (!fields.high || fields.high->value() == high);
    return same ? 0 : 1;
}

void WindowFiltparams::designFilter(int band, int axis)
{
    const Filter fields = filter(band, axis);
    if (fields.type->currentIndex() != 0)
        return;
    if (band == bandLf)
        butterLowpass(lowpassOrder, fields.low->value(), Ts, *fields.b, *fields.a);
    else
        butterBandpass(bandpassPrototypeOrder, fields.low->value(), fields.high->value(), Ts, *fields.b, *fields.a);
}

int WindowFiltparams::writeFilterCoefficients(int band, int axis)
{
    const Filter fields = filter(band, axis);
    const auto bandCode = static_cast<signed char>(band);
    const auto axisCode = static_cast<signed char>(axis);
    int sum = setFiltCoef(bandCode, axisCode, numerator, 0, (*fields.b)(0));
    for (int k = 1; k <= lastCoefficient; ++k) {
        // The hardware adds the feedback terms, hence the sign; a[0] is 1 by agreement and is not sent.
        sum += setFiltCoef(bandCode, axisCode, denominator, k, -(*fields.a)(k));
        sum += setFiltCoef(bandCode, axisCode, numerator, k, (*fields.b)(k));
    }
    return sum;
}

void WindowFiltparams::commitFilter(int band, int axis)
{
    commitFiltCoef(static_cast<signed char>(band), static_cast<signed char>(axis));
}

void WindowFiltparams::updateFilterXlf()
{
    applyType(axisX, ui->comboBoxFilterXlf->currentIndex(), ui->widgetXlf);
}

void WindowFiltparams::updateFilterYlf()
{
    applyType(axisY, ui->comboBoxFilterYlf->currentIndex(), ui->widgetYlf);
}

void WindowFiltparams::applyType(int axis, int type, QWidget* panel)
{
    const bool fullBand = type != 0;
    setFiltControl(bandLf, static_cast<signed char>(axis), fullBand ? 1 : 0);
    panel->setVisible(!fullBand);
}

void WindowFiltparams::checkUserLevel()
{
    if (userLevel < 2)
        ui->groupBoxConfigFilters->setEnabled(false);
    else if (userLevel == 2)
        ui->groupBoxConfigFilters->setEnabled(true);
}

void WindowFiltparams::buttonPressed(QAbstractButton* button)
{
    if (!isOkOrApply(button) || userLevel != 2)
        return;
    for (int band = 0; band < 2; ++band) {
        for (int axis = 0; axis < 2; ++axis) {
            if (!filterChanged(band, axis))
                continue;
            designFilter(band, axis);
            writeFilterCoefficients(band, axis);
            commitFilter(band, axis);
        }
    }
    saveFilterSettings();
}
