#pragma once

#include "archive/StatusSample.h"

#include <cstddef>

namespace kora::archive {

enum class FieldType
{
    Int32,
    UInt32,
    Double,
    Byte
};

/// A column of the status: where its row lies in a StatusSample.
struct StatusField
{
    const char* name;
    std::size_t offset;
    FieldType type;
    int shape[2]; ///< 0 for a dimension that is not there
    const char* units;
    const char* longName;

    constexpr int values() const { return (shape[0] > 0 ? shape[0] : 1) * (shape[1] > 0 ? shape[1] : 1); }
};

/// The first one is the signal that plots by default.
constexpr StatusField statusFields[] = {
    {"value",
     offsetof(StatusSample, feedback),
     FieldType::Int32,
     {0, 0},
     "",
     "Feedback: 0 off, 1 out of the region of confidence, 2 beam off, 3 on"},
    {"unreadable", offsetof(StatusSample, unreadable), FieldType::UInt32, {0, 0}, "", "Bits of what could not be read"},
    {"configuration", offsetof(StatusSample, configuration), FieldType::Int32, {0, 0}, "", "Loop configuration code"},
    {"setpoint", offsetof(StatusSample, setpoints), FieldType::Double, {4, 0}, "um", "Set-points of Xlf Xhf Ylf Yhf"},
    {"output", offsetof(StatusSample, outputs), FieldType::Int32, {4, 0}, "", "Outputs of Xlf Xhf Ylf Yhf"},
    {"bpm", offsetof(StatusSample, selectors), FieldType::Int32, {4, 0}, "", "BPMs of Xlf Xhf Ylf Yhf"},
    {"output_source", offsetof(StatusSample, outputSource), FieldType::Int32, {0, 0}, "", "1 loops, 0 direct writes"},
    {"region_enabled",
     offsetof(StatusSample, regionsEnabled),
     FieldType::Int32,
     {6, 0},
     "",
     "Checks of BPM1 X, Y, beam off, and of BPM2"},
    {"statistics",
     offsetof(StatusSample, statistics) + offsetof(BPMStats, bpm),
     FieldType::Double,
     {2, 9},
     "",
     "By BPM: mean, std, std at 1 kHz of raw X, raw Y and intensity in A"},
    {"port",
     offsetof(StatusSample, ports),
     FieldType::Byte,
     {4, sizeof(SFPinfo)},
     "",
     "By port: product code u16, 2 bytes of padding, hardware version u32, 4 characters of version, serial number u32"},
    {"amplifier",
     offsetof(StatusSample, amplifiers),
     FieldType::Byte,
     {2, sizeof(AmplifierStatus)},
     "",
     "By amplifier: the 64 bytes of its status as the driver delivers them"},
    {"rate", offsetof(StatusSample, rate), FieldType::Int32, {0, 0}, "Hz", "Rate of the display stream"},
    {"filter", offsetof(StatusSample, filter), FieldType::Int32, {0, 0}, "", "1 with the stream's anti-alias filter"},
};
constexpr int statusFieldCount = int(sizeof(statusFields) / sizeof(statusFields[0]));
static_assert(sizeof(SFPinfo) == 16);

} // namespace kora::archive
