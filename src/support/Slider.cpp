#include "support/Slider.h"

#include "ui_Slider.h"

#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QSlider>

#include <cmath>
#include <limits>

namespace {

constexpr int tickHeight = 8;

/// Integer part of a number, with the result of the processor's conversion where there is none: the smallest
/// int. The bar ignores that, the slider stops at its lower end.
int integerPart(double number)
{
    constexpr double limit = std::numeric_limits<int>::max();
    return std::abs(number) <= limit ? int(number) : std::numeric_limits<int>::min();
}

void emptyLayout(QLayout* layout)
{
    while (QLayoutItem* item = layout->takeAt(0)) {
        delete item->widget();
        if (item->layout())
            emptyLayout(item->layout());
        delete item;
    }
}

QLabel* scaleLabel(const QString& text, Qt::Alignment alignment)
{
    auto* label = new QLabel(text);
    label->setAlignment(alignment);
    return label;
}

QFrame* tickMark()
{
    auto* mark = new QFrame;
    mark->setFrameShape(QFrame::VLine);
    mark->setMinimumHeight(tickHeight);
    return mark;
}

} // namespace

Slider::Slider(QWidget* parent)
    : QWidget(parent), ui(std::make_unique<Ui::Slider>()), bar(new QProgressBar), slider(new QSlider(Qt::Horizontal)),
      labelRow(new QHBoxLayout), tickRow(new QHBoxLayout)
{
    ui->setupUi(this);
    bar->setObjectName(QStringLiteral("bar"));
    bar->setTextVisible(false);
    bar->setMinimumHeight(30);
    slider->setObjectName(QStringLiteral("slider"));
    slider->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    labelRow->setObjectName(QStringLiteral("labelRow"));
    tickRow->setObjectName(QStringLiteral("tickRow"));

    ui->gridLayout->addWidget(bar, 0, 0);
    ui->gridLayout->addLayout(tickRow, 0, 0, Qt::AlignBottom);
    ui->gridLayout->addWidget(slider, 0, 0);
    ui->gridLayout->addLayout(labelRow, 1, 0, Qt::AlignTop);
    ui->gridLayout->setRowMinimumHeight(0, 55);

    connect(slider, SIGNAL(valueChanged(int)), this, SLOT(signalSender(int)));
    setScale(5, 0.0F, 1.0F);
}

Slider::~Slider() = default;

void Slider::setScale(int ticks, float min, float max)
{
    emptyLayout(labelRow);
    emptyLayout(tickRow);
    minValue = min;
    maxValue = max;
    if (ticks > 0) {
        const float step = (max - min) / float(ticks);
        for (int i = 0; i < ticks; ++i) {
            labelRow->addWidget(scaleLabel(QString::number(double(float(i) * step + min), 'g', 6), Qt::AlignCenter));
            labelRow->addStretch();
        }
    }
    labelRow->addWidget(scaleLabel(QString::number(double(max), 'e', 0), Qt::AlignRight));
    for (int i = 0; i < ticks; ++i) {
        tickRow->addWidget(tickMark());
        tickRow->addStretch();
    }
    tickRow->addWidget(tickMark());
}

void Slider::setBarValue(float value)
{
    if (value < minValue)
        bar->setValue(0);
    else if (value > maxValue)
        bar->setValue(100);
    else
        bar->setValue(integerPart((value - minValue) * 100.0 / (maxValue - minValue)));
}

void Slider::setSliderPosition(float value)
{
    slider->setValue(integerPart(value * 100.0 / (maxValue - minValue) - minValue));
}

void Slider::setValue(float value)
{
    const float base = std::ceil(log10f(value));
    setScale(5, 0.0F, float(std::pow(double(base), 10.0)));
    setBarValue(value);
}

void Slider::signalSender(int val)
{
    emit valueChanged(float(val / 100.0 * (maxValue - minValue) + minValue));
}
