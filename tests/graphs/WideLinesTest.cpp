#include "graphs/TraceGraph.h"
#include "graphs/WideLineRasterizer.h"

#include <QtTest>
#include <qcustomplot.h>

#include <cmath>
#include <random>

namespace {

QImage drawnWith(QCustomPlot& plot, QCPGraph* graph)
{
    for (int other = 0; other < plot.graphCount(); ++other)
        plot.graph(other)->setVisible(plot.graph(other) == graph);
    return plot.toPixmap(plot.width(), plot.height()).toImage();
}

/// Of the pixels that differ from the empty plot in either picture, the part that is alike in both, within a
/// level that no eye tells apart.
double agreement(const QImage& empty, const QImage& a, const QImage& b)
{
    const auto distance = [](QRgb p, QRgb q) {
        return std::max({std::abs(qRed(p) - qRed(q)), std::abs(qGreen(p) - qGreen(q)), std::abs(qBlue(p) - qBlue(q))});
    };
    int inked = 0, alike = 0;
    for (int y = 0; y < empty.height(); ++y) {
        for (int x = 0; x < empty.width(); ++x) {
            const QRgb background = empty.pixel(x, y);
            if (a.pixel(x, y) == background && b.pixel(x, y) == background)
                continue;
            ++inked;
            alike += distance(a.pixel(x, y), b.pixel(x, y)) <= 16;
        }
    }
    return inked ? double(alike) / inked : 0;
}

} // namespace

class WideLinesTest : public QObject
{
    Q_OBJECT

private:
    QCustomPlot plot;

    /// Draws the same data once in the pen's own way and once in ours.
    double compared(const QVector<double>& keys, const QVector<double>& values, const QPen& pen,
                    const QCPScatterStyle& scatter, const QSize& size)
    {
        plot.clearGraphs();
        plot.resize(size);
        plot.setNotAntialiasedElements(QCP::aeAll);
        plot.setBackground(QBrush(QColor(60, 60, 60)));
        QCPGraph* const own = new TraceGraph(plot.xAxis, plot.yAxis);
        QCPGraph* const pens = plot.addGraph();
        for (QCPGraph* graph : {own, pens}) {
            graph->setData(keys, values, true);
            graph->setPen(pen);
            graph->setScatterStyle(scatter);
            graph->setLineStyle(scatter.isNone() ? QCPGraph::lsLine : QCPGraph::lsNone);
        }
        pens->rescaleAxes();
        return agreement(drawnWith(plot, nullptr), drawnWith(plot, own), drawnWith(plot, pens));
    }

private slots:
    void initTestCase() { plot.setViewport(QRect(0, 0, 600, 300)); }

    void noisySpectraLookLikeTheWidePen_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::addColumn<bool>("logarithmic");
        QTest::addColumn<int>("bins");
        for (bool logarithmic : {false, true}) {
            for (int bins : {33, 4097}) {
                for (const QSize& size : {QSize(600, 300), QSize(1900, 500)})
                    QTest::addRow("%d bins, %d wide, %s", bins, size.width(), logarithmic ? "log" : "linear")
                        << size << logarithmic << bins;
            }
        }
    }
    void noisySpectraLookLikeTheWidePen()
    {
        QFETCH(QSize, size);
        QFETCH(bool, logarithmic);
        QFETCH(int, bins);
        std::mt19937 generator(1);
        std::normal_distribution<double> normal;
        QVector<double> keys(bins), values(bins);
        for (int bin = 0; bin < bins; ++bin) {
            keys[bin] = bin + 1;
            values[bin] = std::exp(normal(generator));
        }
        for (QCPAxis* axis : {plot.xAxis, plot.yAxis})
            axis->setScaleType(logarithmic ? QCPAxis::stLogarithmic : QCPAxis::stLinear);
        const double alike = compared(keys, values, QPen(QColor(221, 221, 0), 2.0), QCPScatterStyle(), size);
        for (QCPAxis* axis : {plot.xAxis, plot.yAxis})
            axis->setScaleType(QCPAxis::stLinear);
        qInfo("%.4f of the inked pixels agree", alike);
        QVERIFY(alike >= 0.95);
    }

    void curvesCornersAndTranslucentPensLookLikeTheWidePen_data()
    {
        QTest::addColumn<QPen>("pen");
        QTest::newRow("2.0") << QPen(QColor(221, 221, 0), 2.0);
        QTest::newRow("translucent") << QPen(QColor(250, 250, 135, 240), 2.0);
        QTest::newRow("selected") << QPen(QColor(80, 80, 255), 2.5);
        QTest::newRow("broad") << QPen(QColor(80, 80, 255), 9);
    }
    void curvesCornersAndTranslucentPensLookLikeTheWidePen()
    {
        QFETCH(QPen, pen);
        QVector<double> keys, values;
        for (int i = 0; i < 400; ++i) {
            keys.append(i);
            values.append(i < 200 ? std::sin(i / 20.0) : (i / 25) % 2);
        }
        const double alike = compared(keys, values, pen, QCPScatterStyle(), QSize(600, 300));
        qInfo("%.4f of the inked pixels agree", alike);
        QVERIFY(alike >= 0.95);
    }

    void cloudsLookLikeTheWidePen()
    {
        std::mt19937 generator(2);
        std::normal_distribution<double> normal;
        QVector<double> keys(1000), values(1000);
        for (int i = 0; i < 1000; ++i) {
            keys[i] = normal(generator);
            values[i] = normal(generator);
        }
        std::sort(keys.begin(), keys.end());
        for (const QSize& size : {QSize(600, 300), QSize(1900, 500)}) {
            const double alike = compared(keys, values, QPen(QColor(250, 250, 200, 240), 2.0),
                                          QCPScatterStyle(QCPScatterStyle::ssCross, 2), size);
            qInfo("%.4f of the inked pixels agree", alike);
            QVERIFY(alike >= 0.95);
        }
    }

    void theCrossOfTheSetpointLooksLikeTheWidePen()
    {
        const double alike = compared({0, 0.3, 1}, {0, 0.7, 1}, QPen(QColor(0, 191, 250), 2.0),
                                      QCPScatterStyle(QCPScatterStyle::ssCross, 6), QSize(600, 300));
        QVERIFY(alike >= 0.95);
    }

    void pointsWithoutAPlaceLeaveAGap()
    {
        const double none = std::nan("");
        const double infinite = HUGE_VAL;
        const double alike = compared({0, 1, 2, 3, 4, 5, 6, 7, 8}, {0, 1, none, 1, 0, infinite, 1, 0, 1},
                                      QPen(QColor(221, 221, 0), 2.0), QCPScatterStyle(), QSize(600, 300));
        QVERIFY(alike >= 0.95);
    }

    void aBendIsBevelledOnItsOuterSide_data()
    {
        QTest::addColumn<QPointF>("end");
        QTest::addColumn<QPoint>("onTheBevel");
        QTest::addColumn<QPoint>("beyondIt");
        QTest::newRow("to the right") << QPointF(50, 90) << QPoint(53, 45) << QPoint(57, 42);
        QTest::newRow("to the left") << QPointF(50, 10) << QPoint(53, 54) << QPoint(57, 57);
    }
    void aBendIsBevelledOnItsOuterSide()
    {
        QFETCH(QPointF, end);
        QFETCH(QPoint, onTheBevel);
        QFETCH(QPoint, beyondIt);
        const QPointF points[] = {QPointF(10, 50), QPointF(50, 50), end};
        QRegion ink;
        for (const QRect& run : rasterizeWideLine(points, 3, 20, QRect(0, 0, 100, 100)))
            ink += run;
        QVERIFY(ink.contains(onTheBevel));
        QVERIFY(!ink.contains(beyondIt));
    }

    void farAwayPointsNeitherHangNorVanish()
    {
        plot.clearGraphs();
        auto* graph = new TraceGraph(plot.xAxis, plot.yAxis);
        plot.xAxis->setRange(0, 3);
        plot.yAxis->setRange(-1, 1);
        for (double width : {1.0, 2.0}) {
            graph->setData({0, 1, 2, 3}, {0, 1e300, -1e300, 0}, true);
            graph->setPen(QPen(Qt::yellow, width));
            const QImage empty = drawnWith(plot, nullptr);
            QVERIFY(drawnWith(plot, graph) != empty);
        }
    }

    void aScreenOfTwicePixelsShowsTheSameLines()
    {
        QVector<double> keys, values;
        for (int i = 0; i < 100; ++i) {
            keys.append(i);
            values.append((i * 37) % 100);
        }
        compared(keys, values, QPen(QColor(221, 221, 0), 2.0), QCPScatterStyle(), QSize(600, 300));
        QImage pictures[3];
        for (int which = 0; which < 3; ++which) {
            for (int other = 0; other < 2; ++other)
                plot.graph(other)->setVisible(other == which);
            pictures[which] = QImage(1200, 600, QImage::Format_ARGB32_Premultiplied);
            pictures[which].fill(Qt::black);
            pictures[which].setDevicePixelRatio(2.0);
            QCPPainter painter(&pictures[which]);
            plot.toPainter(&painter, 600, 300);
        }
        const double alike = agreement(pictures[2], pictures[0], pictures[1]);
        qInfo("%.4f of the inked pixels agree", alike);
        QVERIFY(alike >= 0.95);
    }
};

QTEST_MAIN(WideLinesTest)
#include "WideLinesTest.moc"
