#include "hardware/VersionText.h"

#include "app/Globals.h"

#include <cstring>

QString versionText(std::uint32_t packed)
{
    unsigned char bytes[4];
    std::memcpy(bytes, &packed, sizeof bytes);
    return QStringLiteral("%1.%2.%3%4").arg(bytes[0]).arg(bytes[1]).arg(bytes[2]).arg(bytes[3]);
}

bool firmwareHasVariableRate(const QString& swVersion)
{
    return QLatin1String(lastFixedRateFirmware) < swVersion;
}
