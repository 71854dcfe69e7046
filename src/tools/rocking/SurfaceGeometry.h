#pragma once

#include <vector>

/// One cell of a surface: four corners as x, y, z, and one colour. Plain units of the unit cube.
struct Quad
{
    float corners[4][3];
    float r, g, b;
};

struct HeatColour
{
    double r, g, b;
};

/// Colour of a height from 0 (blue) over green to 1 (red). NaN counts as above 1.
HeatColour heatColour(double v);

/// Rebuilds the quads of the height field data[a + b * nx], a below nx and b below ny, over the unit square:
/// x grows with a, y with b. The colour of a cell follows the mean of its corners relative to the span of the
/// field, which reaches at least from 0.0 to 0.0001. A field with fewer than two points in a direction has no
/// cell.
/// @param[in,out] quads its memory is used again
void buildSurface(const float* data, int nx, int ny, std::vector<Quad>& quads);
