#include "graphs/ArmedTarget.h"

#include <QAbstractButton>
#include <QPalette>

ArmedTarget::ArmedTarget(QAbstractButton* button, QWidget* plot, const QColor& colour)
    : QObject(button), button(button), plot(plot), colour(colour)
{
    connect(button, SIGNAL(toggled(bool)), this, SLOT(show(bool)));
}

void ArmedTarget::show(bool armed)
{
    QPalette palette;
    if (armed) {
        palette.setColor(QPalette::Button, colour);
        palette.setColor(QPalette::ButtonText, Qt::black);
        plot->setCursor(Qt::CrossCursor);
    } else {
        plot->unsetCursor();
    }
    button->setPalette(palette);
}
