#include "support/SharpPicture.h"

QPixmap sharpPicture(const QString& path, qreal ratio)
{
    if (ratio <= 1)
        return QPixmap(path);
    QPixmap picture(QString(path).replace(QLatin1String(".png"), QLatin1String("@2x.png")));
    picture.setDevicePixelRatio(2);
    return picture;
}
