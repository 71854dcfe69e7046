#include "tools/savedata/SaveDataLines.h"

#include "app/Globals.h"
#include "stream/DisplayRecord.h"
#include "tools/FormatG6.h"

#include <algorithm>

namespace {

struct Channel
{
    const char* title;
    int slot;
    const double* scale; ///< null for a value that is used as it stands
};

// clang-format off
constexpr Channel channels[save_data::channelCount] = {
    {"IonBar Ch1, ", SlotCur1, nullptr},
    {"IonBar Ch2, ", SlotCur1 + 1, nullptr},
    {"IonBar Ch3, ", SlotCur1 + 2, nullptr},
    {"IonBar Ch4, ", SlotCur1 + 3, nullptr},
    {"IonBar2 Ch1, ", SlotCur2, nullptr},
    {"IonBar2 Ch2, ", SlotCur2 + 1, nullptr},
    {"IonBar2 Ch3, ", SlotCur2 + 2, nullptr},
    {"IonBar2 Ch4, ", SlotCur2 + 3, nullptr},
    {"Anvolt Ch1, ", SlotDac, nullptr},
    {"Anvolt Ch2, ", SlotDac + 1, nullptr},
    {"Anvolt Ch3, ", SlotDac + 2, nullptr},
    {"BPM1 Pos X, ", SlotPos1X, &bpmScaleX[0]},
    {"BPM1 Pos Y, ", SlotPos1Y, &bpmScaleY[0]},
    {"BPM1 I0, ", SlotInt1, nullptr},
    {"BPM2 Pos X, ", SlotPos2X, &bpmScaleX[1]},
    {"BPM2 Pos Y, ", SlotPos2Y, &bpmScaleY[1]},
    {"BPM2 I0, ", SlotInt2, nullptr},
};
// clang-format on

/// Channels in the order of the columns: the outputs come last.
constexpr int columns[save_data::channelCount] = {0, 1, 2, 3, 4, 5, 6, 7, 11, 12, 13, 14, 15, 16, 8, 9, 10};

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
    for (int column : columns) {
        if (enabled[column])
            line += QLatin1String(channels[column].title);
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
    for (int column : columns) {
        if (!enabled[column])
            continue;
        const Channel& channel = channels[column];
        const double raw = slotValue(record, channel.slot);
        out = append(formatG6(out, channel.scale ? raw * *channel.scale : raw), separator);
    }
    out = append(out, lineEnd);
    return QString::fromLatin1(line, int(out - line));
}
