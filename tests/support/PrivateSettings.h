#pragma once

#include <QProcess>
#include <QStandardPaths>
#include <QStringList>

/// The built program with a settings folder of its own in the place of the system's: in a mount namespace by bwrap(1),
/// so that neither the settings of the machine nor those of another test are touched.
namespace private_settings {

/// False where user namespaces are refused or bwrap is missing.
inline bool isPossible()
{
    constexpr int startMs = 30000;
    const QString bwrap = QStandardPaths::findExecutable(QStringLiteral("bwrap"));
    QProcess probe;
    probe.start(bwrap,
                {QStringLiteral("--dev-bind"), QStringLiteral("/"), QStringLiteral("/"), QStringLiteral("true")});
    return !bwrap.isEmpty() && probe.waitForFinished(startMs) && probe.exitCode() == 0;
}

/// Starts a program behind a namespace that shows `folder` as the settings folder.
/// @param options more options of bwrap, such as --setenv NAME VALUE
inline void start(QProcess& process, const QString& folder, const QStringList& options, const QString& program,
                  const QStringList& arguments = {})
{
    process.start(QStringLiteral("bwrap"),
                  QStringList({QStringLiteral("--dev-bind"), QStringLiteral("/"), QStringLiteral("/"),
                               QStringLiteral("--tmpfs"), QStringLiteral("/opt"), QStringLiteral("--bind"), folder,
                               QStringLiteral("/opt/Zenthic/KORALINK")}) +
                      options + QStringList(program) + arguments);
}

} // namespace private_settings
