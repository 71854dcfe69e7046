#include "tools/rocking/GridAxes.h"

#include <GL/gl.h>

#include <initializer_list>

namespace {

constexpr float grey = 0.3f;
constexpr float unitVectors[3][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};

/// From each step along one axis, a line of length one along each of the two directions.
void drawSheet(const float* along, int divisions, const float* first, const float* second)
{
    for (int i = 0; i <= divisions; ++i) {
        const float step = float(i) / float(divisions);
        const float foot[3] = {along[0] * step, along[1] * step, along[2] * step};
        for (const float* direction : {first, second}) {
            glVertex3f(foot[0], foot[1], foot[2]);
            glVertex3f(foot[0] + direction[0], foot[1] + direction[1], foot[2] + direction[2]);
        }
    }
}

} // namespace

GridAxes::GridAxes(int xDivisions, int yDivisions, int zDivisions)
    : xDivisions(xDivisions), yDivisions(yDivisions), zDivisions(zDivisions)
{
}

void GridAxes::draw() const
{
    const float* x = unitVectors[0];
    const float* y = unitVectors[1];
    const float* z = unitVectors[2];
    glLineWidth(1.5f);
    glColor3f(grey, grey, grey);
    glBegin(GL_LINES);
    for (const float* axis : {x, y, z}) {
        glVertex3f(0, 0, 0);
        glVertex3f(axis[0], axis[1], axis[2]);
    }
    glEnd();
    glLineWidth(0.5f);
    glBegin(GL_LINES);
    drawSheet(z, zDivisions, x, y);
    drawSheet(x, xDivisions, z, y);
    drawSheet(y, yDivisions, z, x);
    glEnd();
}
