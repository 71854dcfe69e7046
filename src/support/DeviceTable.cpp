#include "support/DeviceTable.h"

#include <QDomDocument>
#include <QFile>

namespace {

/// First element below the parent, in document order, whose whole text equals the wanted one.
QDomElement elementWithText(const QDomElement& parent, const QString& text)
{
    for (QDomElement child = parent.firstChildElement(); !child.isNull(); child = child.nextSiblingElement()) {
        if (child.text() == text)
            return child;
        const QDomElement below = elementWithText(child, text);
        if (!below.isNull())
            return below;
    }
    return QDomElement();
}

QString lookUp(const QString& code, device_table::Child child)
{
    QFile file(QStringLiteral(":/product_data/devices.xml"));
    return file.open(QIODevice::ReadOnly) ? device_table::lookUp(file.readAll(), code, child) : QString();
}

} // namespace

QString device_table::lookUp(const QByteArray& table, const QString& code, Child child)
{
    QDomDocument document;
    if (!document.setContent(table))
        return QString();
    const QDomElement id = elementWithText(document.firstChild().toElement(), code);
    return id.parentNode().childNodes().at(child).firstChild().nodeValue();
}

QString deviceGroup(const QString& code)
{
    return lookUp(code, device_table::Group);
}

QString deviceName(const QString& code)
{
    return lookUp(code, device_table::Name);
}

QString deviceDesc(const QString& code)
{
    return lookUp(code, device_table::Desc);
}

QString deviceImage(const QString& code)
{
    return QLatin1String(":/product_data/") + lookUp(code, device_table::Image);
}
