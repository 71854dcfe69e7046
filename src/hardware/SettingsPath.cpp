#include "hardware/SettingsPath.h"

QString settingsPath()
{
    return QStringLiteral("/opt/Zenthic/KORALINK/config_koralink.ini");
}
