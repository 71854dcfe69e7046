// How the settings file is written: locks of other processes, attributes, links, and writes that fail.

#include "hardware/ConfigFile.h"
#include "hardware/SettingsPath.h"
#include "support/FailedSaves.h"
#include "support/FileContent.h"
#include "support/FullDisk.h"
#include "support/ScratchSettings.h"

#include <QElapsedTimer>
#include <QFileInfo>
#include <QLockFile>
#include <QProcess>
#include <QSettings>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace {

constexpr int otherAccount = 12345;
/// No wait of two seconds can hide in this.
constexpr int atOnceMs = 1500;
/// One wait of two seconds, and much other work beside.
constexpr int oneWaitMs = 3500;
constexpr int childMs = 30000;

struct stat attributesOf(const QString& path)
{
    struct stat attributes = {};
    ::stat(QFile::encodeName(path).constData(), &attributes);
    return attributes;
}

} // namespace

class SettingsWriteTest : public QObject
{
    Q_OBJECT

private:
    ConfigFile file;
    std::unique_ptr<QTemporaryDir> folder;

    static QString lockPath() { return settingsPath() + QStringLiteral(".lock"); }
    static void put(const QString& path, const QByteArray& content)
    {
        QFile written(path);
        QVERIFY(written.open(QIODevice::WriteOnly));
        QCOMPARE(written.write(content), content.size());
    }
    /// What a lock of this process holds, with another owner in its place.
    static QByteArray lockOf(qint64 owner, const QByteArray& application)
    {
        QLockFile own(settingsPath() + QStringLiteral(".model"));
        if (!own.lock())
            return QByteArray();
        QList<QByteArray> lines = contentOf(settingsPath() + QStringLiteral(".model")).split('\n');
        lines[0] = QByteArray::number(owner);
        lines[1] = application;
        return lines.join('\n');
    }
    /// @return ms that one write took
    qint64 writeScale(double value)
    {
        QElapsedTimer time;
        time.start();
        file.writeScaleX(0, value);
        return time.elapsed();
    }

private slots:
    void init()
    {
        // In memory, where nothing takes longer than the writing itself.
        folder = std::make_unique<QTemporaryDir>(QStringLiteral("/dev/shm/kora-test-XXXXXX"));
        scratch_settings::setPath(folder->filePath(QStringLiteral("config_koralink.ini")));
        file.writeScaleX(0, 1);
        QCOMPARE(file.readScaleX(0), 1.0);
    }
    void cleanup()
    {
        folder.reset();
        scratch_settings::clear();
    }

    void lockOfNobodyIsTakenAway_data()
    {
        QTest::addColumn<QByteArray>("content");
        QProcess ended;
        ended.start(QStringLiteral("true"), QStringList());
        const qint64 owner = ended.processId();
        QVERIFY(ended.waitForFinished(childMs));
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("garbage") << QByteArray("garbage\n");
        QTest::newRow("owner is dead") << lockOf(owner, "true");
        QTest::newRow("own, and could not be removed") << lockOf(::getpid(), "test_settings_write");
    }
    void lockOfNobodyIsTakenAway()
    {
        QFETCH(QByteArray, content);
        put(lockPath(), content);
        const qint64 tookMs = writeScale(2);
        QVERIFY2(tookMs < atOnceMs, qPrintable(QString::number(tookMs)));
        QCOMPARE(file.readScaleX(0), 2.0);
        QCOMPARE(namesIn(folder->path()), QStringList(QStringLiteral("config_koralink.ini")));
    }

    void livingLockIsWaitedForOnceAndTheWritesAreLost()
    {
        const QByteArray before = contentOf(settingsPath());
        QLockFile other(lockPath());
        QVERIFY(other.tryLock());
        const qint64 firstMs = writeScale(2);
        QVERIFY2(firstMs >= atOnceMs && firstMs < oneWaitMs, qPrintable(QString::number(firstMs)));
        // A save of a window is many writes.
        QElapsedTimer time;
        time.start();
        for (int write = 0; write < 14; ++write)
            file.writeOffsetX(1, write);
        QVERIFY2(time.elapsed() < atOnceMs, qPrintable(QString::number(time.elapsed())));
        QCOMPARE(contentOf(settingsPath()), before);
        QCOMPARE(file.readScaleX(0), 1.0);
        QVERIFY(QFile::exists(lockPath()));

        other.unlock();
        QVERIFY(writeScale(3) < atOnceMs);
        QCOMPARE(file.readScaleX(0), 3.0);
        QCOMPARE(file.readOffsetX(1), 0.0);
    }

    void lockThatIsGivenBackInTimeIsWaitedFor()
    {
        QProcess owner;
        owner.start(QStringLiteral("sleep"), {QStringLiteral("0.3")});
        QVERIFY(owner.waitForStarted(childMs));
        put(lockPath(), lockOf(owner.processId(), "sleep"));
        // Nobody collects the child meanwhile, which would have ended its lock.
        std::thread collector([&owner] { owner.waitForFinished(childMs); });
        file.writeScaleX(0, 2);
        collector.join();
        QCOMPARE(file.readScaleX(0), 2.0);
    }

    void lockOfAStoppedProcessIsNoLongerWaitedForThanTwoSeconds()
    {
        QProcess owner;
        owner.start(QStringLiteral("sleep"), {QStringLiteral("1000")});
        QVERIFY(owner.waitForStarted(childMs));
        QCOMPARE(::kill(pid_t(owner.processId()), SIGSTOP), 0);
        put(lockPath(), lockOf(owner.processId(), "sleep"));
        // However old the lock is: the process may go on.
        const timespec longAgo[2] = {{1000000000, 0}, {1000000000, 0}};
        QCOMPARE(::utimensat(AT_FDCWD, QFile::encodeName(lockPath()).constData(), longAgo, 0), 0);
        QVERIFY(writeScale(2) < oneWaitMs);
        QCOMPARE(file.readScaleX(0), 1.0);
        QVERIFY(QFile::exists(lockPath()));

        owner.kill();
        QVERIFY(owner.waitForFinished(childMs));
        QVERIFY(writeScale(3) < atOnceMs);
        QCOMPARE(file.readScaleX(0), 3.0);
    }

    void readsNeverWaitForALock()
    {
        QLockFile other(lockPath());
        QVERIFY(other.tryLock());
        {
            // Nor behind a write that failed.
            const FullDisk disk;
            file.writeScaleX(0, 2);
        }
        QElapsedTimer time;
        time.start();
        QCOMPARE(file.readScaleX(0), 1.0);
        QVERIFY(time.elapsed() < atOnceMs);
    }

    void writeThatFailsIsLostForGood()
    {
        {
            const FullDisk disk;
            file.writeScaleX(0, 2);
        }
        QCOMPARE(file.readScaleX(0), 1.0);
        file.writeScaleY(0, 5);
        QCOMPARE(file.readScaleX(0), 1.0);
        QCOMPARE(file.readScaleY(0), 5.0);
        QCOMPARE(namesIn(folder->path()), QStringList(QStringLiteral("config_koralink.ini")));
    }

    void everyReadSeesTheLastWriteHoweverSoonItComes()
    {
        for (int value = 100; value < 400; ++value) {
            file.writeScaleX(0, value);
            QCOMPARE(file.readScaleX(0), double(value));
        }
        // Also what another process wrote between.
        put(settingsPath(), "[BPM1]\nScale_X=7\n");
        file.writeScaleX(0, 8);
        file.writeScaleX(0, 7);
        QCOMPARE(file.readScaleX(0), 7.0);
    }

    void ownerGroupAndModeStay()
    {
        const QByteArray name = QFile::encodeName(settingsPath());
        const bool mayGive = ::chown(name.constData(), otherAccount, otherAccount + 1) == 0;
        QCOMPARE(::chmod(name.constData(), 0664), 0);
        const struct stat before = attributesOf(settingsPath());
        file.writeScaleX(0, 2);
        const struct stat after = attributesOf(settingsPath());
        QCOMPARE(file.readScaleX(0), 2.0);
        QCOMPARE(after.st_uid, before.st_uid);
        QCOMPARE(after.st_gid, before.st_gid);
        QCOMPARE(after.st_mode, before.st_mode);
        if (!mayGive)
            QSKIP("only root may give a file away");
    }

    void linkStaysALink()
    {
        const QString elsewhere = folder->filePath(QStringLiteral("elsewhere.ini"));
        QVERIFY(QFile::rename(settingsPath(), elsewhere));
        QVERIFY(QFile::link(QStringLiteral("elsewhere.ini"), settingsPath()));
        file.writeScaleX(0, 2);
        QVERIFY(QFileInfo(settingsPath()).isSymLink());
        QCOMPARE(QSettings(elsewhere, QSettings::IniFormat).value(QStringLiteral("BPM1/Scale_X")).toDouble(), 2.0);
    }

    void pipeInTheFilesPlaceReadsAsEmptyAndLosesWrites()
    {
        QVERIFY(QFile::remove(settingsPath()));
        QCOMPARE(::mkfifo(QFile::encodeName(settingsPath()).constData(), 0600), 0);
        QCOMPARE(file.readScaleX(0), 0.0);
        file.writeScaleX(0, 2);
        QCOMPARE(file.readScaleX(0), 0.0);
        QVERIFY(S_ISFIFO(attributesOf(settingsPath()).st_mode));
    }
};

QTEST_GUILESS_MAIN(SettingsWriteTest)
#include "SettingsWriteTest.moc"
