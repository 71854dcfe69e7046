#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

/// All bytes of a file; none where it cannot be read.
inline QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}
