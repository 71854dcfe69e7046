#include "tour/Findings.h"

#include <algorithm>
#include <cmath>

namespace {

QString number(double value, const QString& unit)
{
    const QString digits = QString::number(value, 'g', 4);
    return unit.isEmpty() ? digits : digits + QLatin1Char(' ') + unit;
}

} // namespace

void Findings::near(const QString& what, const QString& unit, double expected, double tolerance, double measured)
{
    append(what, QStringLiteral("%1 +- %2").arg(QString::number(expected, 'g', 4), number(tolerance, unit)),
           number(measured, unit), std::fabs(measured - expected) <= tolerance);
}

void Findings::atMost(const QString& what, const QString& unit, double limit, double measured)
{
    append(what, QStringLiteral("at most ") + number(limit, unit), number(measured, unit), measured <= limit);
}

void Findings::equal(const QString& what, const QString& expected, const QString& measured)
{
    append(what, expected, measured, expected == measured);
}

void Findings::holds(const QString& what, bool held)
{
    append(what, QStringLiteral("yes"), held ? QStringLiteral("yes") : QStringLiteral("no"), held);
}

void Findings::append(const QString& what, const QString& expected, const QString& measured, bool held)
{
    kept.append({chapter, what, expected, measured, held});
}

bool Findings::allHold() const
{
    return !kept.isEmpty() && std::all_of(kept.begin(), kept.end(), [](const Row& row) { return row.holds; });
}

QString Findings::table() const
{
    const QString expectedTitle = QStringLiteral("expected");
    const QString measuredTitle = QStringLiteral("measured");
    int whatWidth = 0;
    int expectedWidth = expectedTitle.size();
    int measuredWidth = measuredTitle.size();
    for (const Row& row : kept) {
        whatWidth = std::max(whatWidth, row.what.size());
        expectedWidth = std::max(expectedWidth, row.expected.size());
        measuredWidth = std::max(measuredWidth, row.measured.size());
    }
    const auto line = [&](const QString& what, const QString& expected, const QString& measured, const QString& held) {
        const QString columns = what.leftJustified(whatWidth) + QStringLiteral("  ") +
                                expected.leftJustified(expectedWidth) + QStringLiteral("  ") + measured;
        return held.isEmpty() ? QStringLiteral("  %1\n").arg(columns)
                              : QStringLiteral("  %1  %2\n")
                                    .arg(columns.leftJustified(columns.size() - measured.size() + measuredWidth), held);
    };

    QString text;
    QString shown;
    for (const Row& row : kept) {
        if (row.chapter != shown) {
            shown = row.chapter;
            text += QLatin1Char('\n') + shown + QLatin1Char('\n');
            text += line(QString(), expectedTitle, measuredTitle, QString());
        }
        text += line(row.what, row.expected, row.measured,
                     row.holds ? QStringLiteral("holds") : QStringLiteral("DOES NOT HOLD"));
    }
    const auto held = std::count_if(kept.begin(), kept.end(), [](const Row& row) { return row.holds; });
    return text + QStringLiteral("\n%1 of %2 figures hold\n").arg(held).arg(kept.size());
}
