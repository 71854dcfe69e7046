#include "support/QLed.h"

#include <QPainter>
#include <QSvgRenderer>

namespace {

/// Where the picture of a lamp is. A property can be given any number: an unknown lamp has none.
QString pictureOf(int shape, int color)
{
    static const QStringList shapes{QStringLiteral(":/resources/circle_"), QStringLiteral(":/resources/square_"),
                                    QStringLiteral(":/resources/triang_"), QStringLiteral(":/resources/round_")};
    static const QStringList colors{QStringLiteral("red.svg"),    QStringLiteral("green.svg"),
                                    QStringLiteral("yellow.svg"), QStringLiteral("grey.svg"),
                                    QStringLiteral("orange.svg"), QStringLiteral("purple.svg"),
                                    QStringLiteral("blue.svg")};
    return shapes.value(shape) + colors.value(color);
}

} // namespace

QLed::QLed(QWidget* parent) : QWidget(parent), renderer(new QSvgRenderer) {}

QLed::~QLed()
{
    delete renderer;
}

QIcon QLed::icon(ledShape shape, ledColor color)
{
    QIcon icon;
    QSvgRenderer picture(pictureOf(shape, color));
    if (!picture.isValid())
        return icon;
    // Small icons of usual styles at one to four times the resolution.
    for (const int side : {16, 24, 32, 48, 64}) {
        QPixmap pixmap(side, side);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        painter.setRenderHint(QPainter::Antialiasing, true);
        picture.render(&painter);
        painter.end();
        icon.addPixmap(pixmap, QIcon::Normal);
        icon.addPixmap(pixmap, QIcon::Disabled);
    }
    return icon;
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
    renderer->load(pictureOf(lamp.shape, lamp.value ? lamp.onColor : lamp.offColor));
    renderer->render(&painter);
}
