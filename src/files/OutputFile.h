#pragma once

#include <QIODevice>
#include <QString>

#include <sys/types.h>

/// A file that is written whole or not at all: whatever fails, the file that was there before stands as it was, and
/// nothing else is left in its folder.
///
/// A new file and one that is replaced are written beside, under a name of their own, and renamed at the end. Owner,
/// group and mode of a replaced file stay where the process may set them; a link stays a link. An appended file gets
/// its old length back after a failure. A device or a pipe takes the bytes as they come: a pipe that nobody reads
/// cannot be opened, and one whose reader takes nothing for two seconds fails.
///
/// On one thread. SIGPIPE must be ignored.
class OutputFile : public QIODevice
{
public:
    enum Mode
    {
        Replace,
        Append ///< makes a file that is not there
    };

    OutputFile(const QString& path, Mode mode);
    /// Gives up what was not committed.
    ~OutputFile() override;

    /// @return false if the target can neither be opened for writing nor made. Other failures show at commit().
    bool begin();
    /// Brings everything to the disk and under the target's name. @return false after any failure since begin(); then
    /// the old file stands
    bool commit();
    /// The path as it was given.
    QString path() const { return givenPath; }
    /// The system's words for the first failure since begin().
    QString reason() const { return qt_error_string(failure); }

    bool isSequential() const override { return true; }

protected:
    qint64 readData(char*, qint64) override { return -1; }
    qint64 writeData(const char* data, qint64 size) override;

private:
    enum Way
    {
        Beside,   ///< in a file of its own until commit()
        AtTheEnd, ///< behind the old content of the target
        Through   ///< to a device or a pipe, which keeps nothing
    };

    bool openBeside(mode_t permissions);
    void useOpenTarget();
    bool putInPlace();
    void giveUp();
    bool writeAll(const char* data, qint64 size);
    bool waitForReader();
    bool noteUnless(bool success);
    bool closeDescriptor();

    const QString givenPath;
    const Mode mode;
    Way way = Beside;
    QByteArray target;     ///< behind links
    QByteArray besideName; ///< of the file beside, while there is one
    off_t oldLength = 0;   ///< bytes
    int descriptor = -1;
    int failure = 0; ///< errno of the first failure
};
