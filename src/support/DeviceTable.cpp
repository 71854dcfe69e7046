#include "support/DeviceTable.h"

#include <QDomDocument>
#include <QFile>

namespace {

/// Positions of the children of a "device"; 0 is the id.
enum ChildPosition
{
    GroupPosition = 1,
    NamePosition,
    ImagePosition,
    DescPosition
};

/// First element below the parent, in document order, whose whole text equals the wanted one.
QDomElement elementWithText(const QDomElement& parent, const QString& text)
{
    for (QDomElement child = parent.firstChildElement(); !child.isNull();
         child = child.nextSiblingElement()) {
        if (child.text() == text)
            return child;
        const QDomElement below = elementWithText(child, text);
        if (!below.isNull())
            return below;
    }
    return QDomElement();
}

QString lookUp(const QString& code, ChildPosition position)
{
    QFile file(QStringLiteral(":/product_data/devices.xml"));
    QDomDocument document;
    if (!file.open(QIODevice::ReadOnly) || !document.setContent(&file))
        return QString();
    const QDomElement id = elementWithText(document.firstChild().toElement(), code);
    return id.parentNode().childNodes().at(position).firstChild().nodeValue();
}

} // namespace

QString deviceGroup(const QString& code)
{
    return lookUp(code, GroupPosition);
}

QString deviceName(const QString& code)
{
    return lookUp(code, NamePosition);
}

QString deviceDesc(const QString& code)
{
    return lookUp(code, DescPosition);
}

QString deviceImage(const QString& code)
{
    return QLatin1String(":/product_data/") + lookUp(code, ImagePosition);
}
