#include "ShownGraphXY.h"

#include "graphs/PlotLook.h"
#include "hardware/LoopConfiguration.h"
#include "support/MessageBoxes.h"

#include <QSignalSpy>

using namespace koralink_double;
using operate::find;

/// Limits, look and clicks.
class GraphXYTest : public ShownGraphXY
{
    Q_OBJECT

private slots:
    void theTableOfConfigurationsIsTheAgreedOne()
    {
        for (int code = 0; code < 15; ++code) {
            const LoopConfiguration& row = *loopConfiguration(code);
            QString loops, checked;
            for (int loop = 0; loop < loopCount; ++loop)
                loops += row.runs(loop) ? QLatin1String(loopNames[loop]) + QLatin1Char(' ') : QString();
            QCOMPARE(loops.trimmed(), QLatin1String(agreed[code].loops));
            checked += QLatin1String(row.clickChecksX ? "X" : "") + QLatin1String(row.clickChecksY ? "Y" : "");
            QCOMPARE(checked, QLatin1String(agreed[code].checked));
            QCOMPARE(loopConfigurationCode(row.mask), code);
        }
        const int byMask[15] = {0, 8, 1, 12, 2, 9, 4, 14, 3, 10, 5, 13, 6, 11, 7};
        for (int mask = 1; mask <= 15; ++mask)
            QCOMPARE(loopConfigurationCode(mask), byMask[mask - 1]);
        for (int code : {-128, -1, 15, 127})
            QVERIFY(!loopConfiguration(code));
    }

    void armedTargetIsSeenOnTheButtonAndUnderThePointer()
    {
        show(0);
        auto* button = find<QPushButton>(graph.get(), "targetEnable");
        // Left of the text.
        const auto face = [button] {
            const QImage picture = button->grab().toImage();
            return picture.pixelColor(4, picture.height() / 2);
        };
        QVERIFY(button->isChecked());
        QCOMPARE(plot->cursor().shape(), Qt::CrossCursor);
        QVERIFY2(face().blue() - face().red() > 100, qPrintable(face().name()));
        operate::press(button);
        QCOMPARE(plot->cursor().shape(), Qt::ArrowCursor);
        QVERIFY2(qAbs(face().blue() - face().red()) < 30, qPrintable(face().name()));
    }

    void startsWithTheLimitsOfItsMonitorAndTheirZoom_data()
    {
        QTest::addColumn<int>("bpm");
        QTest::addColumn<QPointF>("roi");
        QTest::addColumn<QPointF>("roc");
        QTest::newRow("BPM1") << 0 << QPointF(80, 40) << QPointF(40, 20);
        QTest::newRow("BPM2") << 1 << QPointF(20, 10) << QPointF(5, 2.5);
    }
    void startsWithTheLimitsOfItsMonitorAndTheirZoom()
    {
        QFETCH(int, bpm);
        QFETCH(QPointF, roi);
        QFETCH(QPointF, roc);
        const WidgetGraphXY widget(bpm, nullptr);
        auto* custom = find<QCustomPlot>(&widget, "graph");
        QCOMPARE(custom->itemCount(), 2);
        auto* rectROI = qobject_cast<QCPItemRect*>(custom->item(0));
        auto* rectROC = qobject_cast<QCPItemRect*>(custom->item(1));
        QCOMPARE(rectROI->topLeft->coords(), QPointF(roi.x(), -roi.y()));
        QCOMPARE(rectROI->bottomRight->coords(), QPointF(-roi.x(), roi.y()));
        QCOMPARE(rectROC->topLeft->coords(), QPointF(roc.x(), -roc.y()));
        QCOMPARE(rectROC->bottomRight->coords(), QPointF(-roc.x(), roc.y()));
        QCOMPARE(rectROI->pen(), QPen(QColor(50, 250, 50, 240), 1.5));
        QCOMPARE(rectROC->pen(), QPen(QColor(250, 70, 70, 240), 1.5));
        QVERIFY(rectROI->visible() && rectROC->visible());
        QCOMPARE(custom->xAxis->range().lower, -roc.x());
        QCOMPARE(custom->xAxis->range().upper, roc.x());
        QCOMPARE(custom->yAxis->range().lower, -roc.y());
        QCOMPARE(custom->yAxis->range().upper, roc.y());
    }

    void cloudAndTargetHaveTheirPens()
    {
        WidgetGraphXY widget(0, nullptr);
        auto* custom = find<QCustomPlot>(&widget, "graph");
        QCOMPARE(custom->graphCount(), 2);
        QCPGraph* cloud = custom->graph(0);
        QCOMPARE(cloud->pen(), QPen(QColor(250, 250, 200, 240), 2.0));
        QCOMPARE(cloud->lineStyle(), QCPGraph::lsNone);
        QCOMPARE(cloud->scatterStyle().shape(), QCPScatterStyle::ssCross);
        QCOMPARE(cloud->scatterStyle().size(), 2.0);
        QCPGraph* target = custom->graph(1);
        QCOMPARE(target->pen(), QPen(QColor(0, 191, 250, 255), 2.0));
        QCOMPARE(target->lineStyle(), QCPGraph::lsLine);
        QCOMPARE(target->scatterStyle().shape(), QCPScatterStyle::ssCross);
        QCOMPARE(target->scatterStyle().size(), 15.0);
        QVERIFY(!target->visible());
        QCOMPARE(custom->interactions(), QCP::Interactions(QCP::iRangeZoom));
        QCOMPARE(custom->xAxis->label(), QStringLiteral("Horizontal position [um]"));
        QCOMPARE(custom->yAxis->label(), QStringLiteral("Vertical position [um]"));
        QVERIFY(plot_look::isWhite(custom->xAxis) && plot_look::isWhite(custom->yAxis));
        QCOMPARE(find<QPushButton>(&widget, "resetZoomButton")->text(), QStringLiteral("Reset Zoom"));
        auto* enable = find<QPushButton>(&widget, "targetEnable");
        QCOMPARE(enable->text(), QStringLiteral("Target Enable"));
        QVERIFY(enable->isCheckable() && !enable->isChecked());
        QCPGraphDataContainer* const map = widget.dataMap();
        QVERIFY(cloud->data().data() == map && map->isEmpty());
    }

    void theGradientFollowsTheHeightOfThePlot()
    {
        show(0);
        QVERIFY(plot_look::gradientFillsTheHeight(plot));
        graph->resize(500, 300);
        QCoreApplication::processEvents();
        QVERIFY(plot->height() < 300);
        QVERIFY(plot_look::gradientFillsTheHeight(plot));
    }

    void newLimitsShowAtOnceAndResetZoomFollowsThem()
    {
        show(0);
        graph->setLimits(8, 6, 0.5);
        operate::press(find<QPushButton>(graph.get(), "resetZoomButton"));
        QCOMPARE(plot->xAxis->range().lower, -4.0);
        QCOMPARE(plot->xAxis->range().upper, 4.0);
        QCOMPARE(plot->yAxis->range().lower, -3.0);
        QCOMPARE(plot->yAxis->range().upper, 3.0);
    }

    void resetZoomDrawsNothingByItself()
    {
        show(0);
        QSignalSpy redraws(plot, SIGNAL(afterReplot()));
        graph->resetZoom();
        // Brings out a redraw that was only asked for.
        plot->repaint();
        QCoreApplication::processEvents();
        QCOMPARE(redraws.count(), 0);
    }

    void withoutSettingsThePlotKeepsItsOwnRange()
    {
        configFile->writeROI(0, 0, 0, 0, 0, 0);
        const WidgetGraphXY widget(0, nullptr);
        QVERIFY(find<QCustomPlot>(&widget, "graph")->xAxis->range().size() > 0);
    }

    void aClickWritesTheSetpointsOfTheLoopsThatThisMonitorFeeds_data()
    {
        QTest::addColumn<int>("bpm");
        QTest::addColumn<int>("code");
        for (int bpm = 0; bpm < 2; ++bpm) {
            for (int code = 0; code < 15; ++code)
                QTest::addRow("BPM%d, code %d", bpm + 1, code) << bpm << code;
        }
    }
    void aClickWritesTheSetpointsOfTheLoopsThatThisMonitorFeeds()
    {
        QFETCH(int, bpm);
        QFETCH(int, code);
        show(bpm);
        answers().pidConf = static_cast<signed char>(code);
        const QStringList running = QString::fromLatin1(agreed[code].loops).split(QLatin1Char(' '));
        for (int selectors = 0; selectors < 16; ++selectors) {
            setSelectors(selectors);
            clearCalls();
            QSignalSpy changes(graph.get(), SIGNAL(XYchanged()));
            const QPointF place = click(6, -4);
            std::vector<std::vector<double>> expected;
            const char* const names[4] = {"Xlf", "Xhf", "Ylf", "Yhf"};
            const double values[4] = {place.x(), 0.0, place.y(), 0.0};
            for (int loop = 0; loop < 4; ++loop) {
                if (running.contains(QLatin1String(names[loop])) && (selectors >> loop & 1) == bpm)
                    expected.push_back({double(loop), values[loop]});
            }
            std::vector<std::vector<double>> written;
            for (const Call& call : setpointCalls())
                written.push_back(call.arguments);
            QCOMPARE(written, expected);
            QCOMPARE(changes.count(), 1);
        }
    }

    void aClickOutsideTheLimitsIsRefusedOnTheCheckedAxesAlone_data()
    {
        QTest::addColumn<int>("code");
        for (int code = 0; code < 15; ++code)
            QTest::addRow("code %d", code) << code;
    }
    void aClickOutsideTheLimitsIsRefusedOnTheCheckedAxesAlone()
    {
        QFETCH(int, code);
        show(0);
        answers().pidConf = static_cast<signed char>(code);
        const QString checked = QString::fromLatin1(agreed[code].checked);
        const QVector<QPair<QPointF, QString>> places = {{QPointF(90, 0), QStringLiteral("X")},
                                                         {QPointF(-90, 0), QStringLiteral("X")},
                                                         {QPointF(0, 45), QStringLiteral("Y")},
                                                         {QPointF(0, -45), QStringLiteral("Y")}};
        for (const auto& [place, axis] : places) {
            MessageBoxes boxes;
            QSignalSpy changes(graph.get(), SIGNAL(XYchanged()));
            clearCalls();
            click(place.x(), place.y());
            const bool refused = checked.contains(axis);
            QCOMPARE(boxes.count(), refused ? 1 : 0);
            QCOMPARE(changes.count(), refused ? 0 : 1);
            QCOMPARE(setpointCalls().empty(), refused);
            if (refused) {
                QCOMPARE(boxes.boxes().at(0).title, QStringLiteral("Invalid setpoint"));
                QCOMPARE(boxes.boxes().at(0).text, QStringLiteral("Setpoint was set outside Region of Interest.\n\n"));
                QCOMPARE(boxes.boxes().at(0).icon, QMessageBox::Information);
                QCOMPARE(boxes.boxes().at(0).buttons, QMessageBox::StandardButtons(QMessageBox::Ok));
                QVERIFY(!boxes.boxes().at(0).hasParent);
                QVERIFY(commands().empty());
            }
        }
    }

    void aValueExactlyOnTheLimitIsAcceptedAndTheNextPixelIsNot()
    {
        show(0);
        answers().pidConf = 2;
        const int pixelX = qRound(plot->xAxis->coordToPixel(60));
        const int pixelY = qRound(plot->yAxis->coordToPixel(-30));
        configFile->writeROI(0, plot->xAxis->pixelToCoord(pixelX), -plot->yAxis->pixelToCoord(pixelY), 0, 0, 50);
        MessageBoxes boxes;
        QTest::mouseClick(plot, Qt::LeftButton, Qt::NoModifier, QPoint(pixelX, pixelY));
        QCOMPARE(boxes.count(), 0);
        QCOMPARE(setpointCalls().size(), std::size_t(2));
        QTest::mouseClick(plot, Qt::LeftButton, Qt::NoModifier, QPoint(pixelX + 1, pixelY));
        QCOMPARE(boxes.count(), 1);
        QTest::mouseClick(plot, Qt::LeftButton, Qt::NoModifier, QPoint(pixelX, pixelY + 1));
        QCOMPARE(boxes.count(), 2);
        QCOMPARE(setpointCalls().size(), std::size_t(2));
    }

    void theStoredLimitsCountAndNotTheDrawnOnes()
    {
        show(0);
        graph->setLimits(1, 1, 1);
        MessageBoxes boxes;
        click(70, 30);
        QCOMPARE(boxes.count(), 0);
        configFile->writeROI(0, 10, 10, 0, 0, 50);
        click(70, 30);
        QCOMPARE(boxes.count(), 1);
    }

    void aClickWithoutLevelOrWithoutTheButtonDoesNothing()
    {
        show(0);
        QSignalSpy changes(graph.get(), SIGNAL(XYchanged()));
        for (int level : {0, -1, 3}) {
            userLevel = level;
            click(1, 1);
        }
        QVERIFY(calls().empty());
        for (int level : {1, 2}) {
            userLevel = level;
            click(1, 1);
        }
        QCOMPARE(changes.count(), 2);
        clearCalls();
        operate::press(find<QPushButton>(graph.get(), "targetEnable"));
        click(1, 1);
        QVERIFY(calls().empty());
        QCOMPARE(changes.count(), 2);
    }

    void theButtonStaysCheckedForFurtherClicks()
    {
        show(0);
        click(1, 1);
        click(2, 2);
        QVERIFY(find<QPushButton>(graph.get(), "targetEnable")->isChecked());
        QCOMPARE(setpointCalls().size(), std::size_t(2));
    }

    void aPressCountsAndNotTheRelease()
    {
        show(0);
        QTest::mousePress(plot, Qt::LeftButton, Qt::NoModifier, QPoint(200, 200));
        QCOMPARE(setpointCalls().size(), std::size_t(1));
        QTest::mouseRelease(plot, Qt::LeftButton, Qt::NoModifier, QPoint(200, 200));
        QCOMPARE(setpointCalls().size(), std::size_t(1));
    }

    void aCodeThatNamesNoConfigurationWritesNothingAndIsStillAnnounced()
    {
        show(0);
        MessageBoxes boxes;
        QSignalSpy changes(graph.get(), SIGNAL(XYchanged()));
        for (int code : {15, 127, -1, -128}) {
            answers().pidConf = static_cast<signed char>(code);
            click(90, 45);
        }
        QVERIFY(commands().empty());
        QCOMPARE(boxes.count(), 0);
        QCOMPARE(changes.count(), 4);
    }
};

QTEST_MAIN(GraphXYTest)
#include "GraphXYTest.moc"
