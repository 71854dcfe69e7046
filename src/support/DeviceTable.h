#pragma once

#include <QByteArray>
#include <QString>

/// The table of products that may sit in an SFP port: the resource ":/product_data/devices.xml", a root
/// element "devices" with one "device" per product, whose children are id, group, name, image and desc in
/// this order. The order is part of the format, and the root is the first node of the file, with neither
/// declaration nor comment before it.
///
/// The look-ups read the table afresh at each call and take the product code as four lower-case hexadecimal
/// digits. A code that is not in the table, and a table that does not parse, give an empty text.
QString deviceGroup(const QString& code);
QString deviceName(const QString& code);
QString deviceDesc(const QString& code);
/// Path of the product's picture; the bare folder ":/product_data/" for a code that is not in the table.
QString deviceImage(const QString& code);

namespace device_table {

/// Positions of the children of a "device"; 0 is the id.
enum Child
{
    Group = 1,
    Name,
    Image,
    Desc
};

/// The same look-up in the bytes of any table.
QString lookUp(const QByteArray& table, const QString& code, Child child);

} // namespace device_table
