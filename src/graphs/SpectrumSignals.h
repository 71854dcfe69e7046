#pragma once

#include "stream/DisplayRecord.h"

/// A signal that the spectrum can be taken of.
struct SpectrumSignal
{
    const char* text;
    int slot;            ///< of the display record
    unsigned int colour; ///< 0xRRGGBB
};

/// In the order of the selector. Only the first amplifier and BPM1 can be chosen.
constexpr SpectrumSignal spectrumSignals[] = {
    {"IonBar 1, Ch 1", SlotCur1, 0xdddd00},     {"IonBar 1, Ch 2", SlotCur1 + 1, 0xff005e},
    {"IonBar 1, Ch 3", SlotCur1 + 2, 0x00ff4d}, {"IonBar 1, Ch 4", SlotCur1 + 3, 0x00d5ff},
    {"BPM1, PosX", SlotPos1X, 0xcc00cc},        {"BPM1, PosY", SlotPos1Y, 0x00cccc},
    {"BPM1, I0", SlotInt1, 0xf0f0f0},
};

/// What any other text stands for.
constexpr SpectrumSignal otherSpectrumSignal = {"", SlotPos1X, 0xffffff};
