#pragma once

#include <QCoreApplication>
#include <QProcess>
#include <QProcessEnvironment>
#include <QStringList>

/// What kora-sim said and how it ended.
struct ConsoleRun
{
    int status;
    QString output;
    QString error;

    /// Whether it ended as one that was told something wrong: one line, and nothing else.
    bool isRefusal(int wantedStatus, const QString& words) const
    {
        return status == wantedStatus && output.isEmpty() && error.startsWith(QLatin1String("kora-sim: ")) &&
               error.count(QLatin1Char('\n')) == 1 && error.endsWith(QLatin1Char('\n')) && error.contains(words);
    }
    QByteArray described() const
    {
        return QStringLiteral("status %1\n%2%3").arg(status).arg(output, error).toLocal8Bit();
    }
};

/// A command for the installation that this process works on: its own, by the process, or a served one, which the
/// environment names to the console, too.
inline QStringList forThisInstallation(const QStringList& words)
{
    if (qEnvironmentVariable("KORA_SIMULATION", QStringLiteral("own")) != QLatin1String("own"))
        return words;
    return QStringList{QStringLiteral("--pid"), QString::number(QCoreApplication::applicationPid())} + words;
}

/// Runs kora-sim to its end.
/// @param runtimeFolder  for XDG_RUNTIME_DIR; empty for that of this process
inline ConsoleRun runConsole(const QStringList& arguments, const QString& runtimeFolder = QString())
{
    QProcess console;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    if (!runtimeFolder.isEmpty()) {
        environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), runtimeFolder);
        environment.remove(QStringLiteral("KORA_SIMULATION"));
    }
    console.setProcessEnvironment(environment);
    console.start(QStringLiteral(KORA_CONSOLE), arguments);
    const bool ended = console.waitForFinished() && console.exitStatus() == QProcess::NormalExit;
    return {ended ? console.exitCode() : -1, QString::fromUtf8(console.readAllStandardOutput()),
            QString::fromUtf8(console.readAllStandardError())};
}
