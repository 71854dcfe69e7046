#pragma once

#include <QDir>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTemporaryDir>

#include <csignal>

/// The surroundings of a test of the service: a folder for sockets that nobody else uses, and no installation named.
inline QProcessEnvironment serviceEnvironment(const QString& runtimeFolder, const QString& wanted = QString())
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), runtimeFolder);
    environment.remove(QStringLiteral("KORA_SIMULATION"));
    if (!wanted.isEmpty())
        environment.insert(QStringLiteral("KORA_SIMULATION"), wanted);
    return environment;
}

/// A running `kora-sim serve`; ended with this object.
class ServedInstallation
{
public:
    explicit ServedInstallation(const QString& runtimeFolder, const QStringList& arguments = {})
    {
        process.setProcessEnvironment(serviceEnvironment(runtimeFolder));
        process.start(QStringLiteral(KORA_CONSOLE), QStringList{QStringLiteral("serve")} + arguments);
    }
    ~ServedInstallation()
    {
        if (process.state() == QProcess::NotRunning)
            return;
        signal(SIGCONT);
        process.terminate();
        process.waitForFinished();
    }

    /// Waits until it says so.
    bool isServing()
    {
        if (!process.canReadLine())
            process.waitForReadyRead();
        announcement = QString::fromUtf8(process.readLine());
        return announcement.startsWith(QLatin1String("serving \""));
    }
    bool signal(int number) const { return kill(pid_t(process.processId()), number) == 0; }
    /// Whether it ended by itself, with status 0.
    bool ends()
    {
        return (process.state() == QProcess::NotRunning || process.waitForFinished()) &&
               process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
    }

    QProcess process;
    QString announcement;
};

/// A program on the stand-in, which does what it is told.
class JoiningProgram
{
public:
    struct Result
    {
        double seconds;
        QString text;
    };

    explicit JoiningProgram(const QString& runtimeFolder, const QString& wanted = QString())
    {
        process.setProcessEnvironment(serviceEnvironment(runtimeFolder, wanted));
        process.start(QStringLiteral(KORA_SUBJECT), QStringList());
        line();
    }
    ~JoiningProgram()
    {
        kill(pid_t(process.processId()), SIGCONT);
        process.closeWriteChannel();
        if (!process.waitForFinished())
            process.kill();
        process.waitForFinished();
    }

    void start(const QString& command) { process.write(command.toUtf8() + '\n'); }
    QString line()
    {
        while (!process.canReadLine() && process.waitForReadyRead(20000)) {
        }
        return QString::fromUtf8(process.readLine()).trimmed();
    }
    Result result()
    {
        const QString text = line();
        return {text.section(QLatin1Char(' '), 0, 0).toDouble(), text.section(QLatin1Char(' '), 1)};
    }
    Result does(const char* command)
    {
        start(QString::fromLatin1(command));
        return result();
    }
    QString pid() const { return QString::number(process.processId()); }

    QProcess process;
};
