#pragma once

#include <cstddef>
#include <cstring>

/// One record of the display stream as the FPGA delivers it: 256 bytes, little-endian, no framing.
/// A block holds consecutive records, the oldest first; record i lies i / SAMP_FREQ seconds after the first.
struct DisplayRecord
{
    double pos1X; ///< BPM1 position X, raw; times bpmScaleX[0] gives micrometres
    double pos1Y;
    double int1; ///< BPM1 intensity, A
    double reserved3;
    double pos2X;
    double pos2Y;
    double int2;
    float funcGenRefA; ///< reference signals of the function generator
    float funcGenRefB;
    double dac[4]; ///< analogue outputs, V
    double xLf;    ///< low-frequency X path, raw; scaled with the factor of BPM1 whichever BPM feeds it
    double xHf;
    double yLf;
    double yHf;
    double reserved16[8];
    double cur1[4]; ///< amplifier 1, channels 1 to 4, A
    double cur2[4]; ///< amplifier 2, channels 1 to 4, A
};

static_assert(sizeof(DisplayRecord) == 256);
static_assert(offsetof(DisplayRecord, pos2X) == 32);
static_assert(offsetof(DisplayRecord, funcGenRefA) == 56);
static_assert(offsetof(DisplayRecord, funcGenRefB) == 60);
static_assert(offsetof(DisplayRecord, dac) == 64);
static_assert(offsetof(DisplayRecord, xLf) == 96);
static_assert(offsetof(DisplayRecord, yHf) == 120);
static_assert(offsetof(DisplayRecord, cur1) == 192);
static_assert(offsetof(DisplayRecord, cur2) == 224);

constexpr int recordBytes = sizeof(DisplayRecord);
/// Largest block that anyone asks for: 14336 records.
constexpr int largestBlockBytes = 0x380000;
constexpr int largestBlockRecords = largestBlockBytes / recordBytes;

/// Slots of eight bytes within a record, where signals are chosen by number.
enum RecordSlot
{
    SlotPos1X = 0,
    SlotPos1Y = 1,
    SlotInt1 = 2,
    SlotPos2X = 4,
    SlotPos2Y = 5,
    SlotInt2 = 6,
    SlotDac = 8,
    SlotXLf = 12,
    SlotXHf = 13,
    SlotYLf = 14,
    SlotYHf = 15,
    SlotCur1 = 24,
    SlotCur2 = 28,
    slotsPerRecord = 32
};

/// The value of a slot of doubles, raw.
inline double slotValue(const DisplayRecord& record, int slot)
{
    double value;
    std::memcpy(&value, reinterpret_cast<const char*>(&record) + std::size_t(slot) * sizeof value, sizeof value);
    return value;
}
