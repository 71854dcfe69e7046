#include "SaveDataTool.h"

#include "support/FileDialogs.h"
#include "support/MessageBoxes.h"

#include <QPushButton>

using namespace koralink_double;
using operate::find;

/// Questions, refusals and failures on the way to the file.
class SaveDataQuestionsTest : public SaveDataTool
{
    Q_OBJECT

private slots:
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
        QCOMPARE(box.text, QStringLiteral("File: ") + path() +
                               QStringLiteral(" already exist.\n\nOverwrite file?\n\nYes - overwrite file\nNo - "
                                              "append to existing file\nCancel - cancel writing to file"));
        QCOMPARE(box.icon, QMessageBox::Warning);
        // The name of a file may look like markup.
        QCOMPARE(box.textFormat, Qt::PlainText);
        QCOMPARE(box.buttons, QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
        const QByteArray both = contentOf(path());
        QVERIFY(both.startsWith(first));
        QVERIFY(both.mid(first.size()).startsWith("Zenthic KORA\r\nKinetic"));
        QCOMPARE(both.count("Nr, Rel. time, "), 2);
        QCOMPARE(both.size(), 2 * first.size());
        save();
        QCOMPARE(boxes.count(), 2);
    }

    void markupInAFileNameIsShownAsItStands()
    {
        useSamples(1);
        const QString odd = path("<b>bold<i>.csv");
        usePath(odd);
        save();
        compareSavedStatus(odd);
        QCOMPARE(find<QLabel>(window.get(), "statusLabel")->textFormat(), Qt::PlainText);
        MessageBoxes boxes(QMessageBox::No);
        save();
        QCOMPARE(boxes.count(), 1);
        QVERIFY(boxes.boxes().first().text.contains(odd));
        QCOMPARE(boxes.boxes().first().textFormat, Qt::PlainText);

        // The file dialog asks by itself.
        FileDialogs dialogs(odd);
        dialogs.answerByButton();
        boxes.answerWith(QMessageBox::Yes);
        operate::press(find<QPushButton>(window.get(), "selectPathButton"));
        QCOMPARE(boxes.count(), 2);
        QVERIFY(boxes.boxes().last().text.contains(QLatin1String("<b>bold<i>.csv")));
        QCOMPARE(boxes.boxes().last().textFormat, Qt::PlainText);
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
        QCOMPARE(operate::lines(callsOf("open")), QStringList{QStringLiteral("open(/dev/kora_dma_displ, 0)")});
        QCOMPARE(operate::lines(callsOf("read")), QStringList{QStringLiteral("read(/dev/kora_dma_displ, 3670016)")});
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
        // Refused to root too.
        QTest::newRow("program that runs") << QCoreApplication::applicationFilePath() << true;
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

QTEST_MAIN(SaveDataQuestionsTest)
#include "SaveDataQuestionsTest.moc"
