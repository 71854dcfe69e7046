#pragma once

#include "tools/savedata/SaveDataLines.h"

#include <QDialog>

#include <memory>
#include <vector>

class OutputFile;
class QAbstractButton;
class QCheckBox;

namespace Ui {
class WindowSaveData;
}

/// Writes a snapshot of the display stream to a text file: the operator ticks the signals, gives a comment, a
/// path and a number of samples. Each press of Save reads a fresh block; the write is one blocking call.
///
/// A stream that cannot be read saves zeros without a message, and a file that cannot be opened is reported as saved. A
/// write that fails gives a message, and leaves the older file as it was.
class WindowSaveData : public QDialog
{
    Q_OBJECT

public:
    explicit WindowSaveData(QWidget* parent = nullptr);
    ~WindowSaveData() override;

    QString fileHeader();
    /// Titles of what channelEnabled holds.
    QString columnHeader();
    /// One line of what channelEnabled holds. @param index of the record in its block
    QString dataRow(const DisplayRecord* record, int index);

private slots:
    void saveData(QAbstractButton* button);
    void getPath();

private:
    struct Box
    {
        const StreamSignal* signal;
        QCheckBox* widget;
    };

    void makeCheckBoxes();
    void placeCheckBoxes();
    void readChannels();
    bool write(OutputFile& file, const DisplayRecord* block);

    std::unique_ptr<Ui::WindowSaveData> ui;
    std::vector<Box> boxes; ///< in the order of channelEnabled
    bool channelEnabled[save_data::channelCount] = {};
};
