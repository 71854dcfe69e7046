#pragma once

/// Conversion between the scale and offset of a BPM and the settings of an encoder box. A count of the full
/// 32-bit range stands for twice the scale, with the centre at 2^31 counts. Plain arithmetic, any thread.

/// @param micrometres scale; @return nanoradians per count
double nanoradiansPerCount(double micrometres);
/// @return scale, micrometres; 0 for 0 nanoradians per count
double scaleOfNanoradians(double nanoradiansPerCount);

/// Whole counts at which the offset puts the zero, not more than a field of this range shows. Beyond the
/// range, and for a scale of 0, the nearer limit; the lower one for NaN.
/// @param offset, scale  micrometres
int offsetCounts(double offset, double scale, int minimum, int maximum);
/// @param counts 0 to 2^32; @param scale micrometres; @return offset, micrometres
double offsetOfCounts(double counts, double scale);
