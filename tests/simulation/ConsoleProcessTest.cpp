#include "ConsoleRun.h"
#include "simulation/console/Protocol.h"
#include "simulation/console/SocketDirectory.h"
#include "simulation/console/UnixSocket.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <memory>
#include <vector>

using namespace kora::simulation;

namespace {

constexpr uid_t anotherUser = 65534;
/// Status of a child whose connection was gone when it spoke.
constexpr int hungUp = 253;

/// Whether every thread of a process has come to rest by SIGSTOP.
bool isStopped(qint64 process)
{
    const QDir threads(QStringLiteral("/proc/%1/task").arg(process));
    const QStringList names = threads.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString& thread : names) {
        QFile file(threads.filePath(thread + QStringLiteral("/stat")));
        // The state follows the name, which may hold anything but ends with the last parenthesis.
        const QByteArray text = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
        if (text.mid(text.lastIndexOf(')') + 2, 1) != "T")
            return false;
    }
    return !names.isEmpty();
}

/// A process on the simulated installation whose socket lies in a folder of the test.
class Subject
{
public:
    explicit Subject(const QString& runtimeFolder, const QStringList& wrapper = {}, const QStringList& arguments = {})
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), runtimeFolder);
        process.setProcessEnvironment(environment);
        QStringList command = wrapper + QStringList{QStringLiteral(KORA_SUBJECT)} + arguments;
        const QString program = command.takeFirst();
        process.start(program, command);
    }
    ~Subject()
    {
        process.closeWriteChannel();
        process.waitForFinished();
    }

    bool isRunning() { return process.waitForReadyRead() && process.readLine() == "running\n"; }
    QString pid() const { return QString::number(process.processId()); }
    bool end()
    {
        process.closeWriteChannel();
        return process.waitForFinished() && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
    }
    bool endBy(int signal)
    {
        return kill(pid_t(process.processId()), signal) == 0 && process.waitForFinished() &&
               process.exitStatus() == QProcess::CrashExit;
    }

    QProcess process;
};

/// Outcome of talking to a socket as another user: errno of the connection, or the answer in `answer`.
int talkAsAnotherUser(const QString& path, QByteArray& answer)
{
    int ends[2];
    if (pipe(ends) != 0)
        return -1;
    const std::string place = path.toStdString();
    const pid_t child = fork();
    if (child == 0) {
        if (setgid(anotherUser) != 0 || setuid(anotherUser) != 0)
            _exit(254);
        const int fd = newSocket();
        if (connectTo(fd, place) != 0)
            _exit(errno);
        static const char request[] = "beam off\n";
        if (send(fd, request, sizeof request - 1, MSG_NOSIGNAL) < 0)
            _exit(hungUp);
        char part[256];
        for (ssize_t received = 0; (received = recv(fd, part, sizeof part, 0)) > 0;)
            if (write(ends[1], part, std::size_t(received)) != received)
                _exit(252);
        _exit(0);
    }
    close(ends[1]);
    char part[256];
    for (ssize_t received = 0; (received = read(ends[0], part, sizeof part)) > 0;)
        answer.append(part, int(received));
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

/// A field of /proc/PID/task/TID/status of the thread with this name; empty without such a thread.
QByteArray threadField(const QString& pid, const QByteArray& name, const QByteArray& field)
{
    const QDir tasks(QStringLiteral("/proc/%1/task").arg(pid));
    for (const QString& task : tasks.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        QFile file(tasks.filePath(task + QStringLiteral("/status")));
        if (!file.open(QIODevice::ReadOnly))
            continue;
        const QList<QByteArray> lines = file.readAll().split('\n');
        if (!lines.contains("Name:\t" + name))
            continue;
        for (const QByteArray& line : lines)
            if (line.startsWith(field + ":\t"))
                return line.mid(field.size() + 2);
    }
    return {};
}

} // namespace

/// The socket and the listener in processes of their own.
class ConsoleProcessTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        scratch = std::make_unique<QTemporaryDir>();
        QVERIFY(scratch->isValid());
        folder = scratch->filePath(QStringLiteral("kora-simulation"));
    }

    void singleSimulationNeedsNoName()
    {
        Subject subject(scratch->path());
        QVERIFY(subject.isRunning());
        QCOMPARE(console({QStringLiteral("beam"), QStringLiteral("off")}).status, 0);
        QVERIFY(console({QStringLiteral("status")}).output.contains(QStringLiteral("beam          off")));
        const ConsoleRun list = console({QStringLiteral("list")});
        QCOMPARE(list.output, subject.pid() + QStringLiteral(" console_subject\n"));
    }

    void severalSimulationsAreNamedByPid()
    {
        Subject one(scratch->path());
        Subject other(scratch->path());
        QVERIFY(one.isRunning());
        QVERIFY(other.isRunning());
        const ConsoleRun unnamed = console({QStringLiteral("beam"), QStringLiteral("off")});
        QVERIFY2(unnamed.isRefusal(2, QStringLiteral("several simulations are running")),
                 unnamed.described().constData());
        QVERIFY(unnamed.error.contains(one.pid()) && unnamed.error.contains(other.pid()));
        QCOMPARE(console({QStringLiteral("--pid"), other.pid(), QStringLiteral("beam"), QStringLiteral("off")}).status,
                 0);
        const auto beamOf = [this](const Subject& subject) {
            return console({QStringLiteral("--pid"), subject.pid(), QStringLiteral("status")}).output;
        };
        QVERIFY(beamOf(one).contains(QStringLiteral("beam          on")));
        QVERIFY(beamOf(other).contains(QStringLiteral("beam          off")));
        QCOMPARE(console({QStringLiteral("list")}).output.count(QLatin1Char('\n')), 2);
    }

    void programEndsByItselfAndTakesItsSocketAway()
    {
        Subject subject(scratch->path());
        QVERIFY(subject.isRunning());
        QCOMPARE(console({QStringLiteral("status")}).status, 0);
        QCOMPARE(QDir(folder).entryList(QDir::System | QDir::Hidden),
                 QStringList{subject.pid() + QStringLiteral(".socket")});
        QVERIFY(subject.end());
        QVERIFY(QDir(folder).entryList(QDir::System | QDir::Hidden).isEmpty());
    }

    void orphanedSocketIsTakenAway()
    {
        Subject subject(scratch->path());
        QVERIFY(subject.isRunning());
        QVERIFY(subject.endBy(SIGKILL));
        QCOMPARE(QDir(folder).entryList(QDir::System).size(), 1);
        const ConsoleRun run = console({QStringLiteral("status")});
        QVERIFY2(run.isRefusal(1, QStringLiteral("no simulation is running")), run.described().constData());
        QVERIFY(QDir(folder).entryList(QDir::System).isEmpty());
    }

    void forkedChildDoesNotHoldTheSocket()
    {
        Subject subject(scratch->path(), {}, {QStringLiteral("fork")});
        QVERIFY(subject.process.waitForFinished());
        const pid_t child = subject.process.readAll().toInt();
        QVERIFY(child > 1);
        QCOMPARE(QDir(folder).entryList(QDir::System).size(), 1);
        const ConsoleRun run = console({QStringLiteral("status")});
        // The child lives on; its parent, whose socket it was, is gone.
        QCOMPARE(kill(child, SIGKILL), 0);
        QVERIFY2(run.isRefusal(1, QStringLiteral("no simulation is running")), run.described().constData());
    }

    void listenerLeavesSignalsToTheProgram()
    {
        Subject subject(scratch->path());
        QVERIFY(subject.isRunning());
        const quint64 blocked = threadField(subject.pid(), "kora-console", "SigBlk").toULongLong(nullptr, 16);
        for (const int signal : {SIGTERM, SIGINT, SIGHUP, SIGCHLD, SIGPIPE, SIGALRM, SIGUSR1, SIGRTMIN})
            QVERIFY2(blocked & quint64(1) << (signal - 1), strsignal(signal));
        QCOMPARE(threadField(subject.pid(), "console_subject", "SigBlk"), QByteArray("0000000000000000"));
        QVERIFY(subject.endBy(SIGTERM));
    }

    void stoppedSimulationIsToldFromARunningOne()
    {
        Subject subject(scratch->path());
        QVERIFY(subject.isRunning());
        QCOMPARE(kill(pid_t(subject.process.processId()), SIGSTOP), 0);
        // Its threads stop one after another, and the one that answers may be the last.
        QTRY_VERIFY(isStopped(subject.process.processId()));
        const ConsoleRun run = console({QStringLiteral("status")});
        kill(pid_t(subject.process.processId()), SIGCONT);
        QVERIFY2(run.isRefusal(1, QStringLiteral("does not answer")), run.described().constData());
        QCOMPARE(console({QStringLiteral("status")}).status, 0);
    }

    void playEndsWithTheSimulation()
    {
        Subject subject(scratch->path());
        QVERIFY(subject.isRunning());
        QFile scenario(scratch->filePath(QStringLiteral("scenario")));
        QVERIFY(scenario.open(QIODevice::WriteOnly));
        scenario.write("0 beam off\n1000 beam on\n");
        scenario.close();
        QProcess player;
        player.setProcessEnvironment(subject.process.processEnvironment());
        player.start(QStringLiteral(KORA_CONSOLE), {QStringLiteral("play"), scenario.fileName()});
        QVERIFY(player.waitForReadyRead());
        QVERIFY(subject.end());
        QVERIFY(player.waitForFinished());
        QCOMPARE(player.exitCode(), 1);
        const QByteArray error = player.readAllStandardError();
        QVERIFY2(error.startsWith("kora-sim: the simulation in process ") && error.count('\n') == 1, error.constData());
    }

    void silentConsolesDelayNoOther()
    {
        Subject subject(scratch->path());
        QVERIFY(subject.isRunning());
        // More than the listener serves at a time.
        std::vector<int> silent(100);
        for (int& fd : silent) {
            fd = newSocket();
            QCOMPARE(connectTo(fd, socketOf(subject).toStdString()), 0);
        }
        const ConsoleRun run = console({QStringLiteral("status")});
        for (const int fd : silent)
            close(fd);
        QCOMPARE(run.status, 0);
    }

    void silentConsoleIsDropped()
    {
        Subject subject(scratch->path());
        QVERIFY(subject.isRunning());
        const int fd = newSocket();
        QCOMPARE(connectTo(fd, socketOf(subject).toStdString()), 0);
        QCOMPARE(send(fd, "beam", 4, MSG_NOSIGNAL), ssize_t(4));
        limitWaiting(fd, 20);
        char part[16];
        QCOMPARE(recv(fd, part, sizeof part, 0), ssize_t(0));
        close(fd);
    }

    void commandInPiecesIsPutTogether()
    {
        Subject subject(scratch->path());
        QVERIFY(subject.isRunning());
        const int fd = newSocket();
        QCOMPARE(connectTo(fd, socketOf(subject).toStdString()), 0);
        QCOMPARE(send(fd, "beam", 4, MSG_NOSIGNAL), ssize_t(4));
        // Whoever connects later is answered first.
        QCOMPARE(console({QStringLiteral("status")}).status, 0);
        QCOMPARE(send(fd, " off\n", 5, MSG_NOSIGNAL), ssize_t(5));
        QCOMPARE(allFrom(fd), QByteArray("accepted\n"));
        close(fd);
    }

    void garbageRequestsAreRefused()
    {
        Subject subject(scratch->path());
        QVERIFY(subject.isRunning());
        QCOMPARE(request(subject, "dance\n"), QByteArray("refused\nunknown command \"dance\"\n"));
        QCOMPARE(request(subject, "\n"), QByteArray("refused\na command is missing\n"));
        QVERIFY(request(subject, QByteArray("\xff\xfe\x00 1\n", 6)).startsWith("refused\n"));
        QCOMPARE(console({QStringLiteral("status")}).status, 0);
    }

    void lineOverTheLimitIsRefused()
    {
        Subject subject(scratch->path());
        QVERIFY(subject.isRunning());
        const auto lineOf = [](int bytes) { return QByteArray("beam off").leftJustified(bytes - 1) + '\n'; };
        const QByteArray refusal("refused\nthe command is too long\n");
        for (const int bytes : {int(protocol::longestRequest) + 1, 10000, 1000000})
            QCOMPARE(request(subject, lineOf(bytes)), refusal);
        QCOMPARE(request(subject, QByteArray(10000, 'x')), refusal);
        QVERIFY(console({QStringLiteral("status")}).output.contains(QStringLiteral("beam          on")));
        QCOMPARE(request(subject, lineOf(int(protocol::longestRequest))), QByteArray("accepted\n"));
        QVERIFY(console({QStringLiteral("status")}).output.contains(QStringLiteral("beam          off")));
    }

    void folderAndSocketBelongToTheUserAlone()
    {
        Subject subject(scratch->path());
        QVERIFY(subject.isRunning());
        struct stat file;
        QCOMPARE(stat(folder.toLocal8Bit().constData(), &file), 0);
        QCOMPARE(file.st_mode & 0777, mode_t(0700));
        QCOMPARE(stat(socketOf(subject).toLocal8Bit().constData(), &file), 0);
        QCOMPARE(file.st_mode & 0777, mode_t(0600));
    }

    void anotherUserIsKeptOutByTheFolder()
    {
        if (geteuid() != 0)
            QSKIP("only root can try as another user");
        Subject subject(scratch->path());
        QVERIFY(subject.isRunning());
        setMode(scratch->path(), 0711);
        QByteArray answer;
        QCOMPARE(talkAsAnotherUser(socketOf(subject), answer), EACCES);
    }

    void anotherUserIsKeptOutByTheListener()
    {
        if (geteuid() != 0)
            QSKIP("only root can try as another user");
        Subject subject(scratch->path());
        QVERIFY(subject.isRunning());
        setMode(scratch->path(), 0711);
        setMode(folder, 0711);
        setMode(socketOf(subject), 0666);
        QByteArray answer;
        const int outcome = talkAsAnotherUser(socketOf(subject), answer);
        setMode(folder, 0700);
        // The connection is made, and hung up without a word.
        QVERIFY2(outcome == 0 || outcome == hungUp, QByteArray::number(outcome).constData());
        QCOMPARE(answer, QByteArray());
        QVERIFY(console({QStringLiteral("status")}).output.contains(QStringLiteral("beam          on")));
    }

    void folderThatOthersCanEnterIsNotTrusted()
    {
        QVERIFY(QDir().mkdir(folder));
        setMode(folder, 0755);
        Subject subject(scratch->path());
        QVERIFY(subject.isRunning());
        QVERIFY(QDir(folder).entryList(QDir::System).isEmpty());
        // Both sides meet in the other folder.
        QCOMPARE(console({QStringLiteral("--pid"), subject.pid(), QStringLiteral("status")}).status, 0);
    }

    void folderThatIsNotPrivateIsTold()
    {
        Subject subject(scratch->path());
        QVERIFY(subject.isRunning());
        setMode(folder, 0755);
        const ConsoleRun run = console({QStringLiteral("--pid"), subject.pid(), QStringLiteral("status")});
        setMode(folder, 0700);
        QVERIFY2(run.isRefusal(1, folder + QStringLiteral("\" is not private")), run.described().constData());
        QVERIFY(!run.error.contains(QStringLiteral("no simulation is running")));
        QCOMPARE(console({QStringLiteral("--pid"), subject.pid(), QStringLiteral("status")}).status, 0);
    }

    void withoutAPlaceForTheSocketTheSimulationRunsOn()
    {
        const QString bwrap = QStandardPaths::findExecutable(QStringLiteral("bwrap"));
        const QStringList readOnly{bwrap, QStringLiteral("--ro-bind"), QStringLiteral("/"), QStringLiteral("/")};
        if (bwrap.isEmpty() || QProcess::execute(bwrap, readOnly.mid(1) + QStringList{QStringLiteral("true")}) != 0)
            QSKIP("needs bwrap and user namespaces");
        Subject subject(scratch->path(), readOnly);
        QVERIFY(subject.isRunning());
        QVERIFY(!QFile::exists(folder));
        QVERIFY(subject.end());
        QCOMPARE(subject.process.readAllStandardError(), QByteArray());
    }

private:
    ConsoleRun console(const QStringList& arguments) { return runConsole(arguments, scratch->path()); }
    QString socketOf(const Subject& subject)
    {
        return folder + QLatin1Char('/') + subject.pid() + QStringLiteral(".socket");
    }
    static void setMode(const QString& path, mode_t mode) { QCOMPARE(chmod(path.toLocal8Bit().constData(), mode), 0); }

    /// What comes until the listener hangs up.
    static QByteArray allFrom(int fd)
    {
        QByteArray answer;
        char part[256];
        for (ssize_t received = 0; (received = recv(fd, part, sizeof part, 0)) > 0;)
            answer.append(part, int(received));
        return answer;
    }

    /// Sends bytes to the listener and returns all that comes back.
    QByteArray request(const Subject& subject, const QByteArray& bytes)
    {
        const int fd = newSocket();
        QByteArray answer;
        if (connectTo(fd, socketOf(subject).toStdString()) == 0 && sendAll(fd, bytes.toStdString()))
            answer = allFrom(fd);
        close(fd);
        return answer;
    }

    std::unique_ptr<QTemporaryDir> scratch;
    QString folder;
};

QTEST_GUILESS_MAIN(ConsoleProcessTest)
#include "ConsoleProcessTest.moc"
