#pragma once

#include "stream/StreamSignal.h"

#include <vector>

/// The signals of the display stream, one row each: all that decoder, graphs, Save data, spectrum and the programs
/// beside this one know of them. Whoever shows signals takes from here how many there are, and in which order.
///
/// The paths of the controllers keep the factor of BPM1 whichever monitor feeds them. The fourth legend of the second
/// amplifier has no 2. The fourth output is not saved. The spectrum offers the first amplifier and BPM1 alone.
// clang-format off
inline constexpr StreamSignal signalTable[] = {
    // name, place, source, quantity, scale, meaning
    //     graph, legend, check box, its state, colour
    //     check box of Save data, its text, its state, title of the column
    //     entry of the spectrum, colour
    {"cur1_0", doubleInSlot(SlotCur1), SignalSource::Amplifier1, currentQuantity, SignalScale::None,
     "Current of amplifier 1, channel 1",
     {KindCurrents1, "Ionbar Ch1", "Channel 1", BoxState::Checked, 0xffff87},
     {"checkIonBarch1", "IonBar Ch1", BoxState::Unchecked, "IonBar Ch1, "},
     {"IonBar 1, Ch 1", 0xdddd00}},
    {"cur1_1", doubleInSlot(SlotCur1 + 1), SignalSource::Amplifier1, currentQuantity, SignalScale::None,
     "Current of amplifier 1, channel 2",
     {KindCurrents1, "Ionbar Ch2", "Channel 2", BoxState::Checked, 0xff82ff},
     {"checkIonBarch2", "IonBar Ch2", BoxState::Unchecked, "IonBar Ch2, "},
     {"IonBar 1, Ch 2", 0xff005e}},
    {"cur1_2", doubleInSlot(SlotCur1 + 2), SignalSource::Amplifier1, currentQuantity, SignalScale::None,
     "Current of amplifier 1, channel 3",
     {KindCurrents1, "Ionbar Ch3", "Channel 3", BoxState::Checked, 0x82ff82},
     {"checkIonBarch3", "IonBar Ch3", BoxState::Unchecked, "IonBar Ch3, "},
     {"IonBar 1, Ch 3", 0x00ff4d}},
    {"cur1_3", doubleInSlot(SlotCur1 + 3), SignalSource::Amplifier1, currentQuantity, SignalScale::None,
     "Current of amplifier 1, channel 4",
     {KindCurrents1, "Ionbar Ch4", "Channel 4", BoxState::Checked, 0x82d2fa},
     {"checkIonBarch4", "IonBar Ch4", BoxState::Unchecked, "IonBar Ch4, "},
     {"IonBar 1, Ch 4", 0x00d5ff}},
    {"cur2_0", doubleInSlot(SlotCur2), SignalSource::Amplifier2, currentQuantity, SignalScale::None,
     "Current of amplifier 2, channel 1",
     {KindCurrents2, "Ionbar2 Ch1", "Channel 1", BoxState::Checked, 0xffff87},
     {"checkIonBarch1_2", "IonBar2 Ch1", BoxState::Unchecked, "IonBar2 Ch1, "},
     {}},
    {"cur2_1", doubleInSlot(SlotCur2 + 1), SignalSource::Amplifier2, currentQuantity, SignalScale::None,
     "Current of amplifier 2, channel 2",
     {KindCurrents2, "Ionbar2 Ch2", "Channel 2", BoxState::Checked, 0xff82ff},
     {"checkIonBarch2_2", "IonBar2 Ch2", BoxState::Unchecked, "IonBar2 Ch2, "},
     {}},
    {"cur2_2", doubleInSlot(SlotCur2 + 2), SignalSource::Amplifier2, currentQuantity, SignalScale::None,
     "Current of amplifier 2, channel 3",
     {KindCurrents2, "Ionbar2 Ch3", "Channel 3", BoxState::Checked, 0x82ff82},
     {"checkIonBarch3_2", "IonBar2 Ch3", BoxState::Unchecked, "IonBar2 Ch3, "},
     {}},
    {"cur2_3", doubleInSlot(SlotCur2 + 3), SignalSource::Amplifier2, currentQuantity, SignalScale::None,
     "Current of amplifier 2, channel 4",
     {KindCurrents2, "Ionbar Ch4", "Channel 4", BoxState::Checked, 0x82d2fa},
     {"checkIonBarch4_2", "IonBar2 Ch4", BoxState::Unchecked, "IonBar2 Ch4, "},
     {}},
    {"dac0", doubleInSlot(SlotDac), SignalSource::Outputs, voltageQuantity, SignalScale::None,
     "Voltage of output CH1",
     {KindDAC, "DAC Ch1", "Channel 1", BoxState::Checked, 0xffff87},
     {"checkAnvoltch1", "Anvolt Ch1", BoxState::Unchecked, "Anvolt Ch1, "},
     {}},
    {"dac1", doubleInSlot(SlotDac + 1), SignalSource::Outputs, voltageQuantity, SignalScale::None,
     "Voltage of output CH2",
     {KindDAC, "DAC Ch2", "Channel 2", BoxState::Checked, 0xff82ff},
     {"checkAnvoltch2", "Anvolt Ch2", BoxState::Unchecked, "Anvolt Ch2, "},
     {}},
    {"dac2", doubleInSlot(SlotDac + 2), SignalSource::Outputs, voltageQuantity, SignalScale::None,
     "Voltage of output CH3",
     {KindDAC, "DAC Ch3", "Channel 3", BoxState::Checked, 0x82ff82},
     {"checkAnvoltch3", "Anvolt Ch3", BoxState::Unchecked, "Anvolt Ch3, "},
     {}},
    {"dac3", doubleInSlot(SlotDac + 3), SignalSource::Outputs, voltageQuantity, SignalScale::None,
     "Voltage of output CH4",
     {KindDAC, "DAC Ch4", "Channel 4", BoxState::Checked, 0x82d2fa},
     {},
     {}},
    {"pos1X", doubleInSlot(SlotPos1X), SignalSource::Monitor1, positionQuantity, SignalScale::Bpm1X,
     "Horizontal position at BPM1",
     {KindPosX, "X (BPM1)", "Pos X (BPM1)", BoxState::Checked, 0xffff87},
     {"checkBPMposX", "BPM Pos X", BoxState::Checked, "BPM1 Pos X, "},
     {"BPM1, PosX", 0xcc00cc}},
    {"pos1Y", doubleInSlot(SlotPos1Y), SignalSource::Monitor1, positionQuantity, SignalScale::Bpm1Y,
     "Vertical position at BPM1",
     {KindPosY, "Y (BPM1)", "Pos Y (BPM1)", BoxState::Checked, 0xffff87},
     {"checkBPMposY", "BPM Pos Y", BoxState::Checked, "BPM1 Pos Y, "},
     {"BPM1, PosY", 0x00cccc}},
    {"int1", doubleInSlot(SlotInt1), SignalSource::Monitor1, intensityQuantity, SignalScale::None,
     "Intensity at BPM1",
     {KindInt, "Int BPM1", "Intensity BPM1", BoxState::Checked, 0xffff87},
     {"checkBPMi0", "BPM I0", BoxState::Checked, "BPM1 I0, "},
     {"BPM1, I0", 0xf0f0f0}},
    {"pos2X", doubleInSlot(SlotPos2X), SignalSource::Monitor2, positionQuantity, SignalScale::Bpm2X,
     "Horizontal position at BPM2",
     {KindPosX, "X (BPM2)", "Pos X (BPM2)", BoxState::Checked, 0xff82ff},
     {"checkBPMposX_2", "BPM2 Pos X", BoxState::Checked, "BPM2 Pos X, "},
     {}},
    {"pos2Y", doubleInSlot(SlotPos2Y), SignalSource::Monitor2, positionQuantity, SignalScale::Bpm2Y,
     "Vertical position at BPM2",
     {KindPosY, "Y (BPM2)", "Pos Y (BPM2)", BoxState::Checked, 0xff82ff},
     {"checkBPMposY_2", "BPM2 Pos Y", BoxState::Checked, "BPM2 Pos Y, "},
     {}},
    {"int2", doubleInSlot(SlotInt2), SignalSource::Monitor2, intensityQuantity, SignalScale::None,
     "Intensity at BPM2",
     {KindInt, "Int BPM2", "Intensity BPM2", BoxState::UncheckedAndHidden, 0xff82ff},
     {"checkBPMi0_2", "BPM2 I0", BoxState::Checked, "BPM2 I0, "},
     {}},
    {"xLf", doubleInSlot(SlotXLf), SignalSource::Controllers, positionQuantity, SignalScale::Bpm1X,
     "Horizontal position of the low-frequency path",
     {KindPosX, "X (LF)", "Pos X (LF)", BoxState::Unchecked, 0x82ff82},
     {},
     {}},
    {"xHf", doubleInSlot(SlotXHf), SignalSource::Controllers, positionQuantity, SignalScale::Bpm1X,
     "Horizontal position of the high-frequency path",
     {KindPosX, "X (HF)", "Pos X (HF)", BoxState::Unchecked, 0xff9933},
     {},
     {}},
    {"yLf", doubleInSlot(SlotYLf), SignalSource::Controllers, positionQuantity, SignalScale::Bpm1Y,
     "Vertical position of the low-frequency path",
     {KindPosY, "Y (LF)", "Pos Y (LF)", BoxState::Unchecked, 0x82ff82},
     {},
     {}},
    {"yHf", doubleInSlot(SlotYHf), SignalSource::Controllers, positionQuantity, SignalScale::Bpm1Y,
     "Vertical position of the high-frequency path",
     {KindPosY, "Y (HF)", "Pos Y (HF)", BoxState::Unchecked, 0xff9933},
     {},
     {}},
    {"funcGenRefA", floatAt(offsetof(DisplayRecord, funcGenRefA)), SignalSource::Generator, referenceQuantity,
     SignalScale::None, "First reference of the function generator",
     {},
     {},
     {}},
    {"funcGenRefB", floatAt(offsetof(DisplayRecord, funcGenRefB)), SignalSource::Generator, referenceQuantity,
     SignalScale::None, "Second reference of the function generator",
     {},
     {},
     {}},
};
// clang-format on

/// How many traces a time-series graph has.
constexpr int traceCount(GraphKind graph)
{
    int count = 0;
    for (const StreamSignal& signal : signalTable)
        count += signal.trace.graph == graph;
    return count;
}

/// The traces of a time-series graph, in their order.
inline std::vector<const StreamSignal*> tracesOf(GraphKind graph)
{
    std::vector<const StreamSignal*> traces;
    for (const StreamSignal& signal : signalTable) {
        if (signal.trace.graph == graph)
            traces.push_back(&signal);
    }
    return traces;
}

/// Place of a drawn signal among the traces of its graph, from 0.
constexpr int channelOf(const StreamSignal& drawn)
{
    int channel = 0;
    for (const StreamSignal* signal = signalTable; signal != &drawn; ++signal)
        channel += signal->trace.graph == drawn.trace.graph;
    return channel;
}

/// How many signals Save data offers.
constexpr int savedSignalCount()
{
    int count = 0;
    for (const StreamSignal& signal : signalTable)
        count += signal.column.object != nullptr;
    return count;
}

namespace signal_table_checks {

constexpr bool equal(const char* a, const char* b)
{
    while (*a && *a == *b) {
        ++a;
        ++b;
    }
    return *a == *b;
}

/// A row that leaves out a text would end in a null pointer where it is shown.
constexpr bool rowsAreWhole()
{
    for (const StreamSignal& signal : signalTable) {
        const bool drawn = signal.trace.graph != KindNone;
        const bool saved = signal.column.object != nullptr;
        if (!signal.name || !signal.meaning || signal.place.offset >= sizeof(DisplayRecord) ||
            (drawn && (!signal.trace.legend || !signal.trace.checkBox)) ||
            (saved && (!signal.column.checkBox || !signal.column.title)))
            return false;
    }
    return true;
}

constexpr bool rowsDiffer()
{
    for (const StreamSignal& a : signalTable) {
        for (const StreamSignal& b : signalTable) {
            if (&a != &b && (a.place == b.place || equal(a.name, b.name)))
                return false;
        }
    }
    return true;
}

/// A graph has one axis of values.
constexpr bool graphsHaveOneUnit()
{
    for (const StreamSignal& a : signalTable) {
        for (const StreamSignal& b : signalTable) {
            if (a.trace.graph != KindNone && a.trace.graph == b.trace.graph && !equal(a.quantity.unit, b.quantity.unit))
                return false;
        }
    }
    return true;
}

static_assert(rowsAreWhole());
static_assert(rowsDiffer());
static_assert(graphsHaveOneUnit());

} // namespace signal_table_checks
