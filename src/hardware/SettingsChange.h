#pragma once

#include "hardware/SettingsLock.h"

#include <QSettings>
#include <QTemporaryDir>

#include <memory>

/// One change of the settings file, from the construction, which reads the file, to the destruction, which puts the
/// changed file in its place. GUI thread.
///
/// The change is made on a copy in memory, for three reasons: QSettings waits without limit for the lock of another
/// process, it takes a file that it could not read for an empty one and loses what stood there, and it keeps a change
/// that it could not write and writes it at some later time. Here such a change is lost without a word, and the file
/// stays as it was; owner, group and mode stay where the process may set them.
class SettingsChange
{
public:
    SettingsChange();
    ~SettingsChange();
    SettingsChange(const SettingsChange&) = delete;
    SettingsChange& operator=(const SettingsChange&) = delete;

    QSettings& settings() { return *copy; }

private:
    QString copyPath() const;
    bool copyPresentFile();
    bool isWhole(const QByteArray& written, int keys) const;

    const QString path;
    const QTemporaryDir folder; ///< of the copy
    std::unique_ptr<SettingsLock> lock;
    QByteArray present; ///< content before the change
    std::unique_ptr<QSettings> copy;
    bool isPossible = false; ///< the lock is held, and the copy is good
};
