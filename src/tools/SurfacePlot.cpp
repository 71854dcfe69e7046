#include "tools/SurfacePlot.h"

#include <GL/gl.h>

SurfacePlot::SurfacePlot(QObject* parent) : QObject(parent) {}

void SurfacePlot::setData(const float* data, int newNx, int newNy)
{
    nx = newNx;
    ny = newNy;
    if (nx > 1 && ny > 1)
        heights.assign(data, data + std::size_t(nx) * std::size_t(ny));
    else
        heights.clear();
    listIsOld = true;
}

const std::vector<Quad>& SurfacePlot::quads()
{
    if (listIsOld) {
        buildSurface(heights.data(), nx, ny, list);
        listIsOld = false;
    }
    return list;
}

void SurfacePlot::draw()
{
    const std::vector<Quad>& current = quads();
    glBegin(GL_QUADS);
    for (const Quad& quad : current) {
        glColor4f(quad.r, quad.g, quad.b, 1);
        for (const auto& corner : quad.corners)
            glVertex3f(corner[0], corner[1], corner[2]);
    }
    glEnd();
}
