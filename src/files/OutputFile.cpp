#include "files/OutputFile.h"

#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr int readerPatienceMs = 2000;
constexpr int mostLinks = 40;
constexpr mode_t everyPermission = 07777;
/// As far as the process's mask lets it.
constexpr mode_t openToAll = 0666;
constexpr mode_t openToOwner = 0600;

/// Repeats a system call for as long as signals interrupt it.
template <typename Call>
auto uninterrupted(Call call)
{
    auto result = call();
    while (result < 0 && errno == EINTR)
        result = call();
    return result;
}

QString behindLinks(const QString& path)
{
    QFileInfo info(path);
    for (int link = 0; info.isSymLink() && link < mostLinks; ++link)
        info.setFile(info.symLinkTarget());
    return info.filePath();
}

/// A name of the same folder, short whatever the length of the target's own.
QByteArray nameBeside(const QByteArray& target)
{
    const QString number = QString::number(QRandomGenerator::global()->generate(), 36);
    return QFile::encodeName(QFileInfo(QFile::decodeName(target)).path() + QStringLiteral("/.kora-") + number);
}

/// As far as the process may: who may not give a file away keeps its group at least. @return whether all was kept
bool takeAttributes(int descriptor, const struct stat& model)
{
    const bool isOwned = ::fchown(descriptor, model.st_uid, model.st_gid) == 0;
    const bool isGrouped = isOwned || ::fchown(descriptor, uid_t(-1), model.st_gid) == 0;
    // Last, since a change of the owner takes permissions away.
    return ::fchmod(descriptor, model.st_mode & everyPermission) == 0 && isOwned && isGrouped;
}

} // namespace

OutputFile::OutputFile(const QString& path, Mode writeMode) : givenPath(path), mode(writeMode) {}

OutputFile::~OutputFile()
{
    giveUp();
}

bool OutputFile::begin()
{
    // A pipe without a reader is refused instead of waited for. What is going to be replaced must let itself be opened
    // too, as if it were written in its place.
    const int flags = O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC | (mode == Append ? O_APPEND : 0);
    const QByteArray given = QFile::encodeName(givenPath);
    descriptor = uninterrupted([&] { return ::open(given.constData(), flags); });
    const bool isMissing = descriptor < 0 && errno == ENOENT && !QFileInfo(givenPath).fileName().isEmpty();
    if (descriptor < 0 && !isMissing)
        return false;
    target = QFile::encodeName(behindLinks(givenPath));
    if (!isMissing)
        useOpenTarget();
    else if (!openBeside(openToAll))
        return false;
    return open(WriteOnly | Unbuffered);
}

void OutputFile::useOpenTarget()
{
    struct stat old = {};
    if (!noteUnless(::fstat(descriptor, &old) == 0))
        return;
    oldLength = old.st_size;
    if (!S_ISREG(old.st_mode)) {
        way = Through;
    } else if (mode == Append) {
        way = AtTheEnd;
    } else {
        closeDescriptor();
        if (noteUnless(openBeside(openToOwner)))
            takeAttributes(descriptor, old);
    }
}

bool OutputFile::openBeside(mode_t permissions)
{
    constexpr int flags = O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC;
    do {
        besideName = nameBeside(target);
        descriptor = uninterrupted([&] { return ::open(besideName.constData(), flags, permissions); });
    } while (descriptor < 0 && errno == EEXIST);
    if (descriptor < 0)
        besideName.clear();
    return descriptor >= 0;
}

bool OutputFile::commit()
{
    // What is no file knows of no disk, and refuses to be brought there.
    if (failure == 0 && way != Through)
        noteUnless(uninterrupted([this] { return ::fsync(descriptor); }) == 0);
    if (failure == 0 && way == Beside)
        noteUnless(putInPlace());
    if (failure != 0) {
        giveUp();
        return false;
    }
    // All is on the disk; nothing can be lost by closing.
    closeDescriptor();
    close();
    return true;
}

bool OutputFile::putInPlace()
{
    if (!closeDescriptor() ||
        uninterrupted([this] { return std::rename(besideName.constData(), target.constData()); }) != 0)
        return false;
    besideName.clear();
    return true;
}

void OutputFile::giveUp()
{
    if (descriptor >= 0 && way == AtTheEnd)
        noteUnless(uninterrupted([this] { return ::ftruncate(descriptor, oldLength); }) == 0);
    closeDescriptor();
    if (!besideName.isEmpty())
        ::unlink(besideName.constData());
    besideName.clear();
    close();
}

qint64 OutputFile::writeData(const char* data, qint64 size)
{
    return failure == 0 && noteUnless(writeAll(data, size)) ? size : -1;
}

bool OutputFile::writeAll(const char* data, qint64 size)
{
    while (size > 0) {
        const ssize_t written = uninterrupted([=] { return ::write(descriptor, data, std::size_t(size)); });
        if (written == 0)
            errno = EIO;
        if (written == 0 || (written < 0 && (errno != EAGAIN || !waitForReader())))
            return false;
        const ssize_t taken = std::max(written, ssize_t(0));
        data += taken;
        size -= taken;
    }
    return true;
}

bool OutputFile::waitForReader()
{
    pollfd pipe = {descriptor, POLLOUT, 0};
    const bool isReady = uninterrupted([&pipe] { return ::poll(&pipe, 1, readerPatienceMs); }) > 0;
    errno = EAGAIN;
    return isReady;
}

/// @param success of the system call that came last
bool OutputFile::noteUnless(bool success)
{
    if (!success && failure == 0)
        failure = errno;
    return success;
}

bool OutputFile::closeDescriptor()
{
    if (descriptor < 0)
        return true;
    const int result = ::close(descriptor);
    // Whatever the answer, the descriptor is gone.
    descriptor = -1;
    return result == 0 || errno == EINTR;
}
