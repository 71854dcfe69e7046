#include "tools/rocking/SurfaceGeometry.h"

#include <cstddef>

namespace {

/// Height that counts as the full range of colours, from the lowest to the highest value of the field.
float colourSpan(const float* data, std::size_t count)
{
    float maximum = 0.0001f;
    float minimum = 0.0f;
    for (std::size_t i = 0; i < count; ++i) {
        if (data[i] > maximum)
            maximum = data[i];
        if (data[i] < minimum)
            minimum = data[i];
    }
    return maximum - minimum;
}

} // namespace

HeatColour heatColour(double v)
{
    if (v < 0.001)
        return {0, 0, 1};
    if (v < 0.25)
        return {0, 4 * v, 1};
    if (v < 0.5)
        return {0, 1, 1 - (v - 0.25) * 4};
    if (v < 0.75)
        return {(v - 0.5) * 4, 1, 0};
    if (v < 1)
        return {1, 1 - (v - 0.75) * 4, 0};
    return {1, 0, 0};
}

void buildSurface(const float* data, int nx, int ny, std::vector<Quad>& quads)
{
    quads.clear();
    if (nx < 2 || ny < 2)
        return;
    const float span = colourSpan(data, std::size_t(nx) * std::size_t(ny));
    const auto dx = float(1.0 / (nx - 1));
    const auto dy = float(1.0 / (ny - 1));
    quads.reserve(std::size_t(nx - 1) * std::size_t(ny - 1));
    for (int b = 0; b < ny - 1; ++b) {
        const float* row = data + std::size_t(b) * std::size_t(nx);
        const float* nextRow = row + nx;
        for (int a = 0; a < nx - 1; ++a) {
            const float p00 = row[a];
            const float p10 = row[a + 1];
            const float p11 = nextRow[a + 1];
            const float p01 = nextRow[a];
            const HeatColour colour = heatColour((p00 + p10 + p11 + p01) / 4 / span);
            quads.push_back({{{float(a) * dx, float(b) * dy, p00},
                              {float(a + 1) * dx, float(b) * dy, p10},
                              {float(a + 1) * dx, float(b + 1) * dy, p11},
                              {float(a) * dx, float(b + 1) * dy, p01}},
                             float(colour.r),
                             float(colour.g),
                             float(colour.b)});
        }
    }
}
