#include "hardware/SettingsLock.h"

#include <QDateTime>
#include <QFile>

#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr int patienceMs = 2000;

/// Tells one lock from the next one of the same name.
struct LockIdentity
{
    ino_t file = 0;
    timespec made = {};

    bool operator==(const LockIdentity& other) const
    {
        return file == other.file && made.tv_sec == other.made.tv_sec && made.tv_nsec == other.made.tv_nsec;
    }
};

LockIdentity identityOf(const QString& path)
{
    struct stat lock = {};
    return ::stat(QFile::encodeName(path).constData(), &lock) == 0 ? LockIdentity{lock.st_ino, lock.st_mtim}
                                                                   : LockIdentity();
}

} // namespace

SettingsLock::SettingsLock(const QString& settingsPath) : file(settingsPath + QStringLiteral(".lock"))
{
    // Its age says nothing: the owner may be stopped, and go on.
    file.setStaleLockTime(0);
    if (file.tryLock(0) || file.error() != QLockFile::LockFailedError)
        return;
    takeAwayIfOrphaned();

    static LockIdentity waitedForInVain;
    const LockIdentity present = identityOf(settingsPath + QStringLiteral(".lock"));
    const bool isKnown = present == waitedForInVain;
    if (!file.tryLock(isKnown ? 0 : patienceMs))
        waitedForInVain = present;
}

/// Qt takes away the lock of a process that is dead by itself, but not one that names nobody, and not one that this
/// process could not remove. Both stay where somebody has the file itself locked.
void SettingsLock::takeAwayIfOrphaned()
{
    qint64 owner = 0;
    QString host;
    QString application;
    if (!file.getLockInfo(&owner, &host, &application) || owner == ::getpid())
        file.removeStaleLockFile();
}
