#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <memory>

/// A file of the program that is written, through the window that writes it, on the double. The file stands in a folder
/// of its own.
class Writer
{
public:
    explicit Writer(const QString& folder, const char* fileName);
    virtual ~Writer() = default;
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;

    QString path() const { return filePath; }
    /// What stands in the file before; null where there is none.
    virtual QByteArray oldContent() const { return QByteArrayLiteral("older\n"); }
    /// Brings the file to its old state.
    void putOld() const;
    /// Writes the file. Message boxes and file dialogs must be answered.
    virtual void save() = 0;
    /// Whether a failure is told at all.
    virtual bool tells() const { return true; }
    /// What the window says of the save beside message boxes.
    virtual QString status() const { return QString(); }

private:
    const QString filePath;
};

/// Names of all writers.
QStringList writerNames();
std::unique_ptr<Writer> makeWriter(const QString& name, const QString& folder);
/// Rows of a saved measurement, 17 values each. Many by default.
void setSavedRows(int rows);
