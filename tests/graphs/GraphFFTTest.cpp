#include "app/Globals.h"
#include "double/KoralinkDouble.h"
#include "graphs/PlotLook.h"
#include "graphs/WidgetGraphFFT.h"
#include "stream/Updater.h"
#include "support/Operator.h"
#include "support/World.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QSignalSpy>
#include <QtTest>
#include <qcustomplot.h>

#include <cmath>
#include <memory>

using operate::find;

namespace {

QStringList itemsOf(const QComboBox* box)
{
    QStringList items;
    for (int i = 0; i < box->count(); ++i)
        items.append(box->itemText(i));
    return items;
}

} // namespace

class GraphFFTTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<World> world;
    std::unique_ptr<WidgetGraphFFT> graph;
    QCustomPlot* plot = nullptr;

    QComboBox* combo(const char* name) { return find<QComboBox>(graph.get(), name); }
    QString cursor(const char* name) { return find<QLineEdit>(graph.get(), name)->text(); }

    /// Places of the labels of the left axis, pixels.
    QVector<double> shownTicks()
    {
        QVector<double> places;
        const QCPRange range = plot->yAxis->range();
        QVector<double> ticks;
        QVector<QString> labels;
        plot->yAxis->ticker()->generate(range, QLocale::c(), QLatin1Char('e'), 1, ticks, nullptr, &labels);
        for (const double place : ticks) {
            if (range.contains(place))
                places.append(plot->yAxis->coordToPixel(place));
        }
        return places;
    }

    void tick(QCPGraphDataContainer* map, double first, double last)
    {
        map->clear();
        map->add(QCPGraphData(1, first));
        map->add(QCPGraphData(400, last));
        graph->replot();
    }

private slots:
    void init()
    {
        koralink_double::reset();
        world = std::make_unique<World>();
        graph = std::make_unique<WidgetGraphFFT>(nullptr);
        plot = find<QCustomPlot>(graph.get(), "graph");
    }
    void cleanup()
    {
        graph.reset();
        world.reset();
    }

    void theChoicesAndTheirDefaultsAreTheAgreedOnes()
    {
        QCOMPARE(itemsOf(combo("selectorComboBox")),
                 QStringList({QStringLiteral("IonBar 1, Ch 1"), QStringLiteral("IonBar 1, Ch 2"),
                              QStringLiteral("IonBar 1, Ch 3"), QStringLiteral("IonBar 1, Ch 4"),
                              QStringLiteral("BPM1, PosX"), QStringLiteral("BPM1, PosY"), QStringLiteral("BPM1, I0")}));
        QCOMPARE(itemsOf(combo("fFTLengthComboBox")),
                 QStringList({QStringLiteral("64"), QStringLiteral("128"), QStringLiteral("256"), QStringLiteral("512"),
                              QStringLiteral("1024"), QStringLiteral("2048"), QStringLiteral("8192")}));
        for (const char* axis : {"xAxisComboBox", "yAxisComboBox"}) {
            QCOMPARE(itemsOf(combo(axis)), QStringList({QStringLiteral("Log"), QStringLiteral("Lin")}));
            QCOMPARE(combo(axis)->currentText(), QStringLiteral("Log"));
        }
        QCOMPARE(combo("selectorComboBox")->currentIndex(), 0);
        QCOMPARE(combo("fFTLengthComboBox")->currentText(), QStringLiteral("64"));
        QVERIFY(!find<QCheckBox>(graph.get(), "removeDCCheckBox")->isChecked());
        QVERIFY(find<QCheckBox>(graph.get(), "checkBoxAutoscale")->isChecked());
        QCOMPARE(find<QCheckBox>(graph.get(), "checkBoxAutoscale")->text(), QStringLiteral("Autoscale"));
        QVERIFY(cursor("lineEditCursorX").isEmpty());
        QVERIFY(cursor("lineEditCursorY").isEmpty());
    }

    void thePlotStartsLogarithmicWithTheFirstSignal()
    {
        QCOMPARE(plot->graphCount(), 1);
        QCOMPARE(plot->graph(0)->pen(), QPen(QColor(221, 221, 0), 2.0));
        QCOMPARE(updater->fftChannel, 24);
        QCOMPARE(plot->xAxis->scaleType(), QCPAxis::stLogarithmic);
        QCOMPARE(plot->yAxis->scaleType(), QCPAxis::stLogarithmic);
        QCOMPARE(plot->xAxis->range().lower, 10.0);
        QCOMPARE(plot->xAxis->range().upper, 1000.0);
        QCOMPARE(plot->yAxis->range().upper, 1000.0);
        QVERIFY(plot->yAxis->range().lower > 0);
        QVERIFY(plot->xAxis->grid()->subGridVisible());
        const auto ticker = plot->xAxis->ticker().dynamicCast<QCPAxisTickerLog>();
        QVERIFY(ticker);
        QCOMPARE(ticker->subTickCount(), 8);
        QCOMPARE(int(plot->interactions()), 59);
        QCOMPARE(plot->axisRect()->rangeZoom(), Qt::Orientations(Qt::Vertical));
        QVERIFY(plot_look::isWhite(plot->xAxis) && plot_look::isWhite(plot->yAxis));
    }

    void theGradientFollowsTheHeightOfThePlot()
    {
        graph->resize(700, 500);
        graph->show();
        QVERIFY(QTest::qWaitForWindowExposed(graph.get()));
        QVERIFY(plot_look::gradientFillsTheHeight(plot));
        graph->resize(700, 300);
        QCoreApplication::processEvents();
        QVERIFY(plot->height() < 300);
        QVERIFY(plot_look::gradientFillsTheHeight(plot));
    }

    void everyChoiceHasItsLabelBeforeIt()
    {
        graph->show();
        QVERIFY(QTest::qWaitForWindowExposed(graph.get()));
        const struct
        {
            const char* text;
            const char* object;
        } rows[] = {{"Selector: ", "selectorComboBox"}, {"FFT Length:", "fFTLengthComboBox"},
                    {"Remove DC:", "removeDCCheckBox"}, {"X Axis:", "xAxisComboBox"},
                    {"Y Axis:", "yAxisComboBox"},       {"Cursor X", "lineEditCursorX"},
                    {"Cursor Y", "lineEditCursorY"}};
        const QList<QLabel*> labels = graph->findChildren<QLabel*>();
        QCOMPARE(labels.size(), int(std::size(rows)));
        for (int i = 0; i < labels.size(); ++i) {
            QCOMPARE(labels.at(i)->text(), QLatin1String(rows[i].text));
            const QRect field = find<QWidget>(graph.get(), rows[i].object)->geometry();
            QVERIFY(labels.at(i)->geometry().right() < field.left());
            QVERIFY(qAbs(labels.at(i)->geometry().center().y() - field.center().y()) <= 1);
        }
    }

    void aSignalBringsItsSlotAndColour_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("slot");
        QTest::addColumn<QColor>("colour");
        QTest::newRow("1") << QStringLiteral("IonBar 1, Ch 2") << 25 << QColor(255, 0, 94);
        QTest::newRow("2") << QStringLiteral("IonBar 1, Ch 3") << 26 << QColor(0, 255, 77);
        QTest::newRow("3") << QStringLiteral("IonBar 1, Ch 4") << 27 << QColor(0, 213, 255);
        QTest::newRow("4") << QStringLiteral("BPM1, PosX") << 0 << QColor(204, 0, 204);
        QTest::newRow("5") << QStringLiteral("BPM1, PosY") << 1 << QColor(0, 204, 204);
        QTest::newRow("6") << QStringLiteral("BPM1, I0") << 2 << QColor(240, 240, 240);
        QTest::newRow("other") << QStringLiteral("anything") << 0 << QColor(255, 255, 255);
    }
    void aSignalBringsItsSlotAndColour()
    {
        QFETCH(QString, text);
        QFETCH(int, slot);
        QFETCH(QColor, colour);
        updater->setFFTchannel(31);
        if (combo("selectorComboBox")->findText(text) < 0)
            combo("selectorComboBox")->addItem(text);
        combo("selectorComboBox")->setCurrentText(text);
        QCOMPARE(updater->fftChannel, slot);
        QCOMPARE(plot->graph(0)->pen(), QPen(colour, 2.0));
        combo("selectorComboBox")->setCurrentIndex(0);
        QCOMPARE(updater->fftChannel, 24);
    }

    void theLengthIsThatOfTheUpdaterUntilOneIsPicked()
    {
        QCOMPARE(updater->fftLength, 1024);
        for (const char* length : {"128", "8192", "64"}) {
            combo("fFTLengthComboBox")->setCurrentText(QLatin1String(length));
            QCOMPARE(updater->fftLength, QByteArray(length).toInt());
        }
    }

    void theBoxForTheMeanGoesToTheUpdater()
    {
        operate::press(find<QCheckBox>(graph.get(), "removeDCCheckBox"));
        QVERIFY(updater->removeDC);
        operate::press(find<QCheckBox>(graph.get(), "removeDCCheckBox"));
        QVERIFY(!updater->removeDC);
    }

    void theAxesSwitchTheirScaleOneByOne()
    {
        combo("xAxisComboBox")->setCurrentText(QStringLiteral("Lin"));
        QCOMPARE(plot->xAxis->scaleType(), QCPAxis::stLinear);
        QCOMPARE(plot->yAxis->scaleType(), QCPAxis::stLogarithmic);
        combo("yAxisComboBox")->setCurrentText(QStringLiteral("Lin"));
        combo("xAxisComboBox")->setCurrentText(QStringLiteral("Log"));
        QCOMPARE(plot->xAxis->scaleType(), QCPAxis::stLogarithmic);
        QCOMPARE(plot->yAxis->scaleType(), QCPAxis::stLinear);
        QCOMPARE(plot->xAxis->ticker().dynamicCast<QCPAxisTickerLog>()->subTickCount(), 8);
        combo("yAxisComboBox")->addItem(QStringLiteral("log"));
        combo("yAxisComboBox")->setCurrentText(QStringLiteral("Log"));
        combo("yAxisComboBox")->setCurrentText(QStringLiteral("log"));
        QCOMPARE(plot->yAxis->scaleType(), QCPAxis::stLinear);
    }

    void aChangedScaleIsDrawnWithoutANewSpectrum_data()
    {
        QTest::addColumn<QString>("axis");
        QTest::newRow("x") << QStringLiteral("xAxisComboBox");
        QTest::newRow("y") << QStringLiteral("yAxisComboBox");
    }
    void aChangedScaleIsDrawnWithoutANewSpectrum()
    {
        QFETCH(QString, axis);
        updater->paused = true;
        tick(graph->dataMap(), 0.25, 4);
        graph->resize(700, 400);
        graph->show();
        QVERIFY(QTest::qWaitForWindowExposed(graph.get()));
        QSignalSpy redraws(plot, SIGNAL(afterReplot()));
        for (const char* scale : {"Lin", "Log"}) {
            QCoreApplication::processEvents();
            redraws.clear();
            combo(qPrintable(axis))->setCurrentText(QLatin1String(scale));
            QTRY_VERIFY(redraws.count() >= 1);
            const QImage shown = plot->grab().toImage();
            plot->replot();
            QCOMPARE(shown, plot->grab().toImage());
        }
    }

    void autoscaleFollowsTheSpectrumAndStopsWhenUnchecked()
    {
        QCPGraphDataContainer* map = graph->dataMap();
        QVERIFY(plot->graph(0)->data().data() == map);
        tick(map, 0.25, 4);
        QCOMPARE(plot->yAxis->range().lower, 0.25);
        QCOMPARE(plot->yAxis->range().upper, 4.0);
        QCOMPARE(plot->xAxis->range().upper, 400.0);
        operate::press(find<QCheckBox>(graph.get(), "checkBoxAutoscale"));
        tick(map, 1, 100);
        QCOMPARE(plot->yAxis->range().upper, 4.0);
    }

    void aBinAtZeroHertzLeavesTheLogarithmicAxisUsable()
    {
        QCPGraphDataContainer* map = graph->dataMap();
        map->add(QCPGraphData(0, 5));
        map->add(QCPGraphData(1, 0));
        map->add(QCPGraphData(500, 2));
        graph->replot();
        QCOMPARE(plot->xAxis->range().lower, 1.0);
        QCOMPARE(plot->xAxis->range().upper, 500.0);
        QCOMPARE(plot->yAxis->range().lower, 2.0);
        QCOMPARE(plot->yAxis->range().upper, 5.0);
    }

    void aClickShowsWhatTheAxesSayAlsoOutsideTheAxisRectangle()
    {
        graph->resize(700, 400);
        graph->show();
        QVERIFY(QTest::qWaitForWindowExposed(graph.get()));
        const int channel = updater->fftChannel;
        for (const QPoint& pixel : {QPoint(300, 100), QPoint(1, 1), QPoint(plot->width() - 1, plot->height() - 1)}) {
            QTest::mouseClick(plot, Qt::LeftButton, Qt::NoModifier, pixel);
            QCOMPARE(cursor("lineEditCursorX"), QString::number(plot->xAxis->pixelToCoord(pixel.x()), 'e', 3));
            QCOMPARE(cursor("lineEditCursorY"), QString::number(plot->yAxis->pixelToCoord(pixel.y()), 'e', 3));
        }
        QVERIFY(!plot->axisRect()->rect().contains(1, 1));
        QCOMPARE(updater->fftChannel, channel);
        QVERIFY(koralink_double::commands().empty());
    }

    void theSpectrumThatIsShownIsThatOfTheChosenSignal()
    {
        updater->setGraphData(KindFFT, 0, graph->dataMap());
        QObject::connect(updater, SIGNAL(replotGraphs()), graph.get(), SLOT(replot()));
        koralink_double::answers().fillBlock = [](DisplayRecord* block, int count) {
            for (int record = 0; record < count; ++record) {
                block[record].cur1[0] = 3;
                block[record].pos1X = 5;
            }
        };
        combo("fFTLengthComboBox")->setCurrentText(QStringLiteral("128"));
        bpmScaleX[0] = 10;
        updater->updateGraphs();
        QCOMPARE(plot->graph(0)->data()->size(), 65);
        QCOMPARE(plot->graph(0)->data()->at(0)->value, 3.0);
        combo("selectorComboBox")->setCurrentText(QStringLiteral("BPM1, PosX"));
        updater->updateGraphs();
        QCOMPARE(plot->graph(0)->data()->at(0)->value, 50.0);
    }

    void theAxesTellQuantityAndUnitOfTheChosenSignal()
    {
        QCOMPARE(plot->xAxis->label(), QStringLiteral("Frequency [Hz]"));
        const char* const titles[] = {"Current [A]",   "Current [A]",   "Current [A]",  "Current [A]",
                                      "Position [um]", "Position [um]", "Intensity [A]"};
        for (int signal = 0; signal < 7; ++signal) {
            combo("selectorComboBox")->setCurrentIndex(signal);
            QCOMPARE(plot->yAxis->label(), QLatin1String(titles[signal]));
        }
    }

    void thePlotStaysInPlaceWhileTheMagnitudesChange()
    {
        graph->resize(700, 400);
        graph->show();
        QVERIFY(QTest::qWaitForWindowExposed(graph.get()));
        QCPGraphDataContainer* map = graph->dataMap();
        for (const char* scale : {"Log", "Lin"}) {
            combo("yAxisComboBox")->setCurrentText(QLatin1String(scale));
            QSet<int> places;
            for (const double magnitude : {1e-12, 3e-7, 0.4, 7.0, 123.0, 9e5}) {
                tick(map, magnitude, magnitude / 1000);
                plot->replot();
                places.insert(plot->axisRect()->left());
            }
            QCOMPARE(places.size(), 1);
        }
    }

    void tickLabelsDoNotTouchInALowPlot()
    {
        graph->resize(700, 260);
        graph->show();
        QVERIFY(QTest::qWaitForWindowExposed(graph.get()));
        QCPGraphDataContainer* map = graph->dataMap();
        for (const char* scale : {"Log", "Lin"}) {
            combo("yAxisComboBox")->setCurrentText(QLatin1String(scale));
            tick(map, 1e-9, 1);
            plot->replot();
            const QVector<double> ticks = shownTicks();
            QVERIFY(ticks.size() >= 2);
            for (int i = 1; i < ticks.size(); ++i)
                QVERIFY(std::abs(ticks[i] - ticks[i - 1]) > QFontMetrics(plot->yAxis->tickLabelFont()).height());
        }
    }
};

QTEST_MAIN(GraphFFTTest)
#include "GraphFFTTest.moc"
