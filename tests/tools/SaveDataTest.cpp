#include "app/Globals.h"
#include "double/KoralinkDouble.h"
#include "support/FileDialogs.h"
#include "support/FullDisk.h"
#include "support/MessageBoxes.h"
#include "support/Operator.h"
#include "support/World.h"
#include "tools/WindowSaveData.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFile>
#include <QFileInfo>
#include <QHostInfo>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QSlider>
#include <QSpinBox>
#include <QTemporaryDir>
#include <QtTest>

#include <cstring>
#include <memory>

using namespace koralink_double;
using operate::find;

namespace {

constexpr const char* checkNames[17] = {
    "checkIonBarch1",   "checkIonBarch2",   "checkIonBarch3",   "checkIonBarch4", "checkIonBarch1_2",
    "checkIonBarch2_2", "checkIonBarch3_2", "checkIonBarch4_2", "checkAnvoltch1", "checkAnvoltch2",
    "checkAnvoltch3",   "checkBPMposX",     "checkBPMposY",     "checkBPMi0",     "checkBPMposX_2",
    "checkBPMposY_2",   "checkBPMi0_2"};

constexpr const char* checkTexts[17] = {
    "IonBar Ch1",  "IonBar Ch2",  "IonBar Ch3", "IonBar Ch4", "IonBar2 Ch1", "IonBar2 Ch2",
    "IonBar2 Ch3", "IonBar2 Ch4", "Anvolt Ch1", "Anvolt Ch2", "Anvolt Ch3",  "BPM Pos X",
    "BPM Pos Y",   "BPM I0",      "BPM2 Pos X", "BPM2 Pos Y", "BPM2 I0"};

/// Column of each check box in the order of the columns.
constexpr const char* columnTitles[17] = {
    "IonBar Ch1, ",  "IonBar Ch2, ",  "IonBar Ch3, ", "IonBar Ch4, ", "IonBar2 Ch1, ", "IonBar2 Ch2, ",
    "IonBar2 Ch3, ", "IonBar2 Ch4, ", "BPM1 Pos X, ", "BPM1 Pos Y, ", "BPM1 I0, ",     "BPM2 Pos X, ",
    "BPM2 Pos Y, ",  "BPM2 I0, ",     "Anvolt Ch1, ", "Anvolt Ch2, ", "Anvolt Ch3, "};

/// Every slot of every record has a value of its own.
void fillDistinct(DisplayRecord* block, int count)
{
    for (int i = 0; i < count; ++i) {
        double values[slotsPerRecord];
        for (int slot = 0; slot < slotsPerRecord; ++slot)
            values[slot] = (slot + 1) * 1000.25 + i;
        std::memcpy(&block[i], values, sizeof values);
    }
}

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    file.open(QIODevice::ReadOnly);
    return file.readAll();
}

QByteArray numberText(double value)
{
    return QByteArray::number(value, 'g', 6);
}

/// Lines of a file behind its header of eight lines.
QList<QByteArray> dataLines(const QString& path)
{
    return contentOf(path).split('\n').mid(8);
}

} // namespace

class SaveDataTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<World> world;
    std::unique_ptr<QTemporaryDir> folder;
    std::unique_ptr<WindowSaveData> window;

    QString path(const char* name = "data.csv") const { return folder->filePath(QLatin1String(name)); }
    void usePath(const QString& text) { find<QLineEdit>(window.get(), "pathLineEdit")->setText(text); }
    void useSamples(int count) { find<QSpinBox>(window.get(), "nrSampBox")->setValue(count); }
    void tick(const QStringList& names)
    {
        for (const char* name : checkNames)
            find<QCheckBox>(window.get(), name)->setChecked(names.contains(QLatin1String(name)));
    }
    void tickAll(bool on)
    {
        for (const char* name : checkNames)
            find<QCheckBox>(window.get(), name)->setChecked(on);
    }
    void save() { operate::press(find<QDialogButtonBox>(window.get(), "buttonBox"), QStringLiteral("Save")); }
    QString status() const { return find<QLabel>(window.get(), "statusLabel")->text(); }
    void compareSavedStatus(const QString& savedPath) const
    {
        const QRegularExpression line(QStringLiteral("^\\d\\d:\\d\\d:\\d\\d: Saved as: ") +
                                      QRegularExpression::escape(savedPath) + QStringLiteral("$"));
        QVERIFY2(line.match(status()).hasMatch(), qPrintable(status()));
    }

private slots:
    void init()
    {
        koralink_double::reset();
        answers().fillBlock = fillDistinct;
        world = std::make_unique<World>();
        folder = std::make_unique<QTemporaryDir>();
        window = std::make_unique<WindowSaveData>();
    }
    void cleanup()
    {
        window.reset();
        folder.reset();
        world.reset();
        QCOMPARE(openDescriptors(), 0);
    }

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
        find<QPlainTextEdit>(window.get(), "commentTextEdit")
            ->setPlainText(QStringLiteral("first\nsecond line"));
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
            expected += numberText(raw(0) * 2) + ", " + numberText(raw(1) * 3) + ", " + numberText(raw(2)) +
                        ", " + numberText(raw(4) * 4) + ", " + numberText(raw(5) * 5) + ", " +
                        numberText(raw(6)) + ", ";
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
        const char* const titles[17] = {"IonBar Ch1, ",  "IonBar Ch2, ",  "IonBar Ch3, ",  "IonBar Ch4, ",
                                        "IonBar2 Ch1, ", "IonBar2 Ch2, ", "IonBar2 Ch3, ", "IonBar2 Ch4, ",
                                        "Anvolt Ch1, ",  "Anvolt Ch2, ",  "Anvolt Ch3, ",  "BPM1 Pos X, ",
                                        "BPM1 Pos Y, ",  "BPM1 I0, ",     "BPM2 Pos X, ",  "BPM2 Pos Y, ",
                                        "BPM2 I0, "};
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
        QCOMPARE(dataLines(path()), (QList<QByteArray>{"Nr, Rel. time, \r", "0, 0, \r", "1, 0.001, \r",
                                                       "2, 0.002, \r", QByteArray()}));
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
        QCOMPARE(dataLines(path()).mid(1, 3),
                 (QList<QByteArray>{"0, 0, \r", "1, 2e-05, \r", "2, 4e-05, \r"}));
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

    void existingFileRaisesTheQuestionAndNoAppendsASecondHeader()
    {
        useSamples(1);
        usePath(path());
        save();
        const QByteArray first = contentOf(path());
        MessageBoxes boxes(QMessageBox::No);
        save();
        QCOMPARE(boxes.count(), 1);
        const MessageBoxes::Box& box = boxes.boxes().first();
        QCOMPARE(box.title, QStringLiteral("File exists"));
        QCOMPARE(box.text,
                 QStringLiteral("File: ") + path() +
                     QStringLiteral(" already exist.\n\nOverwrite file?\n\nYes - overwrite file\nNo - "
                                    "append to existing file\nCancel - cancel writing to file"));
        QCOMPARE(box.icon, QMessageBox::Warning);
        QCOMPARE(box.buttons, QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
        const QByteArray both = contentOf(path());
        QVERIFY(both.startsWith(first));
        QVERIFY(both.mid(first.size()).startsWith("Zenthic KORA\r\nKinetic"));
        QCOMPARE(both.count("Nr, Rel. time, "), 2);
        QCOMPARE(both.size(), 2 * first.size());
        save();
        QCOMPARE(boxes.count(), 2);
    }

    void yesOverwritesTheFile()
    {
        QFile old(path());
        QVERIFY(old.open(QIODevice::WriteOnly));
        old.write(QByteArray(100000, 'x'));
        old.close();
        useSamples(1);
        usePath(path());
        MessageBoxes boxes(QMessageBox::Yes);
        save();
        const QByteArray content = contentOf(path());
        QVERIFY(content.startsWith("Zenthic KORA\r\n"));
        QVERIFY(!content.contains('x'));
    }

    void cancelWritesNothingAndReleasesTheStream()
    {
        useSamples(1);
        usePath(path());
        save();
        const QByteArray first = contentOf(path());
        find<QLabel>(window.get(), "statusLabel")->setText(QStringLiteral("before"));
        clearCalls();
        MessageBoxes boxes(QMessageBox::Cancel);
        save();
        QCOMPARE(contentOf(path()), first);
        QCOMPARE(status(), QStringLiteral("before"));
        QCOMPARE(callsOf("read").size(), std::size_t(1));
        QCOMPARE(openDescriptors(), 0);
    }

    void wholeBlockIsReadInOneCallBeforeAnyQuestion()
    {
        useSamples(1);
        QFile old(path());
        QVERIFY(old.open(QIODevice::WriteOnly));
        old.close();
        FileDialogs dialogs(path());
        MessageBoxes boxes(QMessageBox::Yes);
        int readsAtFill = 0;
        answers().fillBlock = [&](DisplayRecord*, int count) {
            QCOMPARE(count, 14336);
            QCOMPARE(dialogs.dialogs().size(), 0);
            QCOMPARE(boxes.count(), 0);
            ++readsAtFill;
        };
        save();
        QCOMPARE(readsAtFill, 1);
        QCOMPARE(dialogs.dialogs().size(), 1);
        QCOMPARE(boxes.count(), 1);
        QCOMPARE(operate::lines(callsOf("open")),
                 QStringList{QStringLiteral("open(/dev/kora_dma_displ, 0)")});
        QCOMPARE(operate::lines(callsOf("read")),
                 QStringList{QStringLiteral("read(/dev/kora_dma_displ, 3670016)")});
    }

    void eachSaveTakesAFreshBlock()
    {
        tick({QStringLiteral("checkBPMi0")});
        useSamples(1);
        double intensity = 1;
        answers().fillBlock = [&](DisplayRecord* block, int) { block[0].int1 = intensity; };
        usePath(path("a.csv"));
        save();
        intensity = 2;
        usePath(path("b.csv"));
        save();
        QCOMPARE(dataLines(path("a.csv")).at(1), QByteArray("0, 0, 1, \r"));
        QCOMPARE(dataLines(path("b.csv")).at(1), QByteArray("0, 0, 2, \r"));
    }

    void emptyPathAsksForOneAndKeepsIt()
    {
        useSamples(0);
        FileDialogs dialogs(path());
        save();
        QCOMPARE(dialogs.dialogs().size(), 1);
        const FileDialogs::Dialog& dialog = dialogs.dialogs().first();
        QCOMPARE(dialog.caption, QStringLiteral("Select filename..."));
        QCOMPARE(dialog.nameFilters, QStringList{QStringLiteral("CSV files (*.csv)")});
        const QRegularExpression proposal(
            QStringLiteral("^KORA_meas_\\d{4}-\\d\\d-\\d\\d_\\d\\d-\\d\\d-\\d\\d\\.csv$"));
        QVERIFY2(proposal.match(dialog.proposedName).hasMatch(), qPrintable(dialog.proposedName));
        QCOMPARE(find<QLineEdit>(window.get(), "pathLineEdit")->text(), path());
        QVERIFY(QFile::exists(path()));
    }

    void pathButtonTakesTheAnswerAlsoWhenItIsEmpty()
    {
        usePath(QStringLiteral("something"));
        FileDialogs dialogs{QString()};
        operate::press(find<QPushButton>(window.get(), "selectPathButton"));
        QCOMPARE(dialogs.dialogs().size(), 1);
        QCOMPARE(find<QLineEdit>(window.get(), "pathLineEdit")->text(), QString());
        dialogs.answerWith(path("chosen.csv"));
        operate::press(find<QPushButton>(window.get(), "selectPathButton"));
        QCOMPARE(find<QLineEdit>(window.get(), "pathLineEdit")->text(), path("chosen.csv"));
        QVERIFY(calls().empty());
    }

    void cancelledFileDialogRunsToTheEndWithoutAFile()
    {
        FileDialogs dialogs{QString()};
        MessageBoxes boxes;
        save();
        QCOMPARE(boxes.count(), 0);
        compareSavedStatus(QString());
    }

    void closeButtonSavesNothing()
    {
        window->show();
        usePath(path());
        operate::press(find<QDialogButtonBox>(window.get(), "buttonBox"), QStringLiteral("Close"));
        QVERIFY(!window->isVisible());
        QVERIFY(calls().empty());
        QVERIFY(!QFile::exists(path()));
    }

    void streamThatCannotBeOpenedSavesZeros()
    {
        setDevicePresent(streamDevicePath, false);
        tick({QStringLiteral("checkBPMi0")});
        useSamples(2);
        usePath(path());
        MessageBoxes boxes;
        save();
        QCOMPARE(boxes.count(), 0);
        QCOMPARE(dataLines(path()).mid(1, 2), (QList<QByteArray>{"0, 0, 0, \r", "1, 0.001, 0, \r"}));
        compareSavedStatus(path());
    }

    void shortReadSavesZerosBehindIt()
    {
        answers().deliveredBytes = 256;
        tick({QStringLiteral("checkBPMi0")});
        useSamples(2);
        usePath(path());
        save();
        QCOMPARE(dataLines(path()).mid(1, 2), (QList<QByteArray>{"0, 0, 3000.75, \r", "1, 0.001, 0, \r"}));
    }

    void fileThatCannotBeOpenedIsReportedAsSavedWithoutAMessage_data()
    {
        QTest::addColumn<QString>("target");
        QTest::addColumn<bool>("exists");
        QTest::newRow("directory") << QStringLiteral("/tmp") << true;
        QTest::newRow("missing folder") << QStringLiteral("/nonexistent/folder/data.csv") << false;
        QTest::newRow("below a file") << QStringLiteral("/dev/null/data.csv") << false;
        QTest::newRow("read-only file") << QStringLiteral("/proc/version") << true;
    }
    void fileThatCannotBeOpenedIsReportedAsSavedWithoutAMessage()
    {
        QFETCH(QString, target);
        QFETCH(bool, exists);
        usePath(target);
        for (const QMessageBox::StandardButton answer : {QMessageBox::Yes, QMessageBox::No}) {
            MessageBoxes boxes(answer);
            save();
            QCOMPARE(boxes.count(), exists ? 1 : 0);
            compareSavedStatus(target);
        }
    }

    void fullDiskIsSurvived()
    {
        tickAll(true);
        useSamples(10000);
        usePath(QStringLiteral("/dev/full"));
        MessageBoxes boxes(QMessageBox::No);
        save();
        compareSavedStatus(QStringLiteral("/dev/full"));
        usePath(path());
        {
            const FullDisk disk;
            save();
        }
        QCOMPARE(QFileInfo(path()).size(), qint64(0));
    }

    void appendingOnAFullDiskKeepsTheOldRows()
    {
        useSamples(5);
        usePath(path());
        save();
        const QByteArray first = contentOf(path());
        MessageBoxes boxes(QMessageBox::No);
        {
            const FullDisk disk;
            save();
        }
        QCOMPARE(contentOf(path()), first);
    }

    void windowDestroyedBeneathItsQuestionIsSurvived()
    {
        QFile old(path());
        QVERIFY(old.open(QIODevice::WriteOnly));
        old.write("old");
        old.close();
        usePath(path());
        MessageBoxes boxes(QMessageBox::Yes);
        QTimer::singleShot(0, this, [this] { window.reset(); });
        save();
        QVERIFY(!window);
        QCOMPARE(boxes.count(), 1);
        QCOMPARE(contentOf(path()), QByteArray("old"));
        QCOMPARE(openDescriptors(), 0);
    }

    void windowDestroyedBeneathItsFileDialogIsSurvived()
    {
        FileDialogs dialogs(path());
        QTimer::singleShot(0, this, [this] { window.reset(); });
        save();
        QVERIFY(!window);
        QVERIFY(!QFile::exists(path()));
        QCOMPARE(openDescriptors(), 0);
    }

    void fieldsStayFromSaveToSave()
    {
        useSamples(1);
        usePath(path("a.csv"));
        tick({QStringLiteral("checkAnvoltch2")});
        save();
        usePath(path("b.csv"));
        save();
        QCOMPARE(dataLines(path("a.csv")), dataLines(path("b.csv")));
        QCOMPARE(find<QLineEdit>(window.get(), "pathLineEdit")->text(), path("b.csv"));
    }
};

QTEST_MAIN(SaveDataTest)
#include "SaveDataTest.moc"
