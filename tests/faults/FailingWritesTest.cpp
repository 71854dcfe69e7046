// Every file that the program writes, with each of its system calls failing once: afterwards the old or the new file
// stands whole, nothing else is left in the folder, the user has been told unless the target could not be opened or the
// window tells nothing, and the next save succeeds.
//
// KORA_WRITES_WHOLE   if set, files of full size and every kind of failure; otherwise small ones and three kinds

#include "faults/FailingCalls.h"
#include "faults/Writers.h"

#include "app/ProcessStart.h"
#include "double/KoralinkDouble.h"
#include "support/DrivenPause.h"
#include "support/FailedSaves.h"
#include "support/FileContent.h"
#include "support/MessageBoxes.h"
#include "support/World.h"

#include <QApplication>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
#include <cerrno>

namespace {

constexpr int fullSize = 10000;
constexpr const char* kindNames[failing_calls::KindCount] = {"no room", "disk error", "refused", "short",
                                                             "interrupted"};
constexpr int kindErrors[failing_calls::KindCount] = {ENOSPC, EIO, EACCES, 0, EINTR};
const QByteArray scratchFolder = QByteArrayLiteral("/dev/shm/kora-settings-");

/// A file without the moment at which it was written; null where there is none.
QByteArray timelessContent(const QString& path)
{
    if (!QFile::exists(path))
        return QByteArray();
    const QByteArray content = contentOf(path);
    static const QRegularExpression moment(QStringLiteral("Time and Date: [^\r]*"));
    return content.isNull() ? QByteArrayLiteral("")
                            : QString::fromLatin1(content).replace(moment, QStringLiteral("Time")).toLatin1();
}

bool isFailedSave(const MessageBoxes::Box& box)
{
    return box.title == QLatin1String("File not saved");
}

} // namespace

class FailingWritesTest : public QObject
{
    Q_OBJECT

private:
    const bool isWhole = qEnvironmentVariableIsSet("KORA_WRITES_WHOLE");
    std::unique_ptr<World> world;

    /// Saves with the call of this number failing. @return how many calls there were
    static int saveFailing(Writer& writer, int number, failing_calls::Kind kind, QVector<MessageBoxes::Box>& told)
    {
        const QByteArray folder = QFile::encodeName(QFileInfo(writer.path()).path());
        const MessageBoxes boxes;
        failing_calls::begin(folder.constData(), scratchFolder.constData(), number, kind);
        writer.save();
        const int calls = failing_calls::end();
        told = boxes.boxes();
        told.erase(std::remove_if(told.begin(), told.end(), [](const auto& box) { return !isFailedSave(box); }),
                   told.end());
        return calls;
    }

    static void verifyWhatTheUserIsTold(const Writer& writer, failing_calls::Kind kind, bool isSaved,
                                        const QVector<MessageBoxes::Box>& told)
    {
        // What cannot be opened is passed over in silence.
        const bool isOpening =
            qstrcmp(failing_calls::failedFunction(), "open") == 0 &&
            (QFile::decodeName(failing_calls::failedPath()) == writer.path() || writer.oldContent().isNull());
        const bool isTold = writer.tells() && !isSaved && !isOpening;
        QCOMPARE(told.size(), isTold ? 1 : 0);
        if (isTold)
            compareFailedSave(told.first(), writer.path(), qt_error_string(kindErrors[kind]));
        if (!writer.status().isEmpty())
            QCOMPARE(writer.status().contains(QLatin1String("Saved as")), !isTold);
    }

    static void verifyThatNothingIsLeft(const Writer& writer)
    {
        // A name that could not be removed is there.
        if (qstrcmp(failing_calls::failedFunction(), "unlink") == 0)
            return;
        const QFileInfo file(writer.path());
        QCOMPARE(namesIn(file.path()), file.exists() ? QStringList(file.fileName()) : QStringList());
    }

    static void verifyThatTheNextSaveSucceeds(Writer& writer, const QByteArray& saved)
    {
        writer.putOld();
        QVector<MessageBoxes::Box> told;
        saveFailing(writer, 0, failing_calls::NoRoom, told);
        QCOMPARE(told.size(), 0);
        QCOMPARE(timelessContent(writer.path()), saved);
    }

private slots:
    void initTestCase()
    {
        QVERIFY2(failing_calls::isLoaded(), "run with LD_PRELOAD set to the library of failing calls");
        prepareProcess();
        if (isWhole)
            setSavedRows(fullSize);
    }
    void init()
    {
        koralink_double::reset();
        world = std::make_unique<World>();
    }
    void cleanup()
    {
        driven_pause::clear();
        world.reset();
        QCOMPARE(koralink_double::openDescriptors(), 0);
    }

    void oldOrNewFileStandsWhole_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("kind");
        const QVector<int> shortForm = {failing_calls::NoRoom, failing_calls::Short, failing_calls::Interrupted};
        for (const QString& name : writerNames()) {
            for (int kind = 0; kind < failing_calls::KindCount; ++kind) {
                if (isWhole || shortForm.contains(kind))
                    QTest::newRow(qPrintable(name + QStringLiteral(", ") + QLatin1String(kindNames[kind])))
                        << name << kind;
            }
        }
    }
    void oldOrNewFileStandsWhole()
    {
        QFETCH(QString, name);
        QFETCH(int, kind);
        const auto failure = failing_calls::Kind(kind);
        // In memory, where nothing waits for a disk.
        const QTemporaryDir folder(QStringLiteral("/dev/shm/kora-test-XXXXXX"));
        const std::unique_ptr<Writer> writer = makeWriter(name, folder.path());
        writer->putOld();
        QVector<MessageBoxes::Box> told;
        const int calls = saveFailing(*writer, 0, failure, told);
        const QByteArray saved = timelessContent(writer->path());
        QVERIFY(saved != writer->oldContent() && saved.size() > writer->oldContent().size());
        // Open, write, synchronise, close and, unless it is appended, rename.
        QVERIFY2(calls >= 4, qPrintable(QString::number(calls)));

        int failed = 0;
        for (int number = 1; number <= calls; ++number) {
            writer->putOld();
            saveFailing(*writer, number, failure, told);
            const QByteArray function = failing_calls::failedFunction();
            failed += int(!function.isEmpty());
            const QByteArray present = timelessContent(writer->path());
            const bool isSaved = present == saved;
            const QByteArray where = QByteArray::number(number) + ' ' + function + ' ' + failing_calls::failedPath();
            QVERIFY2(isSaved || present == writer->oldContent(), (where + ": " + present.left(2000)).constData());
            if (failure == failing_calls::Short || failure == failing_calls::Interrupted)
                QVERIFY2(isSaved, where.constData());
            verifyWhatTheUserIsTold(*writer, failure, isSaved, told);
            if (!QTest::currentTestFailed())
                verifyThatNothingIsLeft(*writer);
            if (!QTest::currentTestFailed())
                verifyThatTheNextSaveSucceeds(*writer, saved);
            if (QTest::currentTestFailed())
                QFAIL(where.constData());
        }
        // Not every call can come short or be interrupted.
        const bool isError = kindErrors[kind] != 0 && failure != failing_calls::Interrupted;
        QVERIFY(failed > 0 && (!isError || failed == calls));
    }
};

QTEST_MAIN(FailingWritesTest)
#include "FailingWritesTest.moc"
