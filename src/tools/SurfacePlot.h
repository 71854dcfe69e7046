#pragma once

#include "tools/rocking/SurfaceGeometry.h"

#include <QObject>

#include <vector>

/// A height field as coloured quads, drawn with immediate-mode OpenGL. GUI thread.
///
/// setData() only copies the heights; the quads are rebuilt when they are wanted next, so that a field which
/// changes more often than it is drawn costs no more than the copies.
class SurfacePlot : public QObject
{
    Q_OBJECT

public:
    explicit SurfacePlot(QObject* parent = nullptr);

    /// Takes a copy of the heights data[a + b * nx]; a field with fewer than two points along x or y is
    /// empty.
    void setData(const float* data, int nx, int ny);

    /// Draws the quads into the current OpenGL context.
    void draw();

    /// The quads of the present field.
    const std::vector<Quad>& quads();

private:
    std::vector<float> heights;
    int nx = 0;
    int ny = 0;
    std::vector<Quad> list;
    bool listIsOld = false;
};
