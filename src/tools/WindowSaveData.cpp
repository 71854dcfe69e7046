#include "tools/WindowSaveData.h"

#include "app/Globals.h"
#include "files/FailedSave.h"
#include "files/OutputFile.h"
#include "stream/DeviceFile.h"
#include "stream/DeviceRecords.h"
#include "stream/DisplayRecord.h"
#include "support/FieldGuard.h"
#include "support/PlainTextBoxes.h"

#include "ui_WindowSaveData.h"

#include <QCheckBox>
#include <QDateTime>
#include <QFile>
#include <QFileDialog>
#include <QHostInfo>
#include <QMessageBox>
#include <QPointer>
#include <QTextStream>

#include <fcntl.h>

#include <map>
#include <vector>

namespace {

QString toolTipOf(const StreamSignal& signal)
{
    const bool micrometres = signal.scale != SignalScale::None;
    return QStringLiteral("%1, %2.").arg(QLatin1String(signal.meaning),
                                         micrometres ? QStringLiteral("µm") : QLatin1String(signal.quantity.unit));
}

} // namespace

WindowSaveData::WindowSaveData(QWidget* parent) : QDialog(parent), ui(std::make_unique<Ui::WindowSaveData>())
{
    // Before the form, since the Tab key goes through widgets as they were made.
    makeCheckBoxes();
    ui->setupUi(this);
    placeCheckBoxes();
    ui->buttonBox->addButton(QStringLiteral("Save"), QDialogButtonBox::ApplyRole);
    new FieldGuard(this);

    connect(ui->nrSampBox, SIGNAL(valueChanged(int)), ui->nrSampSlider, SLOT(setValue(int)));
    connect(ui->nrSampSlider, SIGNAL(valueChanged(int)), ui->nrSampBox, SLOT(setValue(int)));
    connect(ui->buttonBox, SIGNAL(clicked(QAbstractButton*)), this, SLOT(saveData(QAbstractButton*)));
    connect(ui->buttonBox, SIGNAL(accepted()), this, SLOT(accept()));
    connect(ui->buttonBox, SIGNAL(rejected()), this, SLOT(reject()));
    connect(ui->selectPathButton, SIGNAL(released()), this, SLOT(getPath()));
}

WindowSaveData::~WindowSaveData() = default;

void WindowSaveData::getPath()
{
    const QString proposal = QStringLiteral("KORA_meas_") +
                             QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd_hh-mm-ss")) +
                             QStringLiteral(".csv");
    const QPointer<WindowSaveData> self = this;
    const PlainTextBoxes plain;
    // The dialogs of this window have no parent, so that they outlive a window that is destroyed beneath
    // them.
    const QString path = QFileDialog::getSaveFileName(nullptr, QStringLiteral("Select filename..."), proposal,
                                                      QStringLiteral("CSV files (*.csv)"));
    if (self)
        ui->pathLineEdit->setText(path);
}

void WindowSaveData::saveData(QAbstractButton* button)
{
    if (!button->text().contains(QStringLiteral("Save")))
        return;

    // The snapshot is taken before any question is put to the operator.
    DeviceFile stream(streamDevicePath, O_RDONLY);
    std::vector<DisplayRecord> block(largestBlockRecords);
    stream.read(block.data(), largestBlockBytes);

    const QPointer<WindowSaveData> self = this;
    const PlainTextBoxes plain;
    if (ui->pathLineEdit->text().isEmpty())
        getPath();
    if (!self)
        return;

    const QString path = ui->pathLineEdit->text();
    OutputFile::Mode mode = OutputFile::Append;
    if (QFile::exists(path)) {
        const QMessageBox::StandardButton answer =
            QMessageBox::warning(nullptr, QStringLiteral("File exists"),
                                 QStringLiteral("File: %1 already exist.\n\nOverwrite file?\n\nYes - overwrite file\n"
                                                "No - append to existing file\nCancel - cancel writing to file")
                                     .arg(path),
                                 QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
        if (!self || (answer != QMessageBox::Yes && answer != QMessageBox::No))
            return;
        if (answer == QMessageBox::Yes)
            mode = OutputFile::Replace;
    }

    readChannels();
    OutputFile file(path, mode);
    // A file that cannot be opened is passed over without a word; only what was begun can fail.
    const bool isSaved = !file.begin() || write(file, block.data());
    ui->statusLabel->setText(QDateTime::currentDateTime().toString(QStringLiteral("hh:mm:ss")) +
                             (isSaved ? QStringLiteral(": Saved as: ") : QStringLiteral(": Not saved: ")) + path);
    if (!isSaved)
        tellFailedSave(file);
}

void WindowSaveData::makeCheckBoxes()
{
    for (const StreamSignal& signal : signalTable) {
        if (!signal.column.object)
            continue;
        auto* box = new QCheckBox(QLatin1String(signal.column.checkBox), this);
        box->setObjectName(QLatin1String(signal.column.object));
        box->setToolTip(toolTipOf(signal));
        box->setChecked(signal.column.box == BoxState::Checked);
        boxes.push_back({&signal, box});
    }
}

void WindowSaveData::placeCheckBoxes()
{
    std::map<SignalSource, int> rows;
    for (const Box& box : boxes)
        ui->channelLayout->addWidget(box.widget, rows[box.signal->source]++, int(box.signal->source));
}

void WindowSaveData::readChannels()
{
    for (std::size_t i = 0; i < boxes.size(); ++i)
        channelEnabled[i] = boxes[i].widget->isChecked();
}

bool WindowSaveData::write(OutputFile& file, const DisplayRecord* block)
{
    QTextStream text(&file);
    text << fileHeader() << columnHeader();
    for (int i = 0; i < ui->nrSampBox->value(); ++i)
        text << dataRow(block + i, i);
    text.flush();
    return file.commit();
}

QString WindowSaveData::fileHeader()
{
    // The capital letters stand in the line as they are; only "MM" and "yyyy" are replaced by Qt.
    const QString now = QDateTime::currentDateTime().toString(QStringLiteral("hh:mm:ss DD.MM.yyyy"));
    return QStringLiteral("Zenthic KORA\r\n"
                          "Kinetic Orbit Rectification Array\r\n"
                          "\r\n"
                          "Time and Date: ") +
           now + QStringLiteral("\r\nHost Name: ") + QHostInfo::localHostName() + QStringLiteral("\r\n\r\nComment: ") +
           ui->commentTextEdit->toPlainText() + QStringLiteral("\r\n\r\n");
}

QString WindowSaveData::columnHeader()
{
    return save_data::columnHeader(channelEnabled);
}

QString WindowSaveData::dataRow(const DisplayRecord* record, int index)
{
    return save_data::dataRow(*record, index, SAMP_FREQ, channelEnabled);
}
