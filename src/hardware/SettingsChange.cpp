#include "hardware/SettingsChange.h"

#include "files/OutputFile.h"
#include "hardware/SettingsPath.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <optional>
#include <sys/stat.h>

namespace {

/// A folder of files in memory, where nothing waits for a disk; otherwise where temporary files are.
QString scratchTemplate()
{
    const QString memory = QStringLiteral("/dev/shm");
    return (QFileInfo(memory).isWritable() ? memory : QDir::tempPath()) + QStringLiteral("/kora-settings-XXXXXX");
}

/// All bytes of a regular file; nothing unless all of them could be read.
std::optional<QByteArray> wholeContent(const QString& path)
{
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QByteArray content = file.readAll();
    return file.error() == QFileDevice::NoError ? std::optional<QByteArray>(content) : std::nullopt;
}

bool writeWhole(const QString& path, const QByteArray& content)
{
    OutputFile file(path, OutputFile::Replace);
    return file.begin() && file.write(content) == content.size() && file.commit();
}

/// Moment of the last change of a file, whole milliseconds of the day's clock; negative without a file.
qint64 changedMs(const QString& path)
{
    const QFileInfo file(path);
    return file.exists() ? file.lastModified().toMSecsSinceEpoch() : -1;
}

/// QSettings takes a file of the same length and time for the one that it has read, and two changes may come within one
/// tick of the file system's clock. Each change therefore gets a later time than the one before.
void makeLaterThan(qint64 beforeMs, const QString& path)
{
    constexpr qint64 perSecond = 1000;
    constexpr qint64 nanosecondsPerMs = 1000000;
    if (changedMs(path) > beforeMs)
        return;
    const qint64 later = beforeMs + 1;
    const timespec moment = {time_t(later / perSecond), long(later % perSecond * nanosecondsPerMs)};
    const timespec times[2] = {moment, moment};
    ::utimensat(AT_FDCWD, QFile::encodeName(path).constData(), times, 0);
}

} // namespace

SettingsChange::SettingsChange() : path(settingsPath()), folder(scratchTemplate())
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    lock = std::make_unique<SettingsLock>(path);
    isPossible = lock->isHeld() && folder.isValid() && copyPresentFile();
    copy = std::make_unique<QSettings>(copyPath(), QSettings::IniFormat);
}

SettingsChange::~SettingsChange()
{
    while (!copy->group().isEmpty())
        copy->endGroup();
    const int keys = copy->allKeys().size();
    copy->sync();
    if (!isPossible)
        return;
    const std::optional<QByteArray> changed = wholeContent(copyPath());
    const qint64 beforeMs = changedMs(path);
    if (changed && *changed != present && isWhole(*changed, keys) && writeWhole(path, *changed))
        makeLaterThan(beforeMs, path);
}

/// QSettings does not tell when the last bytes could not be written: then lines are missing, or the end of the last
/// one.
bool SettingsChange::isWhole(const QByteArray& written, int keys) const
{
    // Under another name, since QSettings remembers what it meant to write under this one.
    const QString otherName = folder.filePath(QStringLiteral("written.ini"));
    return keys == 0 || (written.endsWith('\n') && QFile::link(copyPath(), otherName) &&
                         QSettings(otherName, QSettings::IniFormat).allKeys().size() >= keys);
}

/// Without a folder, a path that nothing can be written to.
QString SettingsChange::copyPath() const
{
    return folder.isValid() ? folder.filePath(QStringLiteral("settings.ini"))
                            : QStringLiteral("/dev/null/settings.ini");
}

bool SettingsChange::copyPresentFile()
{
    if (!QFileInfo::exists(path))
        return true;
    const std::optional<QByteArray> content = wholeContent(path);
    present = content.value_or(QByteArray());
    return content && writeWhole(copyPath(), present);
}
