#pragma once

#include "tools/rocking/GridAxes.h"

#include <QElapsedTimer>
#include <QGLWidget>
#include <QTimer>

class SurfacePlot;

/// Shows a surface over a grid; dragging turns it: the left button about x and y, the right one about x and
/// z. Fixed-function OpenGL. GUI thread.
class Graph3D : public QGLWidget
{
    Q_OBJECT

public:
    explicit Graph3D(QWidget* parent = nullptr);

    /// Heights data[a + b * nx], copied; shown at the next repaint, which the caller asks for with update() or
    /// updateSoon().
    void setData(const float* data, int nx, int ny);
    /// For heights that change in quick succession: repaints at once, or where the last repaint is less than
    /// `restMs` ago, as soon as it is not. A frame can take longer than the step that it shows.
    void updateSoon();
    static constexpr int restMs = 100;

    /// Angles in sixteenths of a degree, brought into 0 to 5760; a change redraws at once.
    void setXRotation(int angle);
    void setYRotation(int angle);
    void setZRotation(int angle);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void initializeGL() override;
    void resizeGL(int width, int height) override;
    void paintGL() override;

private:
    void turnTo(int& rotation, int angle);

    QTimer nextFrame;
    QElapsedTimer sinceFrame; ///< since the last repaint; invalid before the first
    int xRot = 4690;
    int yRot = 21;
    int zRot = 3744;
    int lastX = 0;
    int lastY = 0;
    SurfacePlot* surface;
    GridAxes axes{5, 5, 5};
};
