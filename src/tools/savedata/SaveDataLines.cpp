#include "tools/savedata/SaveDataLines.h"

#include "app/Globals.h"
#include "stream/SignalTable.h"
#include "tools/FormatG6.h"

#include <algorithm>
#include <array>

namespace {

/// Sources in the order of the columns: the outputs stand behind the monitors.
constexpr SignalSource columnOrder[] = {SignalSource::Amplifier1, SignalSource::Amplifier2, SignalSource::Monitor1,
                                        SignalSource::Monitor2,   SignalSource::Outputs,    SignalSource::Controllers,
                                        SignalSource::Generator};

struct Column
{
    const StreamSignal* signal;
    int channel; ///< its place among the check boxes
};

constexpr std::array<Column, save_data::channelCount> columnsInOrder()
{
    std::array<Column, save_data::channelCount> columns = {};
    auto column = columns.begin();
    for (SignalSource source : columnOrder) {
        int channel = 0;
        for (const StreamSignal& signal : signalTable) {
            if (!signal.column.object)
                continue;
            if (signal.source == source)
                *column++ = {&signal, channel};
            ++channel;
        }
    }
    return columns;
}

constexpr std::array<Column, save_data::channelCount> columns = columnsInOrder();
static_assert(columns.back().signal, "columnOrder names every source that is saved");

constexpr char separator[] = ", ";
constexpr char lineEnd[] = "\r\n";

char* append(char* out, const char (&text)[3])
{
    *out++ = text[0];
    *out++ = text[1];
    return out;
}

} // namespace

QString save_data::columnHeader(const bool (&enabled)[channelCount])
{
    QString line = QStringLiteral("Nr, Rel. time, ");
    for (const Column& column : columns) {
        if (enabled[column.channel])
            line += QLatin1String(column.signal->column.title);
    }
    return line + QLatin1String(lineEnd);
}

QString save_data::dataRow(const DisplayRecord& record, int index, int rateHz, const bool (&enabled)[channelCount])
{
    char line[(channelCount + 2) * (formatG6Room + 2) + 2];
    const QByteArray number = QByteArray::number(index);
    char* out = std::copy(number.begin(), number.end(), line);
    out = append(out, separator);
    out = append(formatG6(out, double(float(index) / float(rateHz))), separator);
    for (const Column& column : columns) {
        if (!enabled[column.channel])
            continue;
        const double factor = factorOf(column.signal->scale, bpmScaleX, bpmScaleY);
        out = append(formatG6(out, factor * column.signal->rawValue(record)), separator);
    }
    out = append(out, lineEnd);
    return QString::fromLatin1(line, int(out - line));
}
