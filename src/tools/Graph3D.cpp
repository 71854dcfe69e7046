#include "tools/Graph3D.h"

#include "tools/SurfacePlot.h"

#include <QMouseEvent>

#include <algorithm>
#include <cmath>

namespace {

constexpr int fullTurn = 5760;
constexpr float sixteenthsPerDegree = 16;
constexpr int sixteenthsPerPixel = 8;

} // namespace

Graph3D::Graph3D(QWidget* parent) : QGLWidget(QGLFormat(QGL::SampleBuffers), parent), surface(new SurfacePlot(this))
{
    nextFrame.setSingleShot(true);
    connect(&nextFrame, SIGNAL(timeout()), SLOT(update()));
}

void Graph3D::setData(const float* data, int nx, int ny)
{
    surface->setData(data, nx, ny);
}

void Graph3D::updateSoon()
{
    if (nextFrame.isActive())
        return;
    const qint64 rested = sinceFrame.isValid() ? sinceFrame.elapsed() : restMs;
    nextFrame.start(int(std::max<qint64>(restMs - rested, 0)));
}

void Graph3D::setXRotation(int angle)
{
    turnTo(xRot, angle);
}

void Graph3D::setYRotation(int angle)
{
    turnTo(yRot, angle);
}

void Graph3D::setZRotation(int angle)
{
    turnTo(zRot, angle);
}

void Graph3D::turnTo(int& rotation, int angle)
{
    while (angle < 0)
        angle += fullTurn;
    // A full turn itself stays.
    while (angle > fullTurn)
        angle -= fullTurn;
    if (angle == rotation)
        return;
    rotation = angle;
    updateGL();
}

QSize Graph3D::sizeHint() const
{
    return {600, 400};
}

QSize Graph3D::minimumSizeHint() const
{
    return {50, 50};
}

void Graph3D::mousePressEvent(QMouseEvent* event)
{
    lastX = int(std::lround(event->localPos().x()));
    lastY = int(std::lround(event->localPos().y()));
}

void Graph3D::mouseMoveEvent(QMouseEvent* event)
{
    const int x = int(std::lround(event->localPos().x()));
    const int y = int(std::lround(event->localPos().y()));
    const int dx = x - lastX;
    const int dy = y - lastY;
    if (event->buttons() & Qt::LeftButton) {
        setXRotation(xRot + sixteenthsPerPixel * dy);
        setYRotation(yRot + sixteenthsPerPixel * dx);
    } else if (event->buttons() & Qt::RightButton) {
        setXRotation(xRot + sixteenthsPerPixel * dy);
        setZRotation(zRot + sixteenthsPerPixel * dx);
    }
    lastX = x;
    lastY = y;
}

void Graph3D::initializeGL()
{
    glShadeModel(GL_SMOOTH);
    glClearColor(1, 1, 1, 0.5f);
    glClearDepth(1.0);
    glEnable(GL_DEPTH_TEST);
    glDepthFunc(GL_LEQUAL);
    glHint(GL_PERSPECTIVE_CORRECTION_HINT, GL_NICEST);
}

void Graph3D::resizeGL(int width, int height)
{
    const int side = std::min(width, height);
    glViewport((width - side) / 2, (height - side) / 2, side, side);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glOrtho(-0.8, 0.8, -0.5, 1.0, 4.0, 15.0);
    glMatrixMode(GL_MODELVIEW);
}

void Graph3D::paintGL()
{
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glLoadIdentity();
    glTranslatef(0, 0, -10);
    glRotatef(float(xRot) / sixteenthsPerDegree, 1, 0, 0);
    glRotatef(float(yRot) / sixteenthsPerDegree, 0, 1, 0);
    glRotatef(float(zRot) / sixteenthsPerDegree, 0, 0, 1);
    surface->draw();
    axes.draw();
    sinceFrame.start();
}
