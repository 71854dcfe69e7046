#include "ShownGraphXY.h"

#include <QSignalSpy>

using namespace koralink_double;
using operate::find;

namespace {

QVector<QPointF> pointsOf(QCPGraph* graph)
{
    QVector<QPointF> points;
    for (auto point = graph->data()->constBegin(); point != graph->data()->constEnd(); ++point)
        points.append(QPointF(point->key, point->value));
    return points;
}

} // namespace

/// The marker of the set-point.
class GraphXYMarkerTest : public ShownGraphXY
{
    Q_OBJECT

private slots:
    void theMarkerFollowsCodeAndSelectors_data()
    {
        QTest::addColumn<int>("code");
        for (int code : {-1, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15})
            QTest::addRow("code %d", code) << code;
    }

    void theMarkerFollowsCodeAndSelectors()
    {
        QFETCH(int, code);
        bpmScaleX[0] = 300;
        bpmScaleY[0] = 400;
        bpmScaleX[1] = 500;
        bpmScaleY[1] = 600;
        answers().pidConf = static_cast<signed char>(code);
        answers().setpoints[0] = 11;
        answers().setpoints[1] = 111;
        answers().setpoints[2] = 22;
        answers().setpoints[3] = 222;
        const char kind = code >= 0 && code < 15 ? agreed[code].marker : ' ';
        for (int bpm = 0; bpm < 2; ++bpm) {
            const QVector<QPointF> vertical = {QPointF(11, -bpmScaleY[bpm]), QPointF(11, bpmScaleY[bpm])};
            const QVector<QPointF> horizontal = {QPointF(-bpmScaleX[bpm], 22), QPointF(bpmScaleX[bpm], 22)};
            for (int selectors = 0; selectors < 16; ++selectors) {
                setSelectors(selectors);
                const bool isX = bpm == bpmSelXlf;
                const bool isY = bpm == bpmSelYlf;
                QVector<QPointF> expected;
                if ((kind == '|' && isX) || (kind == '+' && isX && !isY))
                    expected = vertical;
                if ((kind == '-' && isY) || (kind == '+' && isY && !isX))
                    expected = horizontal;
                if (kind == '+' && isX && isY)
                    expected = {QPointF(11, 22)};
                WidgetGraphXY widget(bpm, nullptr);
                QCPGraph* target = find<QCustomPlot>(&widget, "graph")->graph(1);
                widget.updateGraphXY();
                QVERIFY(target->visible());
                QCOMPARE(pointsOf(target), expected);
                QCOMPARE(target->lineStyle(), QCPGraph::lsLine);
                if (expected.size() == 1) {
                    QCOMPARE(target->scatterStyle().shape(), QCPScatterStyle::ssCross);
                    QCOMPARE(target->scatterStyle().size(), 6.0);
                } else if (expected.size() == 2) {
                    QCOMPARE(target->scatterStyle().shape(), QCPScatterStyle::ssNone);
                }
            }
        }
    }

    void splitAxesShowALineOnEachGraphAndAClickMovesOnlyItsOwn()
    {
        answers().pidConf = 2;
        setSelectors(0b1100);
        show(0);
        graph->updateGraphXY();
        QCOMPARE(pointsOf(plot->graph(1)).size(), 2);
        QCOMPARE(pointsOf(plot->graph(1)).at(0).x(), pointsOf(plot->graph(1)).at(1).x());
        const QPointF place = click(5, 5);
        QCOMPARE(setpointCalls().size(), std::size_t(1));
        QCOMPARE(setpointCalls().at(0).arguments, (std::vector<double>{0.0, place.x()}));
        show(1);
        graph->updateGraphXY();
        QCOMPARE(pointsOf(plot->graph(1)).at(0).y(), pointsOf(plot->graph(1)).at(1).y());
    }

    void theMarkerReadsTheLowFrequencySetpointsAlone()
    {
        show(0);
        graph->updateGraphXY();
        QVERIFY(setpointCalls().empty());
        QVERIFY(commands().empty());
        QVERIFY(!callsOf("getPIDconf").empty());
    }

    void aFailingReadOfSetpointsShowsTheMarkerAtTheCentre()
    {
        fail("getSetpoint");
        answers().pidConf = 2;
        show(0);
        graph->updateGraphXY();
        QCOMPARE(pointsOf(plot->graph(1)), (QVector<QPointF>{QPointF(0, 0)}));
    }

    void theMarkerIsRedrawnAtOnce()
    {
        show(0);
        plot->repaint();
        QSignalSpy redraws(plot, SIGNAL(afterReplot()));
        graph->updateGraphXY();
        QTRY_COMPARE(redraws.count(), 1);
    }
};

QTEST_MAIN(GraphXYMarkerTest)
#include "GraphXYMarkerTest.moc"
