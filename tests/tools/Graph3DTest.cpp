#include "tools/Graph3D.h"
#include "GlRecorder.h"
#include "tools/SurfacePlot.h"

#include <QMouseEvent>
#include <QtTest>

#include <cmath>
#include <limits>
#include <memory>

namespace {

/// The surface view with its drawing in reach.
class OpenGraph3D : public Graph3D
{
public:
    using Graph3D::initializeGL;
    using Graph3D::paintGL;
    using Graph3D::resizeGL;
};

QStringList rotations()
{
    return gl_recorder::calls().filter(QStringLiteral("glRotatef"));
}

/// Colour components as a test compares them.
QVector<double> colour(double v)
{
    const HeatColour c = heatColour(v);
    return {c.r, c.g, c.b};
}

QVector<float> corners(const Quad& quad)
{
    QVector<float> values;
    for (const auto& corner : quad.corners) {
        for (float coordinate : corner)
            values.append(coordinate);
    }
    return values;
}

} // namespace

class Graph3DTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<OpenGraph3D> graph;

    void mouse(QEvent::Type type, QPointF position, Qt::MouseButtons buttons)
    {
        QMouseEvent event(type, position, Qt::NoButton, buttons, Qt::NoModifier);
        QCoreApplication::sendEvent(graph.get(), &event);
    }
    void drag(QPointF from, QPointF to, Qt::MouseButtons buttons)
    {
        mouse(QEvent::MouseButtonPress, from, buttons);
        mouse(QEvent::MouseMove, to, buttons);
    }
    /// Angles as paintGL() uses them, degrees.
    QStringList paintedRotations()
    {
        gl_recorder::clear();
        graph->paintGL();
        return rotations();
    }
    static QStringList turns(double x, double y, double z)
    {
        return {QStringLiteral("glRotatef(%1, 1, 0, 0)").arg(x), QStringLiteral("glRotatef(%1, 0, 1, 0)").arg(y),
                QStringLiteral("glRotatef(%1, 0, 0, 1)").arg(z)};
    }

private slots:
    void init() { graph = std::make_unique<OpenGraph3D>(); }
    void cleanup() { graph.reset(); }

    void quickChangesArePaintedInAMeasuredPaceAndTheLastAlways()
    {
        graph->show();
        QVERIFY(QTest::qWaitForWindowExposed(graph.get()));
        const auto frames = [] { return gl_recorder::calls().filter(QStringLiteral("glClear(")).size(); };
        gl_recorder::clear();
        QElapsedTimer timer;
        timer.start();
        for (int height = 1; height <= 200; ++height) {
            const float top = float(height) / 256;
            const float data[] = {top, top, top, top};
            graph->setData(data, 2, 2);
            graph->updateSoon();
            QCoreApplication::processEvents();
        }
        const qint64 elapsed = timer.elapsed();
        QVERIFY2(frames() <= 1 + elapsed / Graph3D::restMs, qPrintable(QString::number(frames())));
        QTRY_VERIFY(gl_recorder::calls().contains(QStringLiteral("glVertex3f(0, 0, %1)").arg(200.0 / 256)));
        // At rest the next change is seen at once.
        QTRY_VERIFY(timer.elapsed() > elapsed + 2 * Graph3D::restMs);
        gl_recorder::clear();
        graph->updateSoon();
        QCoreApplication::processEvents();
        QTRY_COMPARE(frames(), 1);
    }

    void heatColourFollowsItsTable_data()
    {
        QTest::addColumn<double>("v");
        QTest::addColumn<QVector<double>>("expected");
        const double nan = std::numeric_limits<double>::quiet_NaN();
        QTest::newRow("negative") << -1.0 << QVector<double>{0, 0, 1};
        QTest::newRow("below 0.001") << 0.0009 << QVector<double>{0, 0, 1};
        QTest::newRow("0.001") << 0.001 << QVector<double>{0, 0.004, 1};
        QTest::newRow("below 0.25") << 0.125 << QVector<double>{0, 0.5, 1};
        QTest::newRow("0.25") << 0.25 << QVector<double>{0, 1, 1};
        QTest::newRow("below 0.5") << 0.375 << QVector<double>{0, 1, 0.5};
        QTest::newRow("0.5") << 0.5 << QVector<double>{0, 1, 0};
        QTest::newRow("below 0.75") << 0.625 << QVector<double>{0.5, 1, 0};
        QTest::newRow("0.75") << 0.75 << QVector<double>{1, 1, 0};
        QTest::newRow("below 1") << 0.875 << QVector<double>{1, 0.5, 0};
        QTest::newRow("1") << 1.0 << QVector<double>{1, 0, 0};
        QTest::newRow("above 1") << 7.0 << QVector<double>{1, 0, 0};
        QTest::newRow("NaN") << nan << QVector<double>{1, 0, 0};
    }
    void heatColourFollowsItsTable()
    {
        QFETCH(double, v);
        QFETCH(QVector<double>, expected);
        QCOMPARE(colour(v), expected);
    }

    void cellsRunAlongTheFirstIndexFirst()
    {
        const float data[] = {0.0f, 0.1f, 0.2f, 0.3f, 0.4f, 1.0f};
        SurfacePlot plot;
        plot.setData(data, 3, 2);
        const std::vector<Quad>& quads = plot.quads();
        QCOMPARE(quads.size(), std::size_t(2));
        QCOMPARE(corners(quads[0]), (QVector<float>{0, 0, 0.0f, 0.5f, 0, 0.1f, 0.5f, 1, 0.4f, 0, 1, 0.3f}));
        QCOMPARE(corners(quads[1]), (QVector<float>{0.5f, 0, 0.1f, 1, 0, 0.2f, 1, 1, 1.0f, 0.5f, 1, 0.4f}));
        QCOMPARE(quads[0].r, 0.0f);
        QCOMPARE(quads[0].g, 0.8f);
        QCOMPARE(quads[0].b, 1.0f);
        // Mean 0.425.
        QCOMPARE(quads[1].g, 1.0f);
        QVERIFY(std::abs(quads[1].b - 0.3f) < 1e-6f);
    }

    void colourIsRelativeToTheSpanWithoutSubtractingTheMinimum()
    {
        const float data[] = {-1, -1, 3, 3};
        SurfacePlot plot;
        plot.setData(data, 2, 2);
        // Mean 1 over span 4.
        QCOMPARE(plot.quads().at(0).g, 1.0f);
        QCOMPARE(plot.quads().at(0).b, 1.0f);
        const float tiny[] = {0.00005f, 0.00005f, 0.00005f, 0.00005f};
        plot.setData(tiny, 2, 2);
        // The span is 0.0001 at least, so that this is 0.5 and not 1.
        QCOMPARE(plot.quads().at(0).r, 0.0f);
        QCOMPARE(plot.quads().at(0).g, 1.0f);
    }

    void fieldWithoutACellIsEmpty()
    {
        const float data[] = {1, 1, 1, 1};
        SurfacePlot plot;
        plot.setData(data, 2, 2);
        QCOMPARE(plot.quads().size(), std::size_t(1));
        plot.setData(data, 1, 4);
        QVERIFY(plot.quads().empty());
        plot.setData(data, 4, 1);
        QVERIFY(plot.quads().empty());
        plot.setData(data, 0, 0);
        QVERIFY(plot.quads().empty());
    }

    void surfaceKeepsItsOwnCopyOfTheHeights()
    {
        float data[] = {0, 0, 0, 0.5f};
        SurfacePlot plot;
        plot.setData(data, 2, 2);
        data[3] = 9;
        QCOMPARE(plot.quads().at(0).corners[2][2], 0.5f);
        plot.setData(data, 2, 2);
        QCOMPARE(plot.quads().at(0).corners[2][2], 9.0f);
    }

    void gridOf64HasAllCells()
    {
        std::vector<float> data(64 * 64, 0.0f);
        SurfacePlot plot;
        plot.setData(data.data(), 64, 64);
        QCOMPARE(plot.quads().size(), std::size_t(3969));
        QVERIFY(std::abs(plot.quads().back().corners[2][0] - 1.0f) < 1e-6f);
    }

    void formatAsksForSamplesAndTheSizesAreAsStated()
    {
        QVERIFY(graph->inherits("QGLWidget"));
        QCOMPARE(graph->sizeHint(), QSize(600, 400));
        QCOMPARE(graph->minimumSizeHint(), QSize(50, 50));
    }

    void initialisationSetsTheStatedState()
    {
        gl_recorder::clear();
        graph->initializeGL();
        QCOMPARE(gl_recorder::calls(),
                 QStringList({QStringLiteral("glShadeModel(GL_SMOOTH)"), QStringLiteral("glClearColor(1, 1, 1, 0.5)"),
                              QStringLiteral("glClearDepth(1)"), QStringLiteral("glEnable(GL_DEPTH_TEST)"),
                              QStringLiteral("glDepthFunc(GL_LEQUAL)"),
                              QStringLiteral("glHint(GL_PERSPECTIVE_CORRECTION_HINT, GL_NICEST)")}));
    }

    void viewportIsACentredSquare()
    {
        gl_recorder::clear();
        graph->resizeGL(400, 301);
        QCOMPARE(
            gl_recorder::calls(),
            QStringList({QStringLiteral("glViewport(49, 0, 301, 301)"), QStringLiteral("glMatrixMode(GL_PROJECTION)"),
                         QStringLiteral("glLoadIdentity()"), QStringLiteral("glOrtho(-0.8, 0.8, -0.5, 1, 4, 15)"),
                         QStringLiteral("glMatrixMode(GL_MODELVIEW)")}));
        gl_recorder::clear();
        graph->resizeGL(200, 300);
        QCOMPARE(gl_recorder::calls().first(), QStringLiteral("glViewport(0, 50, 200, 200)"));
    }

    void frameDrawsSurfaceThenAxes()
    {
        const float data[] = {0, 0, 0, 1};
        graph->setData(data, 2, 2);
        gl_recorder::clear();
        graph->paintGL();
        const QStringList& calls = gl_recorder::calls();
        QCOMPARE(
            calls.mid(0, 13),
            QStringList({QStringLiteral("glClear(GL_COLOR_BUFFER_BIT|GL_DEPTH_BUFFER_BIT)"),
                         QStringLiteral("glLoadIdentity()"), QStringLiteral("glTranslatef(0, 0, -10)"),
                         QStringLiteral("glRotatef(293.125, 1, 0, 0)"), QStringLiteral("glRotatef(1.3125, 0, 1, 0)"),
                         QStringLiteral("glRotatef(234, 0, 0, 1)"), QStringLiteral("glBegin(GL_QUADS)"),
                         QStringLiteral("glColor4f(0, 1, 1, 1)"), QStringLiteral("glVertex3f(0, 0, 0)"),
                         QStringLiteral("glVertex3f(1, 0, 0)"), QStringLiteral("glVertex3f(1, 1, 1)"),
                         QStringLiteral("glVertex3f(0, 1, 0)"), QStringLiteral("glEnd()")}));
        QCOMPARE(calls.mid(13, 10),
                 QStringList({QStringLiteral("glLineWidth(1.5)"), QStringLiteral("glColor3f(0.3, 0.3, 0.3)"),
                              QStringLiteral("glBegin(GL_LINES)"), QStringLiteral("glVertex3f(0, 0, 0)"),
                              QStringLiteral("glVertex3f(1, 0, 0)"), QStringLiteral("glVertex3f(0, 0, 0)"),
                              QStringLiteral("glVertex3f(0, 1, 0)"), QStringLiteral("glVertex3f(0, 0, 0)"),
                              QStringLiteral("glVertex3f(0, 0, 1)"), QStringLiteral("glEnd()")}));
        QCOMPARE(calls.mid(23, 2),
                 QStringList({QStringLiteral("glLineWidth(0.5)"), QStringLiteral("glBegin(GL_LINES)")}));
        QStringList sheets;
        const auto line = [&sheets](double x, double y, double z, double toX, double toY, double toZ) {
            sheets.append(QStringLiteral("glVertex3f(%1, %2, %3)").arg(x).arg(y).arg(z));
            sheets.append(QStringLiteral("glVertex3f(%1, %2, %3)").arg(toX).arg(toY).arg(toZ));
        };
        for (int i = 0; i <= 5; ++i) {
            line(0, 0, i / 5.0, 1, 0, i / 5.0);
            line(0, 0, i / 5.0, 0, 1, i / 5.0);
        }
        for (int i = 0; i <= 5; ++i) {
            line(i / 5.0, 0, 0, i / 5.0, 0, 1);
            line(i / 5.0, 0, 0, i / 5.0, 1, 0);
        }
        for (int i = 0; i <= 5; ++i) {
            line(0, i / 5.0, 0, 0, i / 5.0, 1);
            line(0, i / 5.0, 0, 1, i / 5.0, 0);
        }
        QCOMPARE(calls.mid(25), sheets + QStringList(QStringLiteral("glEnd()")));
    }

    void emptySurfaceStillHasItsBlock()
    {
        gl_recorder::clear();
        graph->paintGL();
        QCOMPARE(gl_recorder::calls().at(6), QStringLiteral("glBegin(GL_QUADS)"));
        QCOMPARE(gl_recorder::calls().at(7), QStringLiteral("glEnd()"));
    }

    void anglesAreFoldedIntoOneTurn_data()
    {
        QTest::addColumn<int>("angle");
        QTest::addColumn<double>("degrees");
        QTest::newRow("as it is") << 160 << 10.0;
        QTest::newRow("zero") << 0 << 0.0;
        QTest::newRow("negative") << -160 << 350.0;
        QTest::newRow("several turns under") << -160 - 2 * 5760 << 350.0;
        QTest::newRow("a full turn stays") << 5760 << 360.0;
        QTest::newRow("above a full turn") << 5761 << 1 / 16.0;
        QTest::newRow("several turns over") << 160 + 3 * 5760 << 10.0;
    }
    void anglesAreFoldedIntoOneTurn()
    {
        QFETCH(int, angle);
        QFETCH(double, degrees);
        graph->setXRotation(angle);
        graph->setYRotation(angle);
        graph->setZRotation(angle);
        QCOMPARE(paintedRotations(), turns(degrees, degrees, degrees));
    }

    void leftDragTurnsAboutXAndY()
    {
        drag({10, 10}, {13, 15}, Qt::LeftButton);
        QCOMPARE(paintedRotations(), turns((4690 + 40) / 16.0, (21 + 24) / 16.0, 234));
    }

    void rightDragTurnsAboutXAndZ()
    {
        drag({10, 10}, {13, 5}, Qt::RightButton);
        QCOMPARE(paintedRotations(), turns((4690 - 40) / 16.0, 21 / 16.0, (3744 + 24) / 16.0));
    }

    void bothButtonsActAsTheLeftOne()
    {
        drag({10, 10}, {13, 15}, Qt::LeftButton | Qt::RightButton);
        QCOMPARE(paintedRotations(), turns((4690 + 40) / 16.0, (21 + 24) / 16.0, 234));
    }

    void positionsAreRoundedAndEveryMoveStartsWhereTheLastEnded()
    {
        drag({10.4, 10.6}, {11.5, 11.2}, Qt::LeftButton);
        QCOMPARE(paintedRotations(), turns(4690 / 16.0, (21 + 16) / 16.0, 234));
        // A move with another button turns nothing but is remembered.
        mouse(QEvent::MouseMove, {100, 100}, Qt::MiddleButton);
        mouse(QEvent::MouseMove, {101, 100}, Qt::LeftButton);
        QCOMPARE(paintedRotations(), turns(4690 / 16.0, (21 + 24) / 16.0, 234));
    }

    void changedAngleRedrawsAtOnceAndAnEqualOneDoesNot()
    {
        graph->resize(100, 100);
        graph->show();
        QVERIFY(QTest::qWaitForWindowExposed(graph.get()));
        QCoreApplication::processEvents();
        gl_recorder::clear();
        graph->setZRotation(3744);
        QVERIFY(gl_recorder::calls().isEmpty());
        graph->setZRotation(3745);
        QCOMPARE(rotations().size(), 3);
    }
};

QTEST_MAIN(Graph3DTest)
#include "Graph3DTest.moc"
