#include "support/QLed.h"

#include <QPainter>
#include <QSvgRenderer>

QLed::QLed(QWidget* parent)
    : QWidget(parent), shapes{QStringLiteral(":/resources/circle_"), QStringLiteral(":/resources/square_"),
                              QStringLiteral(":/resources/triang_"), QStringLiteral(":/resources/round_")},
      colors{QStringLiteral("red.svg"),  QStringLiteral("green.svg"),  QStringLiteral("yellow.svg"),
             QStringLiteral("grey.svg"), QStringLiteral("orange.svg"), QStringLiteral("purple.svg"),
             QStringLiteral("blue.svg")},
      renderer(new QSvgRenderer)
{
}

QLed::~QLed()
{
    delete renderer;
}

void QLed::setValue(bool value)
{
    lamp.value = value;
    update();
}

void QLed::setOnColor(ledColor color)
{
    lamp.onColor = color;
    update();
}

void QLed::setOffColor(ledColor color)
{
    lamp.offColor = color;
    update();
}

void QLed::setShape(ledShape shape)
{
    lamp.shape = shape;
    update();
}

void QLed::toggleValue()
{
    lamp.value = !lamp.value;
    update();
}

void QLed::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing, true);
    // value() with a fallback: a property can be given any number, and an unknown lamp draws nothing.
    renderer->load(shapes.value(lamp.shape) + colors.value(lamp.value ? lamp.onColor : lamp.offColor));
    renderer->render(&painter);
}
