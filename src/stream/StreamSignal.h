#pragma once

#include "stream/DisplayRecord.h"

#include <cstddef>
#include <cstring>

/// What is known of one signal of the display stream. The rows are in stream/SignalTable.h.

struct Quantity
{
    const char* name;
    const char* unit; ///< as shown; that of a position once it is scaled
};

constexpr Quantity currentQuantity = {"Current", "A"};
constexpr Quantity voltageQuantity = {"Voltage", "V"};
constexpr Quantity positionQuantity = {"Position", "um"};
constexpr Quantity intensityQuantity = {"Intensity", "A"};
constexpr Quantity referenceQuantity = {"Reference", ""};

/// Where a signal comes from. Save data has a column of check boxes for each, in this order.
enum class SignalSource
{
    Amplifier1,
    Amplifier2,
    Outputs,
    Monitor1,
    Monitor2,
    Controllers,
    Generator
};

/// Factor from the record to what the screens show.
enum class SignalScale
{
    None,
    Bpm1X,
    Bpm1Y,
    Bpm2X,
    Bpm2Y
};

/// @param scaleX, scaleY factors to micrometres, by BPM
inline double factorOf(SignalScale scale, const double (&scaleX)[2], const double (&scaleY)[2])
{
    switch (scale) {
    case SignalScale::Bpm1X:
        return scaleX[0];
    case SignalScale::Bpm1Y:
        return scaleY[0];
    case SignalScale::Bpm2X:
        return scaleX[1];
    case SignalScale::Bpm2Y:
        return scaleY[1];
    case SignalScale::None:
        break;
    }
    return 1.0;
}

/// The plots of the stream, as Updater::setGraphData() numbers them.
enum GraphKind
{
    KindNone = -1,
    KindXY1 = 0,
    KindXY2 = 1,
    KindFFT = 2,
    KindCurrents1 = 3,
    KindCurrents2 = 4,
    KindPosX = 7,
    KindPosY = 8,
    KindInt = 9,
    KindDAC = 10
};

enum class BoxState
{
    Checked,
    Unchecked,
    UncheckedAndHidden
};

/// The bytes of a signal in the record.
struct SignalPlace
{
    enum Type
    {
        Double,
        Float
    };
    std::size_t offset;
    Type type;

    constexpr bool operator==(const SignalPlace& other) const { return offset == other.offset; }
};

constexpr SignalPlace doubleInSlot(int slot)
{
    return {std::size_t(slot) * sizeof(double), SignalPlace::Double};
}

constexpr SignalPlace floatAt(std::size_t offset)
{
    return {offset, SignalPlace::Float};
}

/// A trace of a time-series graph. The traces of a graph stand in the order of the rows.
struct SignalTrace
{
    GraphKind graph = KindNone;
    const char* legend = nullptr;
    const char* checkBox = nullptr;
    BoxState box = BoxState::Unchecked;
    unsigned int colour = 0; ///< 0xRRGGBB
};

/// A check box and a column of Save data.
struct SignalColumn
{
    const char* object = nullptr; ///< name of the check box; null where the signal is not offered
    const char* checkBox = nullptr;
    BoxState box = BoxState::Unchecked;
    const char* title = nullptr;
};

/// An entry of the selector of the spectrum.
struct SignalSpectrum
{
    const char* text = nullptr; ///< null where the signal is not offered
    unsigned int colour = 0;    ///< 0xRRGGBB
};

struct StreamSignal
{
    const char* name; ///< of the field of DisplayRecord, with _0 to _3 for those of amplifiers and 0 to 3 for outputs
    SignalPlace place;
    SignalSource source;
    Quantity quantity;
    SignalScale scale;
    const char* meaning; ///< a phrase for tool tips and for long names in files
    SignalTrace trace;
    SignalColumn column;
    SignalSpectrum spectrum;

    constexpr int slot() const { return int(place.offset / sizeof(double)); }

    /// The value as the record holds it.
    double rawValue(const DisplayRecord& record) const
    {
        if (place.type == SignalPlace::Double)
            return slotValue(record, slot());
        float value;
        std::memcpy(&value, reinterpret_cast<const char*>(&record) + place.offset, sizeof value);
        return double(value);
    }
};
