#include "faults/Writers.h"

#include "app/Globals.h"
#include "double/KoralinkDouble.h"
#include "feedback/WidgetFeedbackControl.h"
#include "logging/LogWindow.h"
#include "support/FileDialogs.h"
#include "support/MessageBoxes.h"
#include "support/Operator.h"
#include "support/ScratchSettings.h"
#include "support/World.h"
#include "tools/WindowFrequencyAnalysis.h"
#include "tools/WindowRocking3D.h"
#include "tools/WindowSaveData.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QToolButton>
#include <QTreeWidget>

using operate::find;
using operate::press;

namespace {

int savedRows = 400;

/// The settings, by the button that saves the outputs of the loops: one change, one write.
class SettingsWriter : public Writer
{
public:
    explicit SettingsWriter(const QString& folder) : Writer(folder, "config_koralink.ini")
    {
        scratch_settings::setPath(path());
        putOld();
        userLevel = 1;
        panel = std::make_unique<WidgetFeedbackControl>();
        find<QComboBox>(panel.get(), "positionXlfComboBox")->setCurrentIndex(3);
        find<QComboBox>(panel.get(), "positionYhfComboBox")->setCurrentIndex(0);
    }

    QByteArray oldContent() const override { return QByteArrayLiteral("[BPM1]\nScale_X=500\n\n[Library]\nown=text\n"); }
    void save() override { press(find<QPushButton>(panel.get(), "updateConfButton")); }
    bool tells() const override { return false; }

private:
    std::unique_ptr<WidgetFeedbackControl> panel;
};

class MeasurementWriter : public Writer
{
public:
    MeasurementWriter(const QString& folder, bool isThere, QMessageBox::StandardButton decision)
        : Writer(folder, "data.csv"), hasOldFile(isThere), answer(decision)
    {
        find<QLineEdit>(&window, "pathLineEdit")->setText(path());
        find<QSpinBox>(&window, "nrSampBox")->setValue(savedRows);
    }

    QByteArray oldContent() const override { return hasOldFile ? Writer::oldContent() : QByteArray(); }
    void save() override
    {
        const MessageBoxes boxes(answer);
        press(find<QDialogButtonBox>(&window, "buttonBox"), QStringLiteral("Save"));
    }
    QString status() const override { return find<QLabel>(&window, "statusLabel")->text(); }

private:
    const bool hasOldFile;
    const QMessageBox::StandardButton answer;
    WindowSaveData window;
};

class LogWriter : public Writer
{
public:
    explicit LogWriter(const QString& folder) : Writer(folder, "kept.log")
    {
        const QsLogging::LogMessage line(QStringLiteral("a line of the log"), QDateTime::currentDateTime(),
                                         QsLogging::InfoLevel);
        for (int count = 0; count < savedRows; ++count)
            QMetaObject::invokeMethod(&window, "addLogMessage", Qt::DirectConnection,
                                      Q_ARG(QsLogging::LogMessage, line));
    }

    void save() override
    {
        const FileDialogs dialogs(path());
        find<QToolButton>(&window, "toolButtonSave")->click();
    }

private:
    QsLogging::Window window;
};

class ExportWriter : public Writer
{
public:
    explicit ExportWriter(const QString& folder)
        : Writer(folder, "base_plot_x_x_0.csv"), chosen(folder + QStringLiteral("/base.csv"))
    {
        find<QLineEdit>(&window, "lengthLineEdit")->setText(QStringLiteral("20"));
        press(find<QPushButton>(&window, "StartSweepPushButton"));
        find<QTreeWidget>(&window, "plotsTree")->selectAll();
    }

    void save() override
    {
        const FileDialogs dialogs(chosen);
        press(find<QPushButton>(&window, "exportMeasPushButton"));
    }

private:
    const QString chosen;
    WindowFrequencyAnalysis window;
};

class SurfaceWriter : public Writer
{
public:
    explicit SurfaceWriter(const QString& folder) : Writer(folder, "rock.csv") {}

    void save() override
    {
        const FileDialogs dialogs(path());
        press(find<QPushButton>(&window, "saveButton"));
    }
    bool tells() const override { return false; }

private:
    WindowRocking3D window;
};

} // namespace

Writer::Writer(const QString& folder, const char* fileName)
    : filePath(folder + QLatin1Char('/') + QLatin1String(fileName))
{
}

void Writer::putOld() const
{
    QFile::remove(filePath);
    const QByteArray old = oldContent();
    QFile file(filePath);
    if (!old.isNull() && (!file.open(QIODevice::WriteOnly) || file.write(old) != old.size()))
        qFatal("no old file");
}

QStringList writerNames()
{
    return {QStringLiteral("settings"),
            QStringLiteral("measurement, new"),
            QStringLiteral("measurement, overwritten"),
            QStringLiteral("measurement, appended"),
            QStringLiteral("log"),
            QStringLiteral("frequency export"),
            QStringLiteral("surface")};
}

std::unique_ptr<Writer> makeWriter(const QString& name, const QString& folder)
{
    switch (writerNames().indexOf(name)) {
    case 0:
        return std::make_unique<SettingsWriter>(folder);
    case 1:
        return std::make_unique<MeasurementWriter>(folder, false, QMessageBox::Ok);
    case 2:
        return std::make_unique<MeasurementWriter>(folder, true, QMessageBox::Yes);
    case 3:
        return std::make_unique<MeasurementWriter>(folder, true, QMessageBox::No);
    case 4:
        return std::make_unique<LogWriter>(folder);
    case 5:
        return std::make_unique<ExportWriter>(folder);
    default:
        return std::make_unique<SurfaceWriter>(folder);
    }
}

void setSavedRows(int rows)
{
    savedRows = rows;
}
