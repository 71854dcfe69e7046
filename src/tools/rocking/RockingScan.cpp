#include "tools/rocking/RockingScan.h"

#include <algorithm>

namespace {

QString electrodeName(const QString& electrode, int channel)
{
    return QStringLiteral("%1 (ch %2)").arg(electrode).arg(channel + 1);
}

rocking_scan::Traces pairOf(const QString& first, int firstChannel, const QString& second, int secondChannel)
{
    const int channels[2] = {std::clamp(firstChannel, 0, 3), std::clamp(secondChannel, 0, 3)};
    return {{channels[0], channels[1]},
            {electrodeName(first, channels[0]), electrodeName(second, channels[1]),
             QStringLiteral("sum (%1+%2)").arg(first, second)}};
}

} // namespace

double rocking_scan::pointVolts(double start, double stop, int i, int n)
{
    return start + (double(i) / n) * (stop - start);
}

OutputRecord rocking_scan::outputs(int swept, double sweptVolts, int held, double heldVolts)
{
    OutputRecord record;
    record.set(swept, sweptVolts);
    record.set(held, heldVolts);
    record.volts[2] = 0;
    record.volts[3] = 0;
    return record;
}

rocking_scan::Traces rocking_scan::traces(Direction direction, const Electrodes& electrodes)
{
    if (direction == PosX)
        return pairOf(QStringLiteral("left"), electrodes.left, QStringLiteral("right"), electrodes.right);
    return pairOf(QStringLiteral("top"), electrodes.top, QStringLiteral("bottom"), electrodes.bottom);
}
