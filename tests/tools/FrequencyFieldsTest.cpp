#include "FrequencyTool.h"

#include "app/Globals.h"
#include "hardware/MailboxComm.h"
#include "support/MessageBoxes.h"

#include <QCheckBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QtTest>

#include <cmath>

using namespace koralink_double;
using operate::find;

class FrequencyFieldsTest : public FrequencyTool
{
    Q_OBJECT

private slots:
    void opensWithTheStatedTextsAndDefaults()
    {
        QCOMPARE(window->windowTitle(), QStringLiteral("Frequency Analysis Tool"));
        QCOMPARE(line("startFreqLineEdit")->text(), QStringLiteral("10"));
        QCOMPARE(line("stopFreqLineEdit")->text(), QStringLiteral("50"));
        QCOMPARE(line("lengthLineEdit")->text(), QStringLiteral("5"));
        const auto items = [this](const char* name) {
            QStringList texts;
            for (int i = 0; i < combo(name)->count(); ++i)
                texts.append(combo(name)->itemText(i));
            return texts.join(QLatin1Char(' '));
        };
        QCOMPARE(items("sweepTypeComboBox"), QStringLiteral("log lin"));
        QCOMPARE(combo("sweepTypeComboBox")->currentText(), QStringLiteral("log"));
        QCOMPARE(items("outputChComboBox"), QStringLiteral("x y"));
        QCOMPARE(items("inputChComboBox"), QStringLiteral("x y"));
        for (const char* name : {"outAnvoltChLineEdit", "offsetspinBox", "inIonbarChLineEdit", "inBpmChLineEdit"})
            QVERIFY2(!line(name)->isEnabled(), name);
        const auto* amplitude = find<QDoubleSpinBox>(window.get(), "amplspinBox");
        QCOMPARE(amplitude->value(), 0.01);
        QCOMPARE(amplitude->maximum(), 1.0);
        QCOMPARE(amplitude->singleStep(), 0.01);
        const auto* scaling = find<QCheckBox>(window.get(), "useBPMscalingCheckBox");
        QCOMPARE(scaling->text(), QStringLiteral("use BPM scaling"));
        QVERIFY(scaling->isChecked());
        QCOMPARE(tree()->headerItem()->text(0), QStringLiteral("Plots"));
        QCOMPARE(tree()->selectionMode(), QAbstractItemView::MultiSelection);
        QCOMPARE(button("exportMeasPushButton")->text(), QStringLiteral("Export meas"));
        QCOMPARE(button("pushButtonAutoscale")->text(), QStringLiteral("Autoscale"));
        QCOMPARE(button("StartSweepPushButton")->text(), QStringLiteral("Start sweep"));
        QCOMPARE(button("StopSweepPushButton")->text(), QStringLiteral("Stop sweep"));
        QCOMPARE(progress(), 0);
        QStringList labels;
        for (const QLabel* label : window->findChildren<QLabel*>())
            labels.append(label->text());
        for (const char* text : {"Start freq", "Stop freq", "Length", "Sweep type", "Output ch", "Anvolt", "Ampl [Vpp]",
                                 "Offset", "Input ch", "IonBar", "BPM"})
            QVERIFY2(labels.contains(QLatin1String(text)), text);
    }

    void plotsAreDressedAsStated()
    {
        for (QCustomPlot* plot : {magnitudePlot(), phasePlot()}) {
            QCOMPARE(int(plot->interactions()), 59);
            QCOMPARE(plot->axisRect()->rangeZoom(), Qt::Orientations(Qt::Vertical));
            QCOMPARE(plot->xAxis->label(), QStringLiteral("Frequency [Hz]"));
            QCOMPARE(plot->xAxis->scaleType(), QCPAxis::stLogarithmic);
            QCOMPARE(plot->xAxis->range().lower, 1.0);
            QCOMPARE(plot->xAxis->range().upper, 100.0);
            const auto ticker = qSharedPointerDynamicCast<QCPAxisTickerLog>(plot->xAxis->ticker());
            QVERIFY(ticker);
            QCOMPARE(ticker->subTickCount(), 8);
            for (QCPAxis* axis : {plot->xAxis, plot->yAxis}) {
                QCOMPARE(axis->labelColor(), QColor(Qt::white));
                QCOMPARE(axis->tickLabelColor(), QColor(Qt::white));
                for (const QPen& pen : {axis->basePen(), axis->tickPen(), axis->subTickPen()}) {
                    QCOMPARE(pen.color(), QColor(Qt::white));
                    QCOMPARE(pen.widthF(), 1.0);
                    QCOMPARE(pen.style(), Qt::SolidLine);
                }
                QVERIFY(axis->grid()->subGridVisible());
            }
            // The left edge shows the gradient, which ends at 200 pixels.
            const QImage picture = plot->toPixmap(300, 300).toImage();
            QCOMPARE(picture.pixelColor(0, 0), QColor(100, 100, 100));
            QVERIFY(qAbs(picture.pixelColor(0, 100).green() - 65) <= 1);
            QCOMPARE(picture.pixelColor(0, 200), QColor(30, 30, 30));
        }
        QCOMPARE(magnitudePlot()->yAxis->label(), QStringLiteral("Magnitude"));
        QCOMPARE(phasePlot()->yAxis->label(), QStringLiteral("Phase [deg]"));
        QCOMPARE(magnitudePlot()->yAxis->scaleType(), QCPAxis::stLogarithmic);
        QCOMPARE(magnitudePlot()->yAxis->numberFormat(), QStringLiteral("e"));
        QCOMPARE(magnitudePlot()->yAxis->numberPrecision(), 2);
        QCOMPARE(phasePlot()->yAxis->scaleType(), QCPAxis::stLinear);
    }

    void fieldsMirrorOutputSelectorAndValue()
    {
        answers().outSel[0] = 3;
        answers().outSel[2] = 1;
        answers().bpmSel[0] = 1;
        answers().fillBlock = [](DisplayRecord* block, int count) {
            QCOMPARE(count, 1);
            block[0].dac[1] = 5;
            block[0].dac[3] = -1.2345678;
        };
        window->showTool();
        QVERIFY(window->isVisible());
        QCOMPARE(line("outAnvoltChLineEdit")->text(), QStringLiteral("OUT4"));
        QCOMPARE(line("offsetspinBox")->text(), QStringLiteral("-1,23457"));
        QCOMPARE(line("inBpmChLineEdit")->text(), QStringLiteral("2"));
        QCOMPARE(line("inIonbarChLineEdit")->text(), QStringLiteral("Xlf"));
        combo("outputChComboBox")->setCurrentText(QStringLiteral("y"));
        QCOMPARE(line("outAnvoltChLineEdit")->text(), QStringLiteral("OUT2"));
        QCOMPARE(line("offsetspinBox")->text(), QStringLiteral("5"));
        combo("inputChComboBox")->setCurrentText(QStringLiteral("y"));
        QCOMPARE(line("inBpmChLineEdit")->text(), QStringLiteral("1"));
        QCOMPARE(line("inIonbarChLineEdit")->text(), QStringLiteral("Ylf"));
        for (const std::string& read : callsOf("read"))
            QCOMPARE(read, std::string("read(/dev/kora_dma_displ, 256)"));
    }

    void constructionFillsTheFields()
    {
        answers().outSel[0] = 2;
        answers().bpmSel[0] = 1;
        window = std::make_unique<WindowFrequencyAnalysis>();
        QCOMPARE(line("outAnvoltChLineEdit")->text(), QStringLiteral("OUT3"));
        QCOMPARE(line("offsetspinBox")->text(), QStringLiteral("0"));
        QCOMPARE(line("inBpmChLineEdit")->text(), QStringLiteral("2"));
    }

    void refusedSweepsSayWhyAndTouchNothing_data()
    {
        QTest::addColumn<QByteArray>("startText");
        QTest::addColumn<QByteArray>("stopText");
        QTest::addColumn<QByteArray>("lengthText");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("text");
        const QString startTitle = QStringLiteral("Start frequency not allowed ...\n");
        const QString startText = QStringLiteral("Allowed values [0.1, 500] Hz\n\n");
        const QString stopTitle = QStringLiteral("Stop frequency not allowed ...\n");
        const QString stopText = QStringLiteral("Allowed values [1, 1000] Hz\n\n");
        const QString lengthTitle = QStringLiteral("Number of frequency points not allowed ...\n");
        const QString lengthText = QStringLiteral("Allowed values [2, 1000]\n\n");
        using Text = QByteArray;
        QTest::newRow("start below") << Text("0.0999") << Text("50") << Text("5") << startTitle << startText;
        QTest::newRow("start above") << Text("500.1") << Text("50") << Text("5") << startTitle << startText;
        QTest::newRow("start not a number") << Text("nan") << Text("50") << Text("5") << startTitle << startText;
        QTest::newRow("start no text") << Text("") << Text("50") << Text("5") << startTitle << startText;
        QTest::newRow("start with a comma") << Text("1,5") << Text("50") << Text("5") << startTitle << startText;
        QTest::newRow("stop below") << Text("10") << Text("0.99") << Text("5") << stopTitle << stopText;
        QTest::newRow("stop above") << Text("10") << Text("1000.5") << Text("5") << stopTitle << stopText;
        QTest::newRow("stop infinite") << Text("10") << Text("inf") << Text("5") << stopTitle << stopText;
        QTest::newRow("length below") << Text("10") << Text("50") << Text("1") << lengthTitle << lengthText;
        QTest::newRow("length above") << Text("10") << Text("50") << Text("1001") << lengthTitle << lengthText;
        QTest::newRow("length not a number") << Text("10") << Text("50") << Text("five") << lengthTitle << lengthText;
        QTest::newRow("all wrong, start first") << Text("0") << Text("0") << Text("0") << startTitle << startText;
        QTest::newRow("stop before length") << Text("10") << Text("0") << Text("0") << stopTitle << stopText;
    }
    void refusedSweepsSayWhyAndTouchNothing()
    {
        QFETCH(QByteArray, startText);
        QFETCH(QByteArray, stopText);
        QFETCH(QByteArray, lengthText);
        setSweep(startText.constData(), stopText.constData(), lengthText.constData());
        MessageBoxes boxes;
        start();
        QCOMPARE(boxes.count(), 1);
        QTEST(boxes.boxes().first().title, "title");
        QTEST(boxes.boxes().first().text, "text");
        QCOMPARE(boxes.boxes().first().icon, QMessageBox::Critical);
        QCOMPARE(boxes.boxes().first().buttons, QMessageBox::StandardButtons(QMessageBox::Ok));
        QVERIFY(button("StartSweepPushButton")->isEnabled());
        QVERIFY(calls().empty());
        QCOMPARE(tree()->topLevelItemCount(), 0);

        // A stop that is pressed now is not remembered.
        stop();
        setSweep("10", "20", "2");
        start();
        QCOMPARE(keys(0).size(), std::size_t(2));
    }

    void limitsThemselvesAreAllowed_data()
    {
        QTest::addColumn<QByteArray>("startText");
        QTest::addColumn<QByteArray>("stopText");
        QTest::addColumn<QByteArray>("lengthText");
        QTest::newRow("lowest") << QByteArray("0.1") << QByteArray("1") << QByteArray("2");
        QTest::newRow("highest") << QByteArray("500") << QByteArray("1000") << QByteArray("2");
    }
    void limitsThemselvesAreAllowed()
    {
        QFETCH(QByteArray, startText);
        QFETCH(QByteArray, stopText);
        QFETCH(QByteArray, lengthText);
        setSweep(startText.constData(), stopText.constData(), lengthText.constData());
        MessageBoxes boxes;
        start();
        QCOMPARE(boxes.count(), 0);
        QCOMPARE(generatorFrequencies(),
                 (std::vector<double>{double(startText.toFloat()), double(stopText.toFloat())}));
    }

    void thousandPointsAreAllowed()
    {
        setSweep("10", "20", "1000");
        inPause(1, [this] { stop(); });
        start();
        QCOMPARE(generatorFrequencies().size(), std::size_t(1));
        QCOMPARE(tree()->topLevelItemCount(), 1);
    }

    void linearSweepHasEqualSteps()
    {
        setSweep("10", "50", "5", "lin");
        start();
        QCOMPARE(generatorFrequencies(), (std::vector<double>{10, 20, 30, 40, 50}));
    }

    void logarithmicSweepHasEqualRatios()
    {
        setSweep("1", "100", "5", "log");
        start();
        const std::vector<double> list = generatorFrequencies();
        QCOMPARE(list.size(), std::size_t(5));
        for (std::size_t i = 0; i < 5; ++i)
            QVERIFY(std::fabs(list[i] - std::pow(10, i * 0.5)) < 1e-6 * list[i]);
    }

    void logarithmicSweepRunsDownwardWhereStartIsAboveStop()
    {
        setSweep("500", "1", "3", "log");
        start();
        const std::vector<double> list = generatorFrequencies();
        QCOMPARE(list.size(), std::size_t(3));
        QVERIFY(std::fabs(list[0] - 500) < 1e-3);
        QVERIFY(std::fabs(list[1] - std::sqrt(500.0)) < 1e-3);
        QCOMPARE(list[2], 1.0);
        QCOMPARE(keys(0), (std::vector<double>{list[2], list[1], list[0]}));
    }

    void runningLoopRefusesTheSweepAndKeepsALaterStop()
    {
        mailbox->pidStatus = PidStatusOutOfRoc;
        MessageBoxes boxes;
        start();
        QCOMPARE(boxes.count(), 1);
        QCOMPARE(boxes.boxes().first().title, QStringLiteral("PID Running ...\n"));
        QCOMPARE(boxes.boxes().first().text,
                 QStringLiteral("Feedback need to be stopped before starting the Frequency Analysis.\n\n"));
        QCOMPARE(boxes.boxes().first().icon, QMessageBox::Critical);
        QVERIFY(button("StartSweepPushButton")->isEnabled());
        QVERIFY(calls().empty());
        QCOMPARE(tree()->topLevelItemCount(), 0);

        stop();
        mailbox->pidStatus = PidStatusOff;
        start();
        QCOMPARE(tree()->topLevelItemCount(), 1);
        QVERIFY(keys(0).empty());
        QVERIFY(callsOf("funcGenConfig").empty());
        start();
        QCOMPARE(keys(1).size(), std::size_t(5));
    }

    void runningLoopIsRefusedBeforeTheFieldsAreChecked()
    {
        mailbox->pidStatus = PidStatusOn;
        setSweep("0", "0", "0");
        MessageBoxes boxes;
        start();
        QCOMPARE(boxes.count(), 1);
        QCOMPARE(boxes.boxes().first().title, QStringLiteral("PID Running ...\n"));
    }

    void controllerWithoutAnOutputIsShownAndRefused()
    {
        answers().outSel[0] = 255;
        window->showTool();
        QCOMPARE(line("outAnvoltChLineEdit")->text(), QStringLiteral("OUT256"));
        QCOMPARE(line("offsetspinBox")->text(), QString());
        MessageBoxes boxes;
        start();
        QCOMPARE(boxes.count(), 1);
        QCOMPARE(boxes.boxes().first().title, QStringLiteral("Output not allowed ...\n"));
        QVERIFY(callsOf("funcGenConfig").empty());
        QVERIFY(callsOf("funcGenEnable").empty());
        QCOMPARE(tree()->topLevelItemCount(), 0);
        QVERIFY(button("StartSweepPushButton")->isEnabled());
        answers().outSel[0] = 0;
        start();
        QCOMPARE(keys(0).size(), std::size_t(5));
    }
};

QTEST_MAIN(FrequencyFieldsTest)
#include "FrequencyFieldsTest.moc"
