// The built program with a settings file that the system refuses, by its permissions or by its file system: the program
// lives, works with what it could read, and not a byte of the file changes. The program runs without the capabilities
// that let root pass over permissions.

#include "support/PrivateSettings.h"

#include <QElapsedTimer>
#include <QFile>
#include <QLockFile>
#include <QProcess>
#include <QRegularExpression>
#include <QSettings>
#include <QTemporaryDir>
#include <QtTest>

#include <sys/stat.h>

#include <memory>

namespace {

constexpr int endMs = 60000;
constexpr int openFolder = 0755;
constexpr int openFile = 0644;

} // namespace

class RefusedSettingsTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> folder;
    QTemporaryDir results;

    QString settingsFile() const { return folder->filePath(QStringLiteral("config_koralink.ini")); }
    QString recordFile() const { return results.filePath(QStringLiteral("calls.txt")); }
    static bool setMode(const QString& path, int mode)
    {
        return ::chmod(QFile::encodeName(path).constData(), mode_t(mode)) == 0;
    }
    static QByteArray bytesOf(const QString& path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    /// Starts the program, lets it save its settings from every window that can, and waits for its end.
    void saveSettingsInTheProgram(const QStringList& moreOptions)
    {
        QStringList options = {QStringLiteral("--cap-drop"), QStringLiteral("ALL")};
        const auto set = [&options](const char* name, const QString& value) {
            options += {QStringLiteral("--setenv"), QLatin1String(name), value};
        };
        set("LD_LIBRARY_PATH", QStringLiteral(KORA_RECORDER_FOLDER));
        set("KORA_RECORDER_FILE", recordFile());
        set("KORA_RECORDER_ACTION", QStringLiteral("save"));
        QProcess program;
        program.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        private_settings::start(program, folder->path(), options + moreOptions, QStringLiteral(KORA_PROGRAM));
        QVERIFY(program.waitForFinished(endMs));
        QCOMPARE(program.exitStatus(), QProcess::NormalExit);
        QCOMPARE(program.exitCode(), 0);
    }
    QStringList record() const { return QString::fromLatin1(bytesOf(recordFile())).split(QLatin1Char('\n')); }

private slots:
    void init()
    {
        if (!private_settings::isPossible())
            QSKIP("user namespaces are refused here: no settings folder of its own for the program");
        folder = std::make_unique<QTemporaryDir>();
        QVERIFY(QFile::copy(QStringLiteral(KORA_TRAINING_SETTINGS), settingsFile()));
        QFile::remove(recordFile());
    }
    void cleanup()
    {
        if (folder)
            setMode(folder->path(), openFolder);
    }

    void aRefusedFileKeepsEveryByte_data()
    {
        QTest::addColumn<int>("fileMode");
        QTest::addColumn<int>("folderMode");
        QTest::addColumn<bool>("isMountedReadOnly");
        QTest::addColumn<bool>("isRead");
        QTest::newRow("file that may only be read") << 0444 << openFolder << false << true;
        QTest::newRow("file and folder that may only be read") << 0444 << 0555 << false << true;
        QTest::newRow("folder that may only be read") << openFile << 0555 << false << true;
        QTest::newRow("file that may not even be read") << 0 << openFolder << false << false;
        QTest::newRow("folder that may not be entered") << openFile << 0 << false << false;
        QTest::newRow("file system mounted for reading only") << openFile << openFolder << true << true;
    }
    void aRefusedFileKeepsEveryByte()
    {
        QFETCH(int, fileMode);
        QFETCH(int, folderMode);
        QFETCH(bool, isMountedReadOnly);
        QFETCH(bool, isRead);
        const QByteArray before = bytesOf(settingsFile());
        QVERIFY(setMode(settingsFile(), fileMode) && setMode(folder->path(), folderMode));
        QStringList options;
        if (isMountedReadOnly)
            options =
                QStringList({QStringLiteral("--ro-bind"), folder->path(), QStringLiteral("/opt/Zenthic/KORALINK")});
        saveSettingsInTheProgram(options);
        QVERIFY(setMode(folder->path(), openFolder) && setMode(settingsFile(), openFile));
        QCOMPARE(bytesOf(settingsFile()), before);
        QCOMPARE(QDir(folder->path()).entryList(QDir::Files | QDir::Hidden).size(), 1);

        // Settings go to the hardware whatever becomes of the file.
        QCOMPARE(record().contains(QStringLiteral("setBPMscale(0, 500, 500)")), isRead);
        QCOMPARE(record().contains(QStringLiteral("setBPMscale(0, 0, 0)")), !isRead);
        QCOMPARE(record().filter(QRegularExpression(QStringLiteral("^log (Warning|Error|Fatal)"))), QStringList());
    }

    void aLockOfAnotherProcessHoldsTheSavesForTwoSecondsAtTheMost()
    {
        QElapsedTimer time;
        time.start();
        saveSettingsInTheProgram({});
        const qint64 freeMs = time.restart();
        QVERIFY(QFile::remove(settingsFile()) && QFile::copy(QStringLiteral(KORA_TRAINING_SETTINGS), settingsFile()));
        const QByteArray before = bytesOf(settingsFile());
        QLockFile lock(settingsFile() + QStringLiteral(".lock"));
        QVERIFY(lock.tryLock());
        saveSettingsInTheProgram({});
        // Some forty writes from five windows; the other run's time is that of the machine.
        constexpr int waitMs = 2000;
        QVERIFY2(time.elapsed() < 2 * freeMs + 2 * waitMs, qPrintable(QString::number(time.elapsed())));
        QCOMPARE(bytesOf(settingsFile()), before);
        QVERIFY(record().contains(QStringLiteral("setBPMscale(0, 500, 500)")));
    }

    void aFileThatIsNotRefusedTakesTheSettings()
    {
        saveSettingsInTheProgram({});
        const QSettings settings(settingsFile(), QSettings::IniFormat);
        QCOMPARE(settings.value(QStringLiteral("PositionFilters/XlfFcutLow")).toDouble(), 20.0);
        QCOMPARE(record().count(QStringLiteral("log Info: Started logger")), 1);
    }
};

QTEST_GUILESS_MAIN(RefusedSettingsTest)
#include "RefusedSettingsTest.moc"
