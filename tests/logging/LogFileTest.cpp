#include "CapturedErrors.h"
#include "logging/DestinationMaker.h"
#include "logging/FileDestination.h"
#include "logging/RotationStrategy.h"
#include "logging/SizeRotationStrategy.h"

#include <QTemporaryDir>
#include <QTextCodec>
#include <QtTest>

using namespace QsLogging;

namespace {

constexpr int bySize = 1;

/// A line of exactly `bytes` bytes in the file, its line end not counted.
LogMessage lineOf(int bytes, char letter = 'x')
{
    LogMessage message;
    message.formatted = QString(bytes, QLatin1Char(letter));
    return message;
}

/// Refuses the file operations that a test names, and records what was asked.
class ScriptedRotation : public SizeRotationStrategy
{
public:
    ScriptedRotation(qint64 maxSize, int backups, QStringList& record)
        : SizeRotationStrategy(maxSize, backups), operations(record)
    {
    }

    bool removeFile(const QString& path) override
    {
        operations += QStringLiteral("remove ") + path;
        return !refuses;
    }
    bool fileExists(const QString& path) override { return existing.contains(path); }
    bool renameFile(const QString& from, const QString& to) override
    {
        operations += QStringLiteral("rename %1 %2").arg(from, to);
        return !refuses;
    }

    QStringList existing;
    bool refuses = false;

private:
    QStringList& operations;
};

} // namespace

class LogFileTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> folder;

    QString path(const char* name) const { return folder->filePath(QString::fromLatin1(name)); }
    void put(const char* name, const QByteArray& content) const
    {
        QFile file(path(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(content);
    }
    QByteArray content(const char* name) const
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(no file)");
    }
    QStringList files() const { return QDir(folder->path()).entryList(QDir::Files, QDir::Name); }
    DestinationPtr sized(qint64 maxSize, int backups) const
    {
        return DestinationMaker::newFileDestination(path("log"), bySize, maxSize, backups);
    }

private slots:
    void init() { folder = std::make_unique<QTemporaryDir>(); }

    void fileBeginsAnewWithoutRotation()
    {
        put("log", "old\n");
        const DestinationPtr file = DestinationMaker::newFileDestination(path("log"), 0, 10, 3);
        QCOMPARE(file->type(), QStringLiteral("file"));
        QVERIFY(file->isValid());
        for (int line = 0; line < 5; ++line)
            file->write(lineOf(8));
        QCOMPARE(content("log"), QByteArray("xxxxxxxx\n").repeated(5));
        QCOMPARE(files(), QStringList(QStringLiteral("log")));
    }

    void anyOtherRotationNumberMeansNone()
    {
        put("log", "old\n");
        const DestinationPtr file = DestinationMaker::newFileDestination(path("log"), 2, 1, 3);
        file->write(lineOf(8));
        file->write(lineOf(8));
        QCOMPARE(files(), QStringList(QStringLiteral("log")));
        QCOMPARE(content("log"), QByteArray("xxxxxxxx\nxxxxxxxx\n"));
    }

    void fileIsContinuedWithRotationBySize()
    {
        put("log", "old\n");
        const DestinationPtr file = sized(100, 1);
        file->write(lineOf(3));
        QCOMPARE(content("log"), QByteArray("old\nxxx\n"));
    }

    void eachLineIsInTheFileAsSoonAsItIsWritten()
    {
        QTextCodec::setCodecForLocale(QTextCodec::codecForName("ISO-8859-1"));
        const DestinationPtr file = sized(1000, 1);
        file->write(LogMessage(QStringLiteral("\u00b5m \u20ac"), QDateTime(), 2));
        QCOMPARE(content("log"), QByteArray("INFO   \xc2\xb5m \xe2\x82\xac\n"));
        file->write(lineOf(2));
        QVERIFY(content("log").endsWith("\nxx\n"));
    }

    void exactlyTheMaximumDoesNotRotateAndOneByteMoreDoes()
    {
        const DestinationPtr file = sized(20, 1);
        file->write(lineOf(10, 'a'));
        file->write(lineOf(10, 'b'));
        QCOMPARE(files(), QStringList(QStringLiteral("log")));
        file->write(lineOf(1, 'c'));
        QCOMPARE(content("log"), QByteArray("c\n"));
        QCOMPARE(content("log.1"), QByteArray("aaaaaaaaaa\nbbbbbbbbbb\n"));
    }

    void sizeCountsBytesOfUtf8()
    {
        SizeRotationStrategy strategy(3, 1);
        strategy.countMessage(QStringLiteral("\u20ac"));
        QVERIFY(!strategy.needsRotation());
        strategy.countMessage(QByteArray("x"));
        QVERIFY(strategy.needsRotation());
    }

    void sizeOfAnExistingFileCountsWithItsLineEnds()
    {
        put("log", "12345678\n");
        const DestinationPtr file = sized(10, 1);
        file->write(lineOf(1, 'a'));
        QCOMPARE(files(), QStringList(QStringLiteral("log")));
        file->write(lineOf(1, 'b'));
        QCOMPARE(content("log"), QByteArray("b\n"));
        QCOMPARE(content("log.1"), QByteArray("12345678\na\n"));
    }

    void lineThatRotatesIsNotCountedInTheNewFile()
    {
        const DestinationPtr file = sized(10, 3);
        file->write(lineOf(11, 'a'));
        QCOMPARE(content("log"), QByteArray("aaaaaaaaaaa\n"));
        QCOMPARE(content("log.1"), QByteArray());
        file->write(lineOf(10, 'b'));
        QCOMPARE(content("log"), QByteArray("aaaaaaaaaaa\nbbbbbbbbbb\n"));
        file->write(lineOf(1, 'c'));
        QCOMPARE(content("log"), QByteArray("c\n"));
    }

    void oldestOfTwoBackupsIsRemovedAndTheOthersMoveUp()
    {
        put("log", "current\n");
        put("log.1", "first\n");
        put("log.2", "second\n");
        const DestinationPtr file = sized(1, 2);
        file->write(lineOf(1));
        QCOMPARE(content("log"), QByteArray("x\n"));
        QCOMPARE(content("log.1"), QByteArray("current\n"));
        QCOMPARE(content("log.2"), QByteArray("first\n"));
        QCOMPARE(files().size(), 3);
    }

    void oneBackupIsReplaced()
    {
        put("log", "current\n");
        put("log.1", "first\n");
        const DestinationPtr file = sized(1, 1);
        file->write(lineOf(1));
        QCOMPARE(content("log.1"), QByteArray("current\n"));
        QCOMPARE(files().size(), 2);
    }

    void noBackupsRemoveTheFullFile()
    {
        put("log", "current\n");
        const DestinationPtr file = sized(1, 0);
        file->write(lineOf(1));
        QCOMPARE(files(), QStringList(QStringLiteral("log")));
        QCOMPARE(content("log"), QByteArray("x\n"));
    }

    void gapAmongTheBackupsEndsWhatMovesUp()
    {
        put("log", "current\n");
        put("log.1", "first\n");
        put("log.3", "third\n");
        const DestinationPtr file = sized(1, 4);
        file->write(lineOf(1));
        QCOMPARE(content("log.1"), QByteArray("current\n"));
        QCOMPARE(content("log.2"), QByteArray("first\n"));
        QCOMPARE(content("log.3"), QByteArray("third\n"));
    }

    void operationsOfARotationComeInOrder()
    {
        put("log", "current\n");
        QFile log(path("log"));
        QStringList operations;
        ScriptedRotation rotation(1, 3, operations);
        rotation.fileOpened(log);
        const QString name = log.fileName();
        rotation.existing = QStringList{name + QStringLiteral(".1"), name + QStringLiteral(".2")};
        rotation.rotate();
        QCOMPARE(operations.join(QLatin1Char('\n')).remove(folder->path() + QLatin1Char('/')),
                 QStringLiteral("remove log.3\nrename log.2 log.3\n"
                                "remove log.2\nrename log.1 log.2\n"
                                "remove log.1\nrename log log.1"));
    }

    void refusedRenamesAreReportedAndTheRestIsTried()
    {
        QFile log(QStringLiteral("log"));
        QStringList operations;
        ScriptedRotation rotation(1, 2, operations);
        rotation.fileOpened(log);
        rotation.existing = QStringList(QStringLiteral("log.1"));
        rotation.refuses = true;
        const CapturedErrors errors;
        rotation.rotate();
        QCOMPARE(errors.text(), QStringLiteral("QsLog: could not rename backup log.1 to log.2\n"
                                               "QsLog: could not rename log log to log.1\n"));
    }

    void refusedRemovalOfTheFullFileIsReported()
    {
        QFile log(QStringLiteral("log"));
        QStringList operations;
        ScriptedRotation rotation(1, 0, operations);
        rotation.fileOpened(log);
        rotation.refuses = true;
        const CapturedErrors errors;
        rotation.rotate();
        QCOMPARE(operations, QStringList(QStringLiteral("remove log")));
        QCOMPARE(errors.text(), QStringLiteral("QsLog: backup delete failed log\n"));
    }

    void fileThatCannotBeOpenedIsReportedAndTakesNothing()
    {
        const QString missing = path("no/such/folder/log");
        const CapturedErrors errors;
        const DestinationPtr file = DestinationMaker::newFileDestination(missing, bySize, 1, 2);
        QCOMPARE(errors.text(), QStringLiteral("QsLog: could not open log file %1\n").arg(missing));
        QVERIFY(!file->isValid());
        for (int line = 0; line < 3; ++line)
            file->write(lineOf(10));
        QCOMPARE(errors.text().count(QLatin1Char('\n')), 1);
        QVERIFY(files().isEmpty());
    }

    void fileThatCannotBeReopenedIsReportedAndTakesNothing()
    {
        put("log", "current\n");
        const DestinationPtr file = sized(1, 1);
        QVERIFY(QFile::remove(path("log")));
        QVERIFY(QDir(folder->path()).mkdir(QStringLiteral("log")));
        QVERIFY(QDir(folder->path()).mkdir(QStringLiteral("log.1")));
        put("log.1/kept", "");
        const CapturedErrors errors;
        file->write(lineOf(1));
        QVERIFY(errors.text().endsWith(QStringLiteral("QsLog: could not reopen log file %1\n").arg(path("log"))));
        QVERIFY(!file->isValid());
        file->write(lineOf(1));
        QVERIFY(files().isEmpty());
    }

    void fileLostInARotationComesBackWithALaterOne()
    {
        const DestinationPtr file = sized(20, 1);
        file->write(lineOf(20, 'a'));
        QVERIFY(QFile::remove(path("log")));
        QVERIFY(QDir(folder->path()).mkdir(QStringLiteral("log")));
        put("log/kept", "");
        QVERIFY(QDir(folder->path()).mkdir(QStringLiteral("log.1")));
        put("log.1/kept", "");
        const CapturedErrors errors;
        file->write(lineOf(1, 'b'));
        QVERIFY(!file->isValid());
        QVERIFY(QDir(path("log")).removeRecursively());
        file->write(lineOf(30000, 'c'));
        QVERIFY(file->isValid());
        QCOMPARE(content("log"), QByteArray(30000, 'c') + '\n');
    }

    void openModesAreThoseOfTheStrategies()
    {
        QCOMPARE(NullRotationStrategy().openMode(), QIODevice::OpenMode(QIODevice::Truncate));
        QVERIFY(!NullRotationStrategy().needsRotation());
        QCOMPARE(SizeRotationStrategy(1, 1).openMode(), QIODevice::OpenMode(QIODevice::Append));
    }
};

QTEST_GUILESS_MAIN(LogFileTest)
#include "LogFileTest.moc"
