#include "FrequencyTool.h"

#include "support/DrivenPause.h"
#include "support/FailedSaves.h"
#include "support/FileContent.h"
#include "support/FileDialogs.h"
#include "support/FullDisk.h"
#include "support/MessageBoxes.h"

#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QDoubleSpinBox>
#include <QFile>
#include <QSignalSpy>
#include <QtTest>

#include <cmath>
#include <sys/stat.h>

using namespace koralink_double;
using operate::find;

namespace {

int countOf(const QImage& picture, const QColor& colour)
{
    int count = 0;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x)
            count += picture.pixelColor(x, y) == colour;
    }
    return count;
}

/// How often a widget was painted.
class PaintCounter : public QObject
{
public:
    explicit PaintCounter(QWidget* widget) { widget->installEventFilter(this); }
    int count() const { return paints; }

protected:
    bool eventFilter(QObject* object, QEvent* event) override
    {
        paints += event->type() == QEvent::Paint;
        return QObject::eventFilter(object, event);
    }

private:
    int paints = 0;
};

} // namespace

class FrequencyPlotsTest : public FrequencyTool
{
    Q_OBJECT

private slots:
    void everySweepAddsACheckedPlotInTheNextColour()
    {
        const QColor colors[6] = {QColor(255, 0, 0),   QColor(0, 255, 0),   QColor(0, 0, 255),
                                  QColor(255, 255, 0), QColor(0, 255, 255), QColor(255, 0, 255)};
        setSweep("10", "20", "2");
        for (int plot = 0; plot < 7; ++plot) {
            start();
            const QTreeWidgetItem* item = tree()->topLevelItem(plot);
            QCOMPARE(item->text(0), QStringLiteral("plot_x_x_%1").arg(plot));
            QCOMPARE(item->checkState(0), Qt::Checked);
            QVERIFY(item->flags() & Qt::ItemIsUserCheckable);
            QVERIFY(item->flags() & Qt::ItemIsEnabled);
            for (QCustomPlot* graphs : {magnitudePlot(), phasePlot()}) {
                QCOMPARE(graphs->graphCount(), plot + 1);
                const QPen pen = graphs->graph(plot)->pen();
                QCOMPARE(pen.color(), colors[plot % 6]);
                QCOMPARE(pen.widthF(), 1.0);
                QCOMPARE(pen.capStyle(), Qt::SquareCap);
                QCOMPARE(pen.joinStyle(), Qt::BevelJoin);
                QVERIFY(!graphs->graph(plot)->antialiased());
            }
        }
        QCOMPARE(tree()->topLevelItemCount(), 7);
    }

    void checkBoxOfAPlotShowsAndHidesBothTraces()
    {
        setSweep("10", "20", "2");
        start();
        start();
        QSignalSpy magnitudeDrawn(magnitudePlot(), SIGNAL(afterReplot()));
        QSignalSpy phaseDrawn(phasePlot(), SIGNAL(afterReplot()));
        tree()->topLevelItem(1)->setCheckState(0, Qt::Unchecked);
        QCOMPARE(magnitudeDrawn.count(), 1);
        QCOMPARE(phaseDrawn.count(), 1);
        QVERIFY(magnitudePlot()->graph(0)->visible());
        QVERIFY(!magnitudePlot()->graph(1)->visible());
        QVERIFY(!phasePlot()->graph(1)->visible());
        tree()->topLevelItem(1)->setCheckState(0, Qt::PartiallyChecked);
        QVERIFY(!magnitudePlot()->graph(1)->visible());
        tree()->topLevelItem(1)->setCheckState(0, Qt::Checked);
        QVERIFY(magnitudePlot()->graph(1)->visible());
        QVERIFY(phasePlot()->graph(1)->visible());
    }

    void markupInTheNameOfAnExportIsShownAsItStands()
    {
        setSweep("10", "20", "2");
        start();
        tree()->topLevelItem(0)->setSelected(true);
        QFile old(path("<b>.csv"));
        QVERIFY(old.open(QIODevice::WriteOnly));
        FileDialogs dialogs(old.fileName());
        dialogs.answerByButton();
        MessageBoxes boxes(QMessageBox::Yes);
        exportSelected();
        QCOMPARE(boxes.count(), 1);
        QVERIFY(boxes.boxes().first().text.contains(QLatin1String("<b>.csv")));
        QCOMPARE(boxes.boxes().first().textFormat, Qt::PlainText);
    }

    void plotsAreDrawnOnceAtTheEndOfASweep()
    {
        window->show();
        QSignalSpy magnitudeDrawn(magnitudePlot(), SIGNAL(afterReplot()));
        QSignalSpy phaseDrawn(phasePlot(), SIGNAL(afterReplot()));
        int drawnBefore = -1;
        QCoreApplication::processEvents();
        magnitudeDrawn.clear();
        phaseDrawn.clear();
        answers().fillBlock = KnownResponse();
        inPause(5, [&] { drawnBefore = magnitudeDrawn.count() + phaseDrawn.count(); });
        setSweep("20", "200", "5");
        start();
        QCOMPARE(drawnBefore, 0);
        QCOMPARE(magnitudeDrawn.count(), 1);
        QCOMPARE(phaseDrawn.count(), 1);
        QCOMPARE(magnitudePlot()->xAxis->range().lower, 20.0);
        QCOMPARE(magnitudePlot()->xAxis->range().upper, 200.0);
        QCOMPARE(phasePlot()->xAxis->range().upper, 200.0);
    }

    void autoscaleFollowsTheVisiblePlots()
    {
        answers().fillBlock = KnownResponse();
        setSweep("20", "200", "3");
        start();
        setSweep("2", "500", "3");
        start();
        QCOMPARE(phasePlot()->xAxis->range().lower, 2.0);
        tree()->topLevelItem(1)->setCheckState(0, Qt::Unchecked);
        magnitudePlot()->xAxis->setRange(50, 60);
        QSignalSpy drawn(magnitudePlot(), SIGNAL(afterReplot()));
        operate::press(button("pushButtonAutoscale"));
        QCOMPARE(drawn.count(), 1);
        QCOMPARE(magnitudePlot()->xAxis->range().lower, 20.0);
        QCOMPARE(phasePlot()->xAxis->range().upper, 200.0);
    }

    void exportIsExactToTheByteInAscendingFrequency()
    {
        int reads = 0;
        answers().fillBlock = [&](DisplayRecord* block, int count) {
            KnownResponse response;
            response.amplitude = std::pow(10, reads++ * 4);
            response.phaseDeg = [](double) { return 90.0; };
            response(block, count);
        };
        find<QDoubleSpinBox>(window.get(), "amplspinBox")->setValue(1);
        setSweep("500", "1", "3", "lin");
        start();
        tree()->topLevelItem(0)->setSelected(true);
        FileDialogs dialogs(path("base.csv"));
        exportSelected();
        QCOMPARE(dialogs.dialogs().size(), 1);
        QCOMPARE(dialogs.dialogs().first().caption, QStringLiteral("Select a file to export the data"));
        QCOMPARE(dialogs.dialogs().first().nameFilters,
                 (QStringList{QStringLiteral("CSV files (*.csv)"), QStringLiteral("All Files (*)")}));
        QCOMPARE(contentOf(path("base_plot_x_x_0.csv")),
                 QByteArray("frequency [Hz], amplitude [um/um], phase [deg]\n1,2e+08,90\n250.5,20000,90\n500,2,90\n"));
        QVERIFY(!QFile::exists(path("base.csv")));
    }

    void exportOfTwoPlotsAccumulatesTheNames()
    {
        setSweep("10", "20", "2");
        start();
        start();
        tree()->selectAll();
        FileDialogs dialogs(path("base.csv"));
        exportSelected();
        QVERIFY(QFile::exists(path("base_plot_x_x_0.csv")));
        QVERIFY(QFile::exists(path("base_plot_x_x_0_plot_x_x_1.csv")));
        QCOMPARE(QDir(folder->path()).entryList(QDir::Files).size(), 2);
    }

    void everySuffixIsTakenOutOfTheName()
    {
        setSweep("10", "20", "2");
        start();
        tree()->selectAll();
        FileDialogs dialogs(path("a.csv.b.csv"));
        exportSelected();
        QVERIFY(QFile::exists(path("a.b_plot_x_x_0.csv")));
        dialogs.answerWith(path("plain"));
        exportSelected();
        QVERIFY(QFile::exists(path("plain_plot_x_x_0.csv")));
    }

    void headerFollowsTheBoxAtTheExport()
    {
        find<QCheckBox>(window.get(), "useBPMscalingCheckBox")->setChecked(false);
        setSweep("10", "20", "2");
        start();
        tree()->selectAll();
        FileDialogs dialogs(path("off.csv"));
        exportSelected();
        QVERIFY(contentOf(path("off_plot_x_x_0.csv")).startsWith("frequency [Hz], amplitude [um], phase [deg]\n"));
        find<QCheckBox>(window.get(), "useBPMscalingCheckBox")->setChecked(true);
        dialogs.answerWith(path("on.csv"));
        exportSelected();
        QVERIFY(contentOf(path("on_plot_x_x_0.csv")).startsWith("frequency [Hz], amplitude [um/um], phase [deg]\n"));
    }

    void exportWithoutASelectionOrANameWritesNothing()
    {
        setSweep("10", "20", "2");
        start();
        FileDialogs dialogs(path("base.csv"));
        exportSelected();
        QCOMPARE(dialogs.dialogs().size(), 1);
        tree()->selectAll();
        dialogs.answerWith(QString());
        exportSelected();
        QCOMPARE(dialogs.dialogs().size(), 2);
        QVERIFY(QDir(folder->path()).isEmpty());
    }

    void exportOverwritesAnOldFile()
    {
        QFile old(path("base_plot_x_x_0.csv"));
        QVERIFY(old.open(QIODevice::WriteOnly));
        old.write(QByteArray(10000, 'x'));
        old.close();
        setSweep("10", "20", "2");
        start();
        tree()->selectAll();
        FileDialogs dialogs(path("base.csv"));
        exportSelected();
        QVERIFY(!contentOf(path("base_plot_x_x_0.csv")).contains('x'));
    }

    void fileThatCannotBeOpenedEndsTheExportWithoutAMessage()
    {
        setSweep("10", "20", "2");
        start();
        start();
        tree()->selectAll();
        QVERIFY(QDir(folder->path()).mkdir(QStringLiteral("base_plot_x_x_0.csv")));
        FileDialogs dialogs(path("base.csv"));
        MessageBoxes boxes;
        exportSelected();
        QCOMPARE(boxes.count(), 0);
        QCOMPARE(QDir(folder->path()).entryList(QDir::Files).size(), 0);
    }

    void exportToAFullDiskKeepsTheOldFileAndIsToldOnce()
    {
        setSweep("10", "20", "2");
        start();
        start();
        tree()->selectAll();
        FileDialogs dialogs(path("base.csv"));
        exportSelected();
        const QByteArray old = contentOf(path("base_plot_x_x_0.csv"));
        QVERIFY(old.startsWith("frequency"));
        window->findChild<QCheckBox*>(QStringLiteral("useBPMscalingCheckBox"))->setChecked(false);
        MessageBoxes boxes;
        {
            const FullDisk disk;
            exportSelected();
        }
        QCOMPARE(boxes.count(), 1);
        compareFailedSave(boxes.boxes().first(), path("base_plot_x_x_0.csv"), QStringLiteral("File too large"));
        QCOMPARE(contentOf(path("base_plot_x_x_0.csv")), old);
        QCOMPARE(namesIn(folder->path()).size(), 2);
        exportSelected();
        QVERIFY(contentOf(path("base_plot_x_x_0.csv")) != old);
    }

    void exportToAPipeWithoutAReaderEndsWithoutAMessage()
    {
        setSweep("10", "20", "2");
        start();
        tree()->selectAll();
        QCOMPARE(::mkfifo(QFile::encodeName(path("base_plot_x_x_0.csv")).constData(), 0600), 0);
        FileDialogs dialogs(path("base.csv"));
        MessageBoxes boxes;
        exportSelected();
        QCOMPARE(boxes.count(), 0);
    }

    void sweepAfterAnExportOfFewerPlotsIsNamedAndNumberedOn()
    {
        setSweep("10", "20", "2");
        start();
        start();
        start();
        tree()->topLevelItem(1)->setSelected(true);
        FileDialogs dialogs(path("base.csv"));
        exportSelected();
        start();
        QCOMPARE(tree()->topLevelItemCount(), 4);
        QCOMPARE(tree()->topLevelItem(3)->text(0), QStringLiteral("plot_x_x_3"));
        QCOMPARE(tree()->topLevelItem(3)->checkState(0), Qt::Checked);
        QCOMPARE(keys(3).size(), std::size_t(2));
        tree()->clearSelection();
        tree()->topLevelItem(3)->setSelected(true);
        dialogs.answerWith(path("next.csv"));
        exportSelected();
        QCOMPARE(contentOf(path("next_plot_x_x_3.csv")).count('\n'), 3);
    }

    void equalStartAndStopLeaveOnePointTheLast()
    {
        int reads = 0;
        answers().fillBlock = [&](DisplayRecord* block, int count) {
            KnownResponse response;
            response.amplitude = ++reads;
            response(block, count);
        };
        find<QDoubleSpinBox>(window.get(), "amplspinBox")->setValue(1);
        setSweep("20", "20", "5");
        start();
        QCOMPARE(reads, 5);
        QCOMPARE(keys(0), std::vector<double>{20});
        QVERIFY(std::fabs(values(magnitudePlot(), 0).at(0) - 2 * 5) < 1e-4);
        tree()->topLevelItem(0)->setSelected(true);
        FileDialogs dialogs(path("one.csv"));
        exportSelected();
        QCOMPARE(contentOf(path("one_plot_x_x_0.csv")).count('\n'), 2);
    }

    void amplitudeOfZeroIsDividedByWithoutACheck()
    {
        find<QDoubleSpinBox>(window.get(), "amplspinBox")->setValue(0);
        answers().fillBlock = KnownResponse();
        setSweep("10", "20", "2");
        MessageBoxes boxes;
        start();
        QCOMPARE(boxes.count(), 0);
        QVERIFY(std::isinf(values(magnitudePlot(), 0).at(0)));
        answers().fillBlock = nullptr;
        start();
        QVERIFY(std::isnan(values(magnitudePlot(), 1).at(0)));
        tree()->topLevelItem(0)->setSelected(true);
        FileDialogs dialogs(path("zero.csv"));
        exportSelected();
        QVERIFY(contentOf(path("zero_plot_x_x_0.csv")).contains("10,inf,"));
    }

    void exportWithinASweepLeavesItGoingOn()
    {
        setSweep("10", "20", "2");
        start();
        tree()->topLevelItem(0)->setSelected(true);
        FileDialogs dialogs(path("base.csv"));
        driven_pause::clear();
        inPause(1, [this] { exportSelected(); });
        start();
        QVERIFY(QFile::exists(path("base_plot_x_x_0.csv")));
        QCOMPARE(keys(1).size(), std::size_t(2));
    }

    void theListShowsTheColourOfEachPlot()
    {
        setSweep("10", "20", "2");
        start();
        start();
        window->show();
        QVERIFY(QTest::qWaitForWindowExposed(window.get()));
        for (int plot = 0; plot < 2; ++plot) {
            const QRect row = tree()->visualItemRect(tree()->topLevelItem(plot));
            const QImage picture = tree()->viewport()->grab(row).toImage();
            QVERIFY(countOf(picture, magnitudePlot()->graph(plot)->pen().color()) > 40);
        }
    }

    void aPlotOfOnePointIsSeen()
    {
        answers().fillBlock = KnownResponse();
        window->show();
        QVERIFY(QTest::qWaitForWindowExposed(window.get()));
        setSweep("20", "20", "2");
        start();
        QCOMPARE(keys(0), std::vector<double>({20.0}));
        for (QCustomPlot* graphs : {magnitudePlot(), phasePlot()})
            QVERIFY(countOf(graphs->grab().toImage(), QColor(255, 0, 0)) >= 8);
    }

    void theBeginningOfASweepIsSeenAtOnce()
    {
        window->show();
        QVERIFY(QTest::qWaitForWindowExposed(window.get()));
        QCoreApplication::processEvents();
        setSweep("10", "20", "2");
        PaintCounter listPaints(tree()->viewport());
        PaintCounter buttonPaints(button("StartSweepPushButton"));
        QCOMPARE(QApplication::overrideCursor(), nullptr);
        bool waited = false;
        inPause(1, [&] {
            QCOMPARE(tree()->topLevelItemCount(), 1);
            QVERIFY(!button("StartSweepPushButton")->isEnabled());
            QVERIFY(listPaints.count() > 0);
            QVERIFY(buttonPaints.count() > 0);
            QVERIFY(QApplication::overrideCursor());
            QCOMPARE(QApplication::overrideCursor()->shape(), Qt::WaitCursor);
            waited = true;
        });
        start();
        QVERIFY(waited);
        QCOMPARE(QApplication::overrideCursor(), nullptr);
    }
};

QTEST_MAIN(FrequencyPlotsTest)
#include "FrequencyPlotsTest.moc"
