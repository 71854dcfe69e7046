#include "support/SvgPicture.h"

#include <QPainter>
#include <QSvgRenderer>

SvgPicture::SvgPicture(QWidget* parent) : QWidget(parent) {}

void SvgPicture::setFile(const QString& file)
{
    path = file;
    update();
}

void SvgPicture::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing, true);
    QSvgRenderer(path).render(&painter);
}
