#include "SaveDataTool.h"

#include "app/ProcessStart.h"
#include "support/FailedSaves.h"
#include "support/FullDisk.h"

#include <QElapsedTimer>
#include <QFileInfo>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <thread>

using namespace koralink_double;
using operate::find;

namespace {

constexpr int pipeBytes = 65536;
constexpr int otherAccount = 12345;

const QString noRoom = QStringLiteral("File too large");

struct stat attributesOf(const QString& path)
{
    struct stat attributes = {};
    ::stat(QFile::encodeName(path).constData(), &attributes);
    return attributes;
}

} // namespace

/// Disks, links and pipes that take a measurement in part or not at all.
class SaveDataFailuresTest : public SaveDataTool
{
    Q_OBJECT

private:
    int pipeEnd = -1;

    QString makePipe()
    {
        if (::mkfifo(QFile::encodeName(path()).constData(), 0600) != 0)
            qFatal("no pipe");
        return path();
    }
    bool openPipe(int direction)
    {
        if (pipeEnd < 0)
            pipeEnd = ::open(QFile::encodeName(path()).constData(), direction | O_NONBLOCK);
        return pipeEnd >= 0;
    }
    QByteArray putOldFile()
    {
        QFile old(path());
        if (!old.open(QIODevice::WriteOnly))
            qFatal("no old file");
        old.write("an older measurement\n");
        old.close();
        return contentOf(path());
    }

private slots:
    void initTestCase() { prepareProcess(); }
    void init()
    {
        makeTool();
        tickAll(true);
        useSamples(1000);
        usePath(path());
    }
    void cleanup()
    {
        if (pipeEnd >= 0)
            ::close(pipeEnd);
        pipeEnd = -1;
        releaseTool();
    }

    void aFullDiskLeavesNothingOfANewFileAndIsTold()
    {
        MessageBoxes boxes;
        {
            const FullDisk disk;
            save();
        }
        QCOMPARE(boxes.count(), 1);
        compareFailedSave(boxes.boxes().first(), path(), noRoom);
        compareStatus("Not saved", path());
        QCOMPARE(namesIn(folder->path()), QStringList());
    }

    void aFullDiskKeepsTheOldFile_data()
    {
        QTest::addColumn<int>("answer");
        QTest::newRow("overwrite") << int(QMessageBox::Yes);
        QTest::newRow("append") << int(QMessageBox::No);
    }
    void aFullDiskKeepsTheOldFile()
    {
        QFETCH(int, answer);
        const QByteArray old = putOldFile();
        MessageBoxes boxes{QMessageBox::StandardButton(answer)};
        {
            const FullDisk disk;
            save();
        }
        QCOMPARE(boxes.count(), 2);
        compareFailedSave(boxes.boxes().last(), path(), noRoom);
        compareStatus("Not saved", path());
        QCOMPARE(contentOf(path()), old);
        QCOMPARE(namesIn(folder->path()), QStringList(QStringLiteral("data.csv")));

        boxes.answerWith(QMessageBox::Yes);
        save();
        QVERIFY(contentOf(path()).startsWith("Zenthic KORA\r\n"));
        compareSavedStatus(path());
    }

    void aDeviceThatTakesNothingIsToldWithItsReason()
    {
        usePath(QStringLiteral("/dev/full"));
        for (const QMessageBox::StandardButton answer : {QMessageBox::Yes, QMessageBox::No}) {
            MessageBoxes boxes(answer);
            save();
            QCOMPARE(boxes.count(), 2);
            compareFailedSave(boxes.boxes().last(), QStringLiteral("/dev/full"),
                              QStringLiteral("No space left on device"));
            compareStatus("Not saved", QStringLiteral("/dev/full"));
        }
    }

    void aDeviceThatTakesEverythingIsWrittenTo()
    {
        usePath(QStringLiteral("/dev/null"));
        MessageBoxes boxes(QMessageBox::Yes);
        save();
        QCOMPARE(boxes.count(), 1);
        compareSavedStatus(QStringLiteral("/dev/null"));
        QVERIFY(S_ISCHR(attributesOf(QStringLiteral("/dev/null")).st_mode));
    }

    void pipeWithoutAReaderIsPassedOverLikeAFileThatCannotBeOpened()
    {
        makePipe();
        for (const QMessageBox::StandardButton answer : {QMessageBox::Yes, QMessageBox::No}) {
            MessageBoxes boxes(answer);
            save();
            QCOMPARE(boxes.count(), 1);
            compareSavedStatus(path());
            QVERIFY(S_ISFIFO(attributesOf(path()).st_mode));
        }
        QCOMPARE(namesIn(folder->path()), QStringList(QStringLiteral("data.csv")));
    }

    void pipeWithAReaderGetsTheWholeFile()
    {
        makePipe();
        QByteArray got;
        std::thread reader([this, &got] { got = contentOf(path()); });
        // Until the reader has opened its end, the pipe cannot be opened for writing.
        QTRY_VERIFY(openPipe(O_WRONLY));
        MessageBoxes boxes(QMessageBox::No);
        save();
        ::close(pipeEnd);
        pipeEnd = -1;
        reader.join();
        QCOMPARE(boxes.count(), 1);
        compareSavedStatus(path());
        QVERIFY(got.size() > pipeBytes);
        QCOMPARE(got.count("\r\n"), 8 + 1 + 1000);
    }

    void pipeWhoseReaderLeavesIsTold()
    {
        makePipe();
        QVERIFY(openPipe(O_RDONLY));
        std::thread reader([this] {
            char byte = 0;
            while (::read(pipeEnd, &byte, 1) != 1)
                std::this_thread::yield();
            ::close(pipeEnd);
        });
        MessageBoxes boxes(QMessageBox::Yes);
        save();
        reader.join();
        pipeEnd = -1;
        QCOMPARE(boxes.count(), 2);
        compareFailedSave(boxes.boxes().last(), path(), QStringLiteral("Broken pipe"));
        compareStatus("Not saved", path());
    }

    void pipeWhoseReaderTakesNothingHoldsTheProgramForTwoSecondsAtTheMost()
    {
        makePipe();
        QVERIFY(openPipe(O_RDONLY));
        MessageBoxes boxes(QMessageBox::No);
        QElapsedTimer time;
        time.start();
        save();
        QVERIFY2(time.elapsed() < 10000, qPrintable(QString::number(time.elapsed())));
        QCOMPARE(boxes.count(), 2);
        compareFailedSave(boxes.boxes().last(), path(), QStringLiteral("Resource temporarily unavailable"));
    }

    void linkStaysALinkToWhatIsOverwritten_data()
    {
        QTest::addColumn<bool>("exists");
        QTest::newRow("to a file") << true;
        QTest::newRow("to nowhere") << false;
    }
    void linkStaysALinkToWhatIsOverwritten()
    {
        QFETCH(bool, exists);
        if (exists)
            putOldFile();
        QVERIFY(QFile::link(QStringLiteral("data.csv"), path("first.csv")));
        QVERIFY(QFile::link(path("first.csv"), path("second.csv")));
        usePath(path("second.csv"));
        MessageBoxes boxes(QMessageBox::Yes);
        save();
        QVERIFY(contentOf(path()).startsWith("Zenthic KORA\r\n"));
        QCOMPARE(QFileInfo(path("second.csv")).symLinkTarget(), path("first.csv"));
        QCOMPARE(namesIn(folder->path()),
                 QStringList({QStringLiteral("data.csv"), QStringLiteral("first.csv"), QStringLiteral("second.csv")}));
    }

    void overwrittenFileKeepsOwnerGroupAndMode()
    {
        putOldFile();
        const QByteArray name = QFile::encodeName(path());
        const bool mayGive = ::chown(name.constData(), otherAccount, otherAccount) == 0;
        QCOMPARE(::chmod(name.constData(), 0664), 0);
        const struct stat before = attributesOf(path());
        MessageBoxes boxes(QMessageBox::Yes);
        save();
        const struct stat after = attributesOf(path());
        QVERIFY(after.st_size > before.st_size);
        QCOMPARE(after.st_mode, before.st_mode);
        QCOMPARE(after.st_uid, mayGive ? uid_t(otherAccount) : ::getuid());
        QCOMPARE(after.st_gid, mayGive ? gid_t(otherAccount) : before.st_gid);
    }

    void newFileHasTheModeThatTheProcessGivesItsFiles()
    {
        const mode_t maskBefore = ::umask(027);
        save();
        ::umask(maskBefore);
        QCOMPARE(attributesOf(path()).st_mode & 07777, mode_t(0640));
    }

    void nameOfFullLengthIsSaved()
    {
        const QString longest = folder->filePath(QString(255, QLatin1Char('x')));
        usePath(longest);
        save();
        QVERIFY(contentOf(longest).startsWith("Zenthic KORA\r\n"));
    }

    void nameThatLooksLikeMarkupIsShownLetterByLetter()
    {
        const QString name = path("<h1>data.csv");
        usePath(name);
        save();
        QCOMPARE(find<QLabel>(window.get(), "statusLabel")->textFormat(), Qt::PlainText);
        MessageBoxes boxes(QMessageBox::No);
        {
            const FullDisk disk;
            save();
        }
        QCOMPARE(boxes.count(), 2);
        QCOMPARE(boxes.boxes().first().textFormat, Qt::PlainText);
        QVERIFY(boxes.boxes().first().text.contains(name));
        compareFailedSave(boxes.boxes().last(), name, noRoom);
    }

    void windowDestroyedBeneathTheMessageIsSurvived()
    {
        MessageBoxes boxes;
        QTimer::singleShot(0, this, [this] { window.reset(); });
        {
            const FullDisk disk;
            save();
        }
        QVERIFY(!window);
        QCOMPARE(boxes.count(), 1);
    }
};

QTEST_MAIN(SaveDataFailuresTest)
#include "SaveDataFailuresTest.moc"
