#include "SaveDataTool.h"

#include "app/Globals.h"
#include "support/MessageBoxes.h"

#include <QHostInfo>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSlider>

using namespace koralink_double;
using operate::find;

namespace {

constexpr const char* checkTexts[17] = {"IonBar Ch1",  "IonBar Ch2",  "IonBar Ch3",  "IonBar Ch4", "IonBar2 Ch1",
                                        "IonBar2 Ch2", "IonBar2 Ch3", "IonBar2 Ch4", "Anvolt Ch1", "Anvolt Ch2",
                                        "Anvolt Ch3",  "BPM Pos X",   "BPM Pos Y",   "BPM I0",     "BPM2 Pos X",
                                        "BPM2 Pos Y",  "BPM2 I0"};

/// Column of each check box in the order of the columns.
constexpr const char* columnTitles[17] = {
    "IonBar Ch1, ",  "IonBar Ch2, ",  "IonBar Ch3, ", "IonBar Ch4, ", "IonBar2 Ch1, ", "IonBar2 Ch2, ",
    "IonBar2 Ch3, ", "IonBar2 Ch4, ", "BPM1 Pos X, ", "BPM1 Pos Y, ", "BPM1 I0, ",     "BPM2 Pos X, ",
    "BPM2 Pos Y, ",  "BPM2 I0, ",     "Anvolt Ch1, ", "Anvolt Ch2, ", "Anvolt Ch3, "};

QByteArray numberText(double value)
{
    return QByteArray::number(value, 'g', 6);
}

} // namespace

/// The form, and what stands in the file.
class SaveDataTest : public SaveDataTool
{
    Q_OBJECT

private slots:
    void opensWithTheStatedTextsAndDefaults()
    {
        QCOMPARE(window->windowTitle(), QStringLiteral("Save data"));
        for (int i = 0; i < 17; ++i) {
            const auto* box = find<QCheckBox>(window.get(), checkNames[i]);
            QCOMPARE(box->text(), QLatin1String(checkTexts[i]));
            QCOMPARE(box->isChecked(), i >= 11);
        }
        QVERIFY(!window->findChild<QCheckBox*>(QStringLiteral("checkAnvoltch4")));
        const auto* samples = find<QSpinBox>(window.get(), "nrSampBox");
        QCOMPARE(samples->minimum(), 0);
        QCOMPARE(samples->maximum(), 10000);
        QCOMPARE(samples->value(), 1000);
        const auto* slider = find<QSlider>(window.get(), "nrSampSlider");
        QCOMPARE(slider->maximum(), 10000);
        QCOMPARE(slider->singleStep(), 10);
        QCOMPARE(slider->value(), 1000);
        QCOMPARE(slider->orientation(), Qt::Horizontal);
        QCOMPARE(status(), QStringLiteral("status"));
        QCOMPARE(find<QPushButton>(window.get(), "selectPathButton")->text(), QStringLiteral("..."));
        QStringList texts;
        for (const QLabel* label : window->findChildren<QLabel*>())
            texts.append(label->text());
        for (const char* text : {"Comment:", "FIle path:", "Number of samples:"})
            QVERIFY2(texts.contains(QLatin1String(text)), text);
        auto* box = find<QDialogButtonBox>(window.get(), "buttonBox");
        QCOMPARE(box->standardButtons(), QDialogButtonBox::StandardButtons(QDialogButtonBox::Close));
        QCOMPARE(box->buttons().size(), 2);
        QVERIFY(calls().empty());
    }

    void samplesBoxAndSliderFollowEachOther()
    {
        find<QSlider>(window.get(), "nrSampSlider")->setValue(4321);
        QCOMPARE(find<QSpinBox>(window.get(), "nrSampBox")->value(), 4321);
        useSamples(17);
        QCOMPARE(find<QSlider>(window.get(), "nrSampSlider")->value(), 17);
    }

    void savedFileIsExactToTheByte()
    {
        tickAll(true);
        useSamples(2);
        usePath(path());
        find<QPlainTextEdit>(window.get(), "commentTextEdit")->setPlainText(QStringLiteral("first\nsecond line"));
        bpmScaleX[0] = 2;
        bpmScaleY[0] = 3;
        bpmScaleX[1] = 4;
        bpmScaleY[1] = 5;
        SAMP_FREQ = 3;
        MessageBoxes boxes;
        const QDateTime before = QDateTime::currentDateTime();
        save();
        QCOMPARE(boxes.count(), 0);

        const QByteArray content = contentOf(path());
        const QByteArray timeLine = content.split('\n').at(3);
        const QRegularExpression time(
            QStringLiteral("^Time and Date: (\\d\\d:\\d\\d:\\d\\d) DD\\.(\\d\\d)\\.(\\d{4})\r$"));
        const QRegularExpressionMatch match = time.match(QString::fromLatin1(timeLine));
        QVERIFY2(match.hasMatch(), timeLine.constData());
        QCOMPARE(match.captured(2), before.toString(QStringLiteral("MM")));
        QCOMPARE(match.captured(3), before.toString(QStringLiteral("yyyy")));

        QByteArray expected = "Zenthic KORA\r\nKinetic Orbit Rectification Array\r\n\r\n" + timeLine +
                              "\nHost Name: " + QHostInfo::localHostName().toLocal8Bit() +
                              "\r\n\r\nComment: first\nsecond line\r\n\r\nNr, Rel. time, ";
        for (const char* title : columnTitles)
            expected += title;
        expected += "\r\n";
        for (int i = 0; i < 2; ++i) {
            expected += QByteArray::number(i) + ", " + (i == 0 ? "0" : "0.333333") + ", ";
            const auto raw = [i](int slot) { return (slot + 1) * 1000.25 + i; };
            for (int slot = 24; slot < 32; ++slot)
                expected += numberText(raw(slot)) + ", ";
            expected += numberText(raw(0) * 2) + ", " + numberText(raw(1) * 3) + ", " + numberText(raw(2)) + ", " +
                        numberText(raw(4) * 4) + ", " + numberText(raw(5) * 5) + ", " + numberText(raw(6)) + ", ";
            for (int slot = 8; slot < 11; ++slot)
                expected += numberText(raw(slot)) + ", ";
            expected += "\r\n";
        }
        QCOMPARE(content, expected);
        compareSavedStatus(path());
    }

    void eachBoxAddsItsOwnColumnAndValue_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("title");
        QTest::addColumn<double>("value");
        const char* const titles[17] = {
            "IonBar Ch1, ",  "IonBar Ch2, ",  "IonBar Ch3, ", "IonBar Ch4, ", "IonBar2 Ch1, ", "IonBar2 Ch2, ",
            "IonBar2 Ch3, ", "IonBar2 Ch4, ", "Anvolt Ch1, ", "Anvolt Ch2, ", "Anvolt Ch3, ",  "BPM1 Pos X, ",
            "BPM1 Pos Y, ",  "BPM1 I0, ",     "BPM2 Pos X, ", "BPM2 Pos Y, ", "BPM2 I0, "};
        const int recordSlots[17] = {24, 25, 26, 27, 28, 29, 30, 31, 8, 9, 10, 0, 1, 2, 4, 5, 6};
        for (int i = 0; i < 17; ++i)
            QTest::newRow(checkNames[i]) << QString::fromLatin1(checkNames[i]) << QByteArray(titles[i])
                                         << (recordSlots[i] + 1) * 1000.25;
    }
    void eachBoxAddsItsOwnColumnAndValue()
    {
        QFETCH(QString, name);
        QFETCH(QByteArray, title);
        QFETCH(double, value);
        tick({name});
        useSamples(1);
        usePath(path());
        save();
        QCOMPARE(dataLines(path()), (QList<QByteArray>{"Nr, Rel. time, " + title + "\r",
                                                       "0, 0, " + numberText(value) + ", \r", QByteArray()}));
    }

    void noSamplesWriteTheHeadersOnly()
    {
        useSamples(0);
        usePath(path());
        save();
        QCOMPARE(dataLines(path()),
                 (QList<QByteArray>{"Nr, Rel. time, BPM1 Pos X, BPM1 Pos Y, BPM1 I0, BPM2 Pos X, BPM2 Pos Y, "
                                    "BPM2 I0, \r",
                                    QByteArray()}));
        compareSavedStatus(path());
    }

    void allBoxesUntickedLeaveNumberAndTime()
    {
        tickAll(false);
        useSamples(3);
        usePath(path());
        save();
        QCOMPARE(dataLines(path()),
                 (QList<QByteArray>{"Nr, Rel. time, \r", "0, 0, \r", "1, 0.001, \r", "2, 0.002, \r", QByteArray()}));
    }

    void lastOfTenThousandRowsAtOneKilohertz()
    {
        tickAll(false);
        useSamples(10000);
        usePath(path());
        save();
        const QList<QByteArray> lines = dataLines(path());
        QCOMPARE(lines.size(), 10002);
        QCOMPARE(lines.at(10000), QByteArray("9999, 9.999, \r"));
    }

    void rateOfTheStepResponseGivesStepsOfTwentyMicroseconds()
    {
        SAMP_FREQ = 50000;
        tickAll(false);
        useSamples(3);
        usePath(path());
        save();
        QCOMPARE(dataLines(path()).mid(1, 3), (QList<QByteArray>{"0, 0, \r", "1, 2e-05, \r", "2, 4e-05, \r"}));
    }

    void rateOfZeroSavesTimesThatAreNotNumbers()
    {
        SAMP_FREQ = 0;
        tickAll(false);
        useSamples(2);
        usePath(path());
        save();
        QCOMPARE(dataLines(path()).mid(1, 2), (QList<QByteArray>{"0, nan, \r", "1, inf, \r"}));
    }

    void changedScaleFactorChangesTheColumnsWithoutANote()
    {
        tick({QStringLiteral("checkBPMposX")});
        useSamples(1);
        usePath(path("a.csv"));
        save();
        bpmScaleX[0] = -0.5;
        usePath(path("b.csv"));
        save();
        QCOMPARE(dataLines(path("a.csv")).at(1), QByteArray("0, 0, 1000.25, \r"));
        QCOMPARE(dataLines(path("b.csv")).at(1), QByteArray("0, 0, -500.125, \r"));
        QCOMPARE(dataLines(path("a.csv")).at(0), dataLines(path("b.csv")).at(0));
    }
};

QTEST_MAIN(SaveDataTest)
#include "SaveDataTest.moc"
