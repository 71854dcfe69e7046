#include "Rocking3DTool.h"

#include "support/FailedSaves.h"
#include "support/FullDisk.h"
#include "support/MessageBoxes.h"

#include <QDir>
#include <QHostInfo>
#include <QRegularExpression>

#include <sys/stat.h>

using namespace koralink_double;
using operate::find;
using operate::press;

/// The file that a walk is saved to.
class Rocking3DFileTest : public Rocking3DTool
{
    Q_OBJECT

private slots:
    void savedFileHasExactHeaderAndRows()
    {
        setRange(4, 6, -1, 1);
        answers().currents = [](int, const OutputRecord& outputs) {
            return evenly(1e-7 * outputs.volts[0] + 1e-9 * outputs.volts[1]);
        };
        press(button("goButton"));
        const QDateTime before = QDateTime::currentDateTime();
        save();
        const QList<QByteArray> lines = saved().split('\n');
        QCOMPARE(lines.size(), 6 + 4096 + 1);
        QCOMPARE(lines.at(0), QByteArray("Zenthic KORA\r"));
        QCOMPARE(lines.at(1), QByteArray("Kinetic Orbit Rectification Array\r"));
        QCOMPARE(lines.at(2), QByteArray("\r"));
        // The two letters DD stand where a day would.
        const QRegularExpression date(QStringLiteral("^Time and Date: \\d\\d:\\d\\d:\\d\\d DD\\.%1\r$")
                                          .arg(before.toString(QStringLiteral("MM\\.yyyy"))));
        QVERIFY2(date.match(QString::fromLatin1(lines.at(3))).hasMatch(), lines.at(3).constData());
        QCOMPARE(lines.at(4), "Host Name: " + QHostInfo::localHostName().toLatin1() + "\r");
        QCOMPARE(lines.at(5), QByteArray("ch0,ch1,I0\r"));
        QCOMPARE(lines.last(), QByteArray());
        QCOMPARE(lines.at(6), QByteArray("4,-1,3.99e-07\r"));
        QCOMPARE(lines.at(7), QByteArray("4,-0.968254,3.99032e-07\r"));
        QCOMPARE(lines.at(6 + 64), QByteArray("4.03175,-1,4.02175e-07\r"));
        QCOMPARE(lines.at(6 + 4095), QByteArray("6,1,6.01e-07\r"));
        int carriageReturns = 0;
        for (const QByteArray& line : lines)
            carriageReturns += line.count('\r');
        QCOMPARE(carriageReturns, 6 + 4096);
    }

    void dialogProposesANameWithTheTime()
    {
        FileDialogs dialogs{QString()};
        press(button("saveButton"));
        QCOMPARE(dialogs.dialogs().size(), 1);
        const FileDialogs::Dialog asked = dialogs.dialogs().first();
        QCOMPARE(asked.caption, QStringLiteral("DialogTitle"));
        QCOMPARE(asked.nameFilters, QStringList(QStringLiteral("CSV files (*.csv)")));
        const QRegularExpression name(QStringLiteral("^KORA_rock3D_\\d{4}-\\d\\d-\\d\\d_\\d\\d-\\d\\d-\\d\\d\\.csv$"));
        QVERIFY2(name.match(asked.proposedName).hasMatch(), qPrintable(asked.proposedName));
    }

    void markupInAFileNameIsShownAsItStands()
    {
        const QTemporaryDir folder;
        QFile old(folder.filePath(QStringLiteral("<b>.csv")));
        QVERIFY(old.open(QIODevice::WriteOnly));
        FileDialogs dialogs(old.fileName());
        dialogs.answerByButton();
        const MessageBoxes boxes(QMessageBox::Yes);
        press(button("saveButton"));
        QCOMPARE(boxes.count(), 1);
        QVERIFY(boxes.boxes().first().text.contains(QLatin1String("<b>.csv")));
        QCOMPARE(boxes.boxes().first().textFormat, Qt::PlainText);
    }

    void cancelledSaveWritesNothing()
    {
        // The proposed name is relative to the working directory.
        const QString before = QDir::currentPath();
        QVERIFY(QDir::setCurrent(folder.path()));
        const FileDialogs dialogs{QString()};
        const MessageBoxes boxes;
        press(button("saveButton"));
        const QStringList written = QDir(folder.path()).entryList(QDir::Files);
        QVERIFY(QDir::setCurrent(before));
        QCOMPARE(written, QStringList());
        QCOMPARE(dialogs.dialogs().size(), 1);
        QCOMPARE(boxes.count(), 0);
    }

    void folderAsPathIsRefusedWithoutAWord()
    {
        const QString older = folder.filePath(QStringLiteral("folder.csv"));
        QVERIFY(QDir().mkdir(older));
        const FileDialogs dialogs(older);
        const MessageBoxes boxes;
        press(button("saveButton"));
        QCOMPARE(dialogs.dialogs().size(), 1);
        QCOMPARE(boxes.count(), 0);
        QVERIFY(QDir().rmdir(older));
    }

    void saveOverwritesAnOlderFile()
    {
        QFile old(savedPath());
        QVERIFY(old.open(QIODevice::WriteOnly));
        old.write(QByteArray(1 << 20, 'x'));
        old.close();
        save();
        QVERIFY(saved().startsWith("Zenthic KORA\r\n"));
        QCOMPARE(saved().count('x'), 0);
    }

    void saveBeforeAnyWalkHasOnlyZeros()
    {
        save();
        QCOMPARE(savedRows().first(), QByteArray("0,0,0\r"));
        QCOMPARE(savedRows().last(), QByteArray("0,0,0\r"));
    }

    void aSaveThatFailsKeepsTheOlderFileWithoutAWord()
    {
        save();
        const QByteArray old = saved();
        box("xMinBox")->setValue(5);
        const FileDialogs dialogs(savedPath());
        const MessageBoxes boxes;
        {
            const FullDisk disk;
            press(button("saveButton"));
        }
        QCOMPARE(boxes.count(), 0);
        QCOMPARE(saved(), old);
        QCOMPARE(namesIn(folder.path()), QStringList(QStringLiteral("rock.csv")));
    }

    void devicesAndPipesAreNoCrash_data()
    {
        QTest::addColumn<bool>("isPipe");
        QTest::newRow("device that takes nothing") << false;
        QTest::newRow("pipe without a reader") << true;
    }
    void devicesAndPipesAreNoCrash()
    {
        QFETCH(bool, isPipe);
        if (isPipe)
            QCOMPARE(::mkfifo(QFile::encodeName(savedPath()).constData(), 0600), 0);
        const FileDialogs dialogs(isPipe ? savedPath() : QStringLiteral("/dev/full"));
        const MessageBoxes boxes;
        press(button("saveButton"));
        QCOMPARE(dialogs.dialogs().size(), 1);
        QCOMPARE(boxes.count(), 0);
    }

    void saveDuringTheWalkWritesThePointsSoFar()
    {
        answers().currents = [](int, const OutputRecord&) { return evenly(0.25); };
        FileDialogs dialogs(savedPath());
        driven_pause::setAction([this](unsigned long) {
            if (driven_pause::pauses().size() == 3 * pausesPerPoint)
                QTimer::singleShot(0, button("saveButton"), SLOT(click()));
            if (driven_pause::pauses().size() == 5 * pausesPerPoint)
                QTimer::singleShot(0, window.get(), SLOT(stopMeasurement()));
        });
        press(button("goButton"));
        QCOMPARE(pointsWalked(), std::size_t(5));
        const QList<QByteArray> rows = savedRows();
        QVERIFY(rows.at(2).endsWith(",0.25\r"));
        QVERIFY(rows.at(3).endsWith(",0\r"));
        QVERIFY(rows.at(4095).endsWith(",0\r"));
    }

    void windowDestroyedBeneathItsFileDialogIsSurvived()
    {
        const FileDialogs dialogs(savedPath());
        QTimer::singleShot(0, this, [this] { window.reset(); });
        press(button("saveButton"));
        QVERIFY(!window);
        QVERIFY(!QFile::exists(savedPath()));
    }
};

QTEST_MAIN(Rocking3DFileTest)
#include "Rocking3DFileTest.moc"
