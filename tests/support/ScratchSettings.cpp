#include "support/ScratchSettings.h"

#include "hardware/SettingsPath.h"

#include <QFile>
#include <QSettings>
#include <QTemporaryDir>

namespace {

QString firstPath()
{
    static const QTemporaryDir folder;
    return folder.filePath(QStringLiteral("config_koralink.ini"));
}

QString& presentPath()
{
    static QString path = firstPath();
    return path;
}

} // namespace

QString settingsPath()
{
    return presentPath();
}

void scratch_settings::clear()
{
    presentPath() = firstPath();
    QFile::remove(firstPath());
}

void scratch_settings::setPath(const QString& path)
{
    presentPath() = path;
}

QVariant scratch_settings::value(const char* key)
{
    return QSettings(presentPath(), QSettings::IniFormat).value(QString::fromLatin1(key));
}

void scratch_settings::setValue(const char* key, const QVariant& newValue)
{
    QSettings(presentPath(), QSettings::IniFormat).setValue(QString::fromLatin1(key), newValue);
}
