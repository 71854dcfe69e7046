#include "hardware/VersionText.h"

#include <cstring>

namespace {

/// Newest firmware that still has a fixed display rate and no position offsets.
constexpr char lastFixedRateFirmware[] = "1.0.02";

} // namespace

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
