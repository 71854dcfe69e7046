#pragma once

#include <QLockFile>

/// The lock file beside the settings file, which every process that writes the settings with Qt respects. Taken in the
/// constructor where that is possible, released in the destructor. GUI thread.
///
/// A lock whose owner is dead, or that names no owner, is taken away. A living owner is waited for, 2 s at the most;
/// as long as the same lock stays after that, nobody waits for it again, so that a save of many settings does not take
/// as many waits.
class SettingsLock
{
public:
    explicit SettingsLock(const QString& settingsPath);

    bool isHeld() const { return file.isLocked(); }

private:
    void takeAwayIfOrphaned();

    QLockFile file;
};
