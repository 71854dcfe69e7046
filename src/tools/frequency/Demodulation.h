#pragma once

struct DisplayRecord;

/// Response of the beam to the function generator, from a block of the display stream. Plain values, any
/// thread.
namespace demodulation {

struct Response
{
    double magnitude;
    double phaseDeg; ///< from -180 to 180
};

/// Correlates the input signal, without its mean, with the two reference signals of the generator:
/// I and Q are the means of input times reference A and B, the magnitude is |I + iQ| over the amplitude, the
/// phase its angle. An amplitude of 0 gives what the division gives, infinite or NaN.
/// @param count   records of the block that are used, at least 1
/// @param slot    slot of the input signal within a record (RecordSlot)
/// @param factor  applied to the input signal; 1 for none
Response demodulate(const DisplayRecord* block, int count, int slot, double factor, float amplitude);

/// Brings a phase near the one before it, by one turn at most, so that a trace may run beyond half a turn.
double unwrapped(double previousDeg, double phaseDeg);

} // namespace demodulation
