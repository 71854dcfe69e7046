#pragma once

#include "stream/DisplayRecord.h"
#include "stream/Updater.h"

/// Factor from a slot of the record to what the screens show.
enum class SlotScale
{
    None,
    Bpm1X,
    Bpm1Y,
    Bpm2X,
    Bpm2Y
};

/// Where a trace against time comes from.
struct TimeTrace
{
    Updater::GraphKind kind;
    int channel;
    int slot;
    SlotScale scale;
};

/// The paths of the controllers keep the factor of BPM1 whichever monitor feeds them.
constexpr TimeTrace timeTraces[] = {
    {Updater::KindCurrents1, 0, SlotCur1, SlotScale::None},
    {Updater::KindCurrents1, 1, SlotCur1 + 1, SlotScale::None},
    {Updater::KindCurrents1, 2, SlotCur1 + 2, SlotScale::None},
    {Updater::KindCurrents1, 3, SlotCur1 + 3, SlotScale::None},
    {Updater::KindCurrents2, 0, SlotCur2, SlotScale::None},
    {Updater::KindCurrents2, 1, SlotCur2 + 1, SlotScale::None},
    {Updater::KindCurrents2, 2, SlotCur2 + 2, SlotScale::None},
    {Updater::KindCurrents2, 3, SlotCur2 + 3, SlotScale::None},
    {Updater::KindPosX, 0, SlotPos1X, SlotScale::Bpm1X},
    {Updater::KindPosX, 1, SlotPos2X, SlotScale::Bpm2X},
    {Updater::KindPosX, 2, SlotXLf, SlotScale::Bpm1X},
    {Updater::KindPosX, 3, SlotXHf, SlotScale::Bpm1X},
    {Updater::KindPosY, 0, SlotPos1Y, SlotScale::Bpm1Y},
    {Updater::KindPosY, 1, SlotPos2Y, SlotScale::Bpm2Y},
    {Updater::KindPosY, 2, SlotYLf, SlotScale::Bpm1Y},
    {Updater::KindPosY, 3, SlotYHf, SlotScale::Bpm1Y},
    {Updater::KindInt, 0, SlotInt1, SlotScale::None},
    {Updater::KindInt, 1, SlotInt2, SlotScale::None},
    {Updater::KindDAC, 0, SlotDac, SlotScale::None},
    {Updater::KindDAC, 1, SlotDac + 1, SlotScale::None},
    {Updater::KindDAC, 2, SlotDac + 2, SlotScale::None},
    {Updater::KindDAC, 3, SlotDac + 3, SlotScale::None},
};

constexpr int timeTraceCount = sizeof(timeTraces) / sizeof(timeTraces[0]);

/// Position slots of the two monitors, for the XY clouds.
constexpr int cloudSlots[2][2] = {{SlotPos1X, SlotPos1Y}, {SlotPos2X, SlotPos2Y}};
