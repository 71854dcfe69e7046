#include "ConsoleRun.h"
#include "ServedInstallation.h"
#include "simulation/console/SocketDirectory.h"
#include "simulation/console/UnixSocket.h"
#include "simulation/service/KernelTime.h"
#include "simulation/service/Messages.h"
#include "simulation/service/StreamMemory.h"

#include <QElapsedTimer>
#include <QRegularExpression>
#include <QTest>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <memory>

using namespace kora::simulation;

namespace {

constexpr uid_t anotherUser = 65534;

/// Everything in the folder of the sockets.
QStringList filesIn(const QString& folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::System | QDir::Hidden | QDir::NoDotAndDotDot);
}

Request requestOf(Operation operation)
{
    return {Request::rightMagic, Request::rightVersion, operation, 1, kernelNanoseconds() + 10000000000, {}};
}

/// A connection to a service that speaks as it likes.
class Stranger
{
public:
    explicit Stranger(const std::string& path) : fd(connectToServed(path)) {}
    ~Stranger()
    {
        if (fd >= 0)
            close(fd);
        if (memory >= 0)
            close(memory);
    }

    bool say(const void* packet, std::size_t bytes) const
    {
        return send(fd, packet, bytes, MSG_NOSIGNAL) == ssize_t(bytes);
    }
    /// Bytes of the next packet, 0 when the service has hung up; keeps a descriptor that comes along.
    long hear()
    {
        char packet[8192];
        iovec part = {packet, sizeof packet};
        alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))];
        msghdr message = {};
        message.msg_iov = &part;
        message.msg_iovlen = 1;
        message.msg_control = control;
        message.msg_controllen = sizeof control;
        const ssize_t bytes = recvmsg(fd, &message, MSG_CMSG_CLOEXEC);
        if (bytes > 0 && CMSG_FIRSTHDR(&message))
            std::memcpy(&memory, CMSG_DATA(CMSG_FIRSTHDR(&message)), sizeof memory);
        return bytes < 0 && errno == ECONNRESET ? 0 : bytes;
    }
    bool join()
    {
        const Request request = requestOf(Operation::join);
        return say(&request, sizeof request) && hear() == long(sizeof(Reply)) && memory >= 0;
    }

    const int fd;
    int memory = -1;
};

} // namespace

/// An installation that is served, and programs that join it, each in a process of its own.
class ServiceTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        scratch = std::make_unique<QTemporaryDir>();
        QVERIFY(scratch->isValid());
        folder = scratch->filePath(QStringLiteral("kora-simulation"));
    }

    void serviceSaysWhereItIsAndHowProgramsJoin()
    {
        ServedInstallation service(scratch->path());
        QVERIFY(service.isServing());
        QCOMPARE(service.announcement.count(QLatin1Char('\n')), 1);
        QVERIFY(service.announcement.contains(folder + QStringLiteral("/default.served")));
        QVERIFY(service.announcement.contains(QStringLiteral("LD_LIBRARY_PATH=")));
        ServedInstallation other(scratch->path(), {QStringLiteral("--name"), QStringLiteral("training")});
        QVERIFY(other.isServing());
        QVERIFY(other.announcement.contains(QStringLiteral(" KORA_SIMULATION=training ")));
    }

    void nameThatIsServedAlreadyIsRefused()
    {
        ServedInstallation service(scratch->path());
        QVERIFY(service.isServing());
        const ConsoleRun run = console({QStringLiteral("serve")});
        QVERIFY2(run.isRefusal(2, QStringLiteral("served as default already")), run.described().constData());
        JoiningProgram program(scratch->path());
        QCOMPARE(program.does("rate").text, QStringLiteral("1000"));
    }

    void wrongWordsOfServeAreRefused_data()
    {
        QTest::addColumn<QString>("words");
        for (const char* words :
             {"--rate", "--rate 50001", "--rate -1", "--rate fast", "--name", "--name own", "--name a/b", "--name .x",
              "--name", "--slow", "now", "--name 123456789012345678901234567890123"})
            QTest::newRow(words) << QString::fromLatin1(words);
    }
    void wrongWordsOfServeAreRefused()
    {
        QFETCH(QString, words);
        const ConsoleRun run = console(QStringList{QStringLiteral("serve")} + words.split(QLatin1Char(' ')));
        QVERIFY2(run.isRefusal(2, QString()), run.described().constData());
        QVERIFY(filesIn(folder).isEmpty());
    }

    void programsWorkOnOneBeam()
    {
        ServedInstallation service(scratch->path(), {QStringLiteral("--driven")});
        QVERIFY(service.isServing());
        JoiningProgram one(scratch->path());
        JoiningProgram other(scratch->path());
        const QString block = one.does("buffer 14336").text;
        QVERIFY(block.startsWith(QLatin1String("14336 ")));
        QCOMPARE(other.does("buffer 14336").text, block);
        QCOMPARE(one.does("set-point 7").text, QStringLiteral("0"));
        QCOMPARE(other.does("get-point").text, QStringLiteral("0 7.000000"));
        QCOMPARE(other.does("set-rate 20000").text, QStringLiteral("0"));
        QCOMPARE(one.does("rate").text, QStringLiteral("20000"));
        QCOMPARE(one.does("amplifier").text, QStringLiteral("0"));
    }

    void rateOfPowerOnIsTheServicesOwn()
    {
        // The program exports another one.
        ServedInstallation service(scratch->path(), {QStringLiteral("--rate"), QStringLiteral("4321")});
        QVERIFY(service.isServing());
        JoiningProgram program(scratch->path());
        QCOMPARE(program.does("rate").text, QStringLiteral("4321"));
        JoiningProgram own(scratch->path(), QStringLiteral("own"));
        QVERIFY(own.does("rate").text != QStringLiteral("4321"));
    }

    void beamGoesOnWithoutAnyCall()
    {
        ServedInstallation service(scratch->path());
        QVERIFY(service.isServing());
        const auto time = [this] { return console({QStringLiteral("time")}).output.toDouble(); };
        const double start = time();
        QTRY_VERIFY(time() > start + 0.2);
    }

    void streamIsAtMostSomeHundredthsOld()
    {
        ServedInstallation service(scratch->path());
        QVERIFY(service.isServing());
        JoiningProgram program(scratch->path());
        QCOMPARE(program.does("set-rate 50000").text, QStringLiteral("0"));
        QCOMPARE(program.does("open").text, QStringLiteral("0"));
        const JoiningProgram::Result read = program.does("read 10000");
        QCOMPARE(read.text, QStringLiteral("10000"));
        QVERIFY2(read.seconds > 0.19, QByteArray::number(read.seconds).constData());
    }

    void choiceFollowsTheEnvironment()
    {
        ServedInstallation service(scratch->path(), {QStringLiteral("--rate"), QStringLiteral("2222")});
        QVERIFY(service.isServing());
        ServedInstallation named(scratch->path(), {QStringLiteral("--name"), QStringLiteral("b-2"),
                                                   QStringLiteral("--rate"), QStringLiteral("3333")});
        QVERIFY(named.isServing());
        JoiningProgram unset(scratch->path());
        QCOMPARE(unset.does("rate").text, QStringLiteral("2222"));
        JoiningProgram joined(scratch->path(), QStringLiteral("b-2"));
        QCOMPARE(joined.does("rate").text, QStringLiteral("3333"));
        JoiningProgram own(scratch->path(), QStringLiteral("own"));
        QVERIFY(own.does("rate").text.toInt() > 0);
        QVERIFY(filesIn(folder).contains(own.pid() + QStringLiteral(".socket")));
        QVERIFY(!filesIn(folder).contains(unset.pid() + QStringLiteral(".socket")));
    }

    void unservedNameEndsTheProgram()
    {
        JoiningProgram program(scratch->path(), QStringLiteral("nobody"));
        program.start(QStringLiteral("rate"));
        QVERIFY(program.process.waitForFinished());
        QCOMPARE(program.process.exitCode(), 127);
        const QByteArray error = program.process.readAllStandardError();
        QVERIFY2(error.count('\n') == 1 && error.contains("KORA_SIMULATION=nobody"), error.constData());
    }

    void withoutAServiceAProgramHasItsOwn()
    {
        JoiningProgram program(scratch->path());
        QVERIFY(program.does("rate").text.toInt() > 0);
        QCOMPARE(console({QStringLiteral("list")}).output, program.pid() + QStringLiteral(" service_subject\n"));
    }

    void programThatListenedJoinsWhatIsServedByItsFirstCall()
    {
        JoiningProgram program(scratch->path());
        QCOMPARE(filesIn(folder), QStringList{program.pid() + QStringLiteral(".socket")});
        ServedInstallation service(scratch->path(), {QStringLiteral("--rate"), QStringLiteral("2222")});
        QVERIFY(service.isServing());
        QCOMPARE(program.does("rate").text, QStringLiteral("2222"));
        QCOMPARE(filesIn(folder), QStringList{QStringLiteral("default.served")});
    }

    void consoleReachesServicesByName()
    {
        ServedInstallation service(scratch->path());
        ServedInstallation named(scratch->path(), {QStringLiteral("--name"), QStringLiteral("b")});
        QVERIFY(service.isServing());
        QVERIFY(named.isServing());
        const ConsoleRun unnamed = console({QStringLiteral("beam"), QStringLiteral("off")});
        QVERIFY2(unnamed.isRefusal(2, QStringLiteral("\"b\"")), unnamed.described().constData());
        QCOMPARE(console({QStringLiteral("--name"), QStringLiteral("b"), QStringLiteral("beam"), QStringLiteral("off")})
                     .status,
                 0);
        const auto status = [this](const char* name) {
            return console({QStringLiteral("--name"), QString::fromLatin1(name), QStringLiteral("status")}).output;
        };
        QVERIFY(status("b").contains(QStringLiteral("beam          off")));
        QVERIFY(status("default").contains(QStringLiteral("beam          on")));
        const ConsoleRun nobody =
            console({QStringLiteral("--name"), QStringLiteral("nobody"), QStringLiteral("status")});
        QVERIFY2(nobody.isRefusal(1, QStringLiteral("nobody")), nobody.described().constData());
    }

    void listShowsThePrograms()
    {
        ServedInstallation service(scratch->path());
        QVERIFY(service.isServing());
        JoiningProgram program(scratch->path());
        program.does("rate");
        const QStringList lines = console({QStringLiteral("list")}).output.split(QLatin1Char('\n'));
        QCOMPARE(lines.size(), 3);
        QCOMPARE(lines[0],
                 QString::number(service.process.processId()) + QStringLiteral(" kora-sim serves \"default\""));
        QVERIFY2(
            QRegularExpression(QStringLiteral("^  %1 service_subject since \\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d$")
                                   .arg(program.pid()))
                .match(lines[1])
                .hasMatch(),
            qPrintable(lines[1]));
    }

    void faultsReachEveryProgram()
    {
        ServedInstallation service(scratch->path());
        QVERIFY(service.isServing());
        JoiningProgram one(scratch->path());
        JoiningProgram other(scratch->path());
        QCOMPARE(one.does("open").text, QStringLiteral("0"));
        for (const char* fault : {"fail getBuffer 2", "remove kora_dma_displ"})
            QCOMPARE(console(QString::fromLatin1(fault).split(QLatin1Char(' '))).status, 0);
        QVERIFY(one.does("buffer 10").text.startsWith(QLatin1String("-1 ")));
        QVERIFY(other.does("buffer 10").text.startsWith(QLatin1String("-1 ")));
        QVERIFY(one.does("buffer 10").text.startsWith(QLatin1String("10 ")));
        QCOMPARE(one.does("read 1").text, QString::number(-ENODEV));
        QCOMPARE(other.does("open").text, QString::number(-ENOENT));
        QCOMPARE(console({QStringLiteral("repair")}).status, 0);
        QCOMPARE(one.does("read 1").text, QStringLiteral("1"));
    }

    void serviceEnds_data()
    {
        QTest::addColumn<int>("signal");
        QTest::newRow("SIGTERM") << SIGTERM;
        QTest::newRow("SIGINT") << SIGINT;
        QTest::newRow("SIGKILL") << SIGKILL;
        QTest::newRow("SIGSTOP") << SIGSTOP;
        QTest::newRow("stop") << 0;
    }
    void serviceEnds()
    {
        QFETCH(int, signal);
        ServedInstallation service(scratch->path());
        QVERIFY(service.isServing());
        JoiningProgram program(scratch->path());
        JoiningProgram reader(scratch->path());
        QCOMPARE(reader.does("set-rate 1").text, QStringLiteral("0"));
        QCOMPARE(reader.does("open").text, QStringLiteral("0"));
        QCOMPARE(program.does("open").text, QStringLiteral("0"));
        reader.start(QStringLiteral("read 1000"));
        if (signal != 0)
            QVERIFY(service.signal(signal));
        else
            QCOMPARE(console({QStringLiteral("stop")}).status, 0);
        QElapsedTimer timer;
        timer.start();
        // The one that waits, and the first call of the one that did not look.
        const QString waited = reader.result().text;
        QVERIFY(timer.elapsed() < 1500);
        QCOMPARE(waited, QString::number(-ENODEV));
        const QString all = program.does("all").text;
        QCOMPARE(all.section(QLatin1Char(' '), 0, 0), QStringLiteral("0"));
        QVERIFY2(all.section(QLatin1Char(' '), 1).toDouble() < 1, qPrintable(all));
        QVERIFY(program.does("buffer 100").text.startsWith(QLatin1String("-1 ")));
        QCOMPARE(program.does("read 1").text, QString::number(-ENODEV));
        QCOMPARE(program.does("amplifier").text, QString::number(-ENOENT));
        if (signal == SIGSTOP) {
            QVERIFY(service.signal(SIGCONT));
            QTRY_COMPARE(program.does("rate").text, QStringLiteral("1"));
            QCOMPARE(program.does("read 1").text, QStringLiteral("1"));
            return;
        }
        QCOMPARE(service.ends(), signal != SIGKILL);
        // What starts now has its own, and finds nothing of the service.
        JoiningProgram later(scratch->path());
        QVERIFY(later.does("rate").text.toInt() > 1);
        QCOMPARE(filesIn(folder), QStringList{later.pid() + QStringLiteral(".socket")});
    }

    void commandThatWasGivenUpHasNoEffect()
    {
        ServedInstallation service(scratch->path());
        QVERIFY(service.isServing());
        JoiningProgram program(scratch->path());
        QCOMPARE(program.does("set-rate 500").text, QStringLiteral("0"));
        QVERIFY(service.signal(SIGSTOP));
        // The first one is sent to a service that was alive a moment ago.
        QCOMPARE(program.does("set-rate 600").text, QStringLiteral("-1"));
        QVERIFY(service.signal(SIGCONT));
        QTRY_VERIFY(program.does("rate").text != QLatin1String("-1"));
        QCOMPARE(program.does("rate").text, QStringLiteral("500"));
    }

    void stoppedProgramHoldsUpNobody()
    {
        ServedInstallation service(scratch->path());
        QVERIFY(service.isServing());
        JoiningProgram stopped(scratch->path());
        JoiningProgram program(scratch->path());
        QCOMPARE(stopped.does("rate").text, QStringLiteral("1000"));
        QCOMPARE(kill(pid_t(stopped.process.processId()), SIGSTOP), 0);
        for (int i = 0; i < 20; ++i)
            QVERIFY(program.does("buffer 1000").text.startsWith(QLatin1String("1000 ")));
        QCOMPARE(program.does("rate").text, QStringLiteral("1000"));
    }

    void killedProgramLeavesTheList()
    {
        ServedInstallation service(scratch->path());
        QVERIFY(service.isServing());
        JoiningProgram program(scratch->path());
        program.does("rate");
        QVERIFY(console({QStringLiteral("list")}).output.contains(QStringLiteral("service_subject")));
        program.process.kill();
        QTRY_VERIFY(!console({QStringLiteral("list")}).output.contains(QStringLiteral("service_subject")));
    }

    void forkedChildJoinsForItself()
    {
        ServedInstallation service(scratch->path(), {QStringLiteral("--rate"), QStringLiteral("2222")});
        QVERIFY(service.isServing());
        JoiningProgram program(scratch->path());
        program.does("rate");
        program.start(QStringLiteral("fork"));
        // The parent's line and the child's, in either order.
        QStringList lines{program.line(), program.line()};
        QVERIFY2(lines.contains(QStringLiteral("2222")), qPrintable(lines.join(QLatin1Char('|'))));
        QCOMPARE(program.does("rate").text, QStringLiteral("2222"));
        // Each with a connection of its own.
        QCOMPARE(console({QStringLiteral("list")}).output.count(QStringLiteral("service_subject")), 2);
    }

    void programThatClosesAllDescriptorsFailsAndHarmsNobody()
    {
        ServedInstallation service(scratch->path());
        QVERIFY(service.isServing());
        JoiningProgram program(scratch->path());
        program.does("rate");
        QCOMPARE(program.does("close-all").text, QStringLiteral("0"));
        QCOMPARE(program.does("rate").text, QStringLiteral("-1"));
        QCOMPARE(program.does("heard").text, QStringLiteral("0"));
        QCOMPARE(program.does("open").text, QString::number(-ENOENT));
    }

    void hostileFramesEndTheirConnectionAlone()
    {
        ServedInstallation service(scratch->path());
        QVERIFY(service.isServing());
        JoiningProgram program(scratch->path());
        QCOMPARE(program.does("rate").text, QStringLiteral("1000"));
        Request right = requestOf(Operation::getPIDstatus);
        Request magic = right;
        magic.magic ^= 1;
        Request version = right;
        ++version.version;
        Request operation = right;
        operation.operation = Operation(65535);
        Request stream = right;
        stream.operation = Operation::getBuffer;
        const QByteArray longLine(9000, 'x');
        for (const bool joined : {false, true}) {
            const auto hangsUp = [&](const void* packet, std::size_t bytes) {
                Stranger stranger(socket());
                return (!joined || stranger.join()) && stranger.say(packet, bytes) && stranger.hear() == 0;
            };
            for (const Request* request : {&magic, &version, &operation, &stream}) {
                QVERIFY(hangsUp(request, sizeof *request));
            }
            QVERIFY(hangsUp(&right, sizeof right - 1));
            QVERIFY(hangsUp("x", 1));
            QVERIFY(hangsUp("", 1));
            QVERIFY(hangsUp(longLine.constData(), std::size_t(longLine.size())));
        }
        // Before it has joined, and a second time.
        Stranger early(socket());
        QVERIFY(early.say(&right, sizeof right) && early.hear() == 0);
        Stranger twice(socket());
        QVERIFY(twice.join());
        const Request again = requestOf(Operation::join);
        QVERIFY(twice.say(&again, sizeof again) && twice.hear() == 0);
        QCOMPARE(program.does("rate").text, QStringLiteral("1000"));
    }

    void whoTakesNoRepliesIsDropped()
    {
        ServedInstallation service(scratch->path());
        QVERIFY(service.isServing());
        Stranger greedy(socket());
        QVERIFY(greedy.join());
        const Request request = requestOf(Operation::state);
        int sent = 0;
        // Sends wait for a second at most.
        while (sent < 100000 && greedy.say(&request, sizeof request))
            ++sent;
        QVERIFY(sent < 100000);
        JoiningProgram program(scratch->path());
        QCOMPARE(program.does("rate").text, QStringLiteral("1000"));
    }

    void silentConnectionIsDropped()
    {
        ServedInstallation service(scratch->path());
        QVERIFY(service.isServing());
        Stranger silent(socket());
        limitWaiting(silent.fd, 10);
        QCOMPARE(silent.hear(), 0L);
    }

    void sharedMemoryCanBeNeitherShrunkNorWritten()
    {
        ServedInstallation service(scratch->path());
        QVERIFY(service.isServing());
        Stranger stranger(socket());
        QVERIFY(stranger.join());
        QVERIFY(ftruncate(stranger.memory, 0) != 0);
        QVERIFY(ftruncate(stranger.memory, 1 << 30) != 0);
        QVERIFY(pwrite(stranger.memory, "x", 1, 0) < 0);
        QVERIFY(mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_SHARED, stranger.memory, 0) == MAP_FAILED);
        QVERIFY(mmap(nullptr, 4096, PROT_READ, MAP_SHARED, stranger.memory, 0) != MAP_FAILED);
    }

    void anotherUserIsRefused()
    {
        if (geteuid() != 0)
            QSKIP("only root can try as another user");
        ServedInstallation service(scratch->path());
        QVERIFY(service.isServing());
        QCOMPARE(joinAsAnotherUser(), EACCES);
        // With the folder open to all, the service looks for itself.
        for (const QString& path : {scratch->path(), folder})
            QCOMPARE(chmod(path.toLocal8Bit().constData(), 0711), 0);
        QCOMPARE(chmod(socket().c_str(), 0666), 0);
        QCOMPARE(joinAsAnotherUser(), 0);
        QCOMPARE(chmod(folder.toLocal8Bit().constData(), 0700), 0);
        QVERIFY(console({QStringLiteral("list")}).output.count(QLatin1Char('\n')) == 1);
    }

private:
    ConsoleRun console(const QStringList& arguments) { return runConsole(arguments, scratch->path()); }
    std::string socket() const { return servedPath(folder.toStdString(), "default"); }

    /// errno of connecting as another user, 0 when that is possible and the service hangs up, -1 when it answers.
    int joinAsAnotherUser() const
    {
        const std::string path = socket();
        const pid_t child = fork();
        if (child == 0) {
            if (setgid(anotherUser) != 0 || setuid(anotherUser) != 0)
                _exit(254);
            const int fd = newSocket(SOCK_SEQPACKET);
            if (connectTo(fd, path) != 0)
                _exit(errno);
            const Request request = requestOf(Operation::join);
            Reply reply;
            if (send(fd, &request, sizeof request, MSG_NOSIGNAL) < 0)
                _exit(0);
            _exit(recv(fd, &reply, sizeof reply, 0) > 0 ? 255 : 0);
        }
        int status = 0;
        waitpid(child, &status, 0);
        return WEXITSTATUS(status) == 255 ? -1 : WEXITSTATUS(status);
    }

    std::unique_ptr<QTemporaryDir> scratch;
    QString folder;
};

QTEST_GUILESS_MAIN(ServiceTest)
#include "ServiceTest.moc"
