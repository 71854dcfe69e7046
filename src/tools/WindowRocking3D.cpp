#include "tools/WindowRocking3D.h"

#include "app/Globals.h"
#include "files/OutputFile.h"
#include "hardware/MailboxComm.h"
#include "stream/DeviceFile.h"
#include "stream/DeviceRecords.h"
#include "support/FieldGuard.h"
#include "support/PlainTextBoxes.h"
#include "tools/Pause.h"
#include "tools/PendingEvents.h"
#include "ui_WindowRocking3D.h"

#include <QDateTime>
#include <QFileDialog>
#include <QHostInfo>
#include <QPointer>
#include <QTextStream>

#include <algorithm>
#include <fcntl.h>

namespace {

constexpr int readingsPerPoint = 10;

void setOutputs(DeviceFile& outputUnit, double first, double second)
{
    OutputRecord record;
    record.volts[0] = first;
    record.volts[1] = second;
    outputUnit.control(requestSetOutputs, &record);
}

/// Mean of the sum of the four currents over ten readings, each after a tenth of the step time. The running
/// sum is a float: each addition is made in double precision and rounded once.
float averagedSum(DeviceFile& amplifier, unsigned long stepMicroseconds)
{
    float sum = 0;
    for (int reading = 0; reading < readingsPerPoint; ++reading) {
        pauseMicroseconds(stepMicroseconds / readingsPerPoint);
        CurrentRecord currents = {};
        amplifier.control(requestCurrents, &currents);
        for (double amps : currents.amps)
            sum = float(double(sum) + amps);
    }
    return sum / readingsPerPoint;
}

} // namespace

WindowRocking3D::WindowRocking3D(QWidget* parent) : QDialog(parent), ui(std::make_unique<Ui::WindowRocking3D>())
{
    ui->setupUi(this);
    new FieldGuard(this);
    connect(ui->goButton, SIGNAL(released()), SLOT(startMeasurement()));
    connect(ui->stopButton, SIGNAL(released()), SLOT(stopMeasurement()));
    connect(ui->saveButton, SIGNAL(released()), SLOT(saveData()));
    connect(ui->buttonBox, SIGNAL(clicked(QAbstractButton*)), SLOT(stopMeasurement()));
    connect(ui->buttonBox, SIGNAL(accepted()), SLOT(accept()));
    connect(ui->buttonBox, SIGNAL(rejected()), SLOT(reject()));
    // Escape closes a dialog without a close event.
    connect(this, SIGNAL(rejected()), SLOT(stopMeasurement()));
}

WindowRocking3D::~WindowRocking3D() = default;

void WindowRocking3D::startMeasurement()
{
    if (walking)
        return;
    xStart = ui->xMinBox->value();
    xSpan = ui->xMaxBox->value() - ui->xMinBox->value();
    yStart = ui->yMinBox->value();
    ySpan = ui->yMaxBox->value() - ui->yMinBox->value();
    stepTimeMs = quint64(ui->timeBox->value());
    stopRequested = false;
    measure();
}

void WindowRocking3D::measure()
{
    DeviceFile amplifier(amplifierDevicePath[0], O_RDWR | O_SYNC);
    DeviceFile outputUnit(outputDevicePath, O_RDWR | O_SYNC);
    std::fill(std::begin(rawCurrent), std::end(rawCurrent), 0.0f);
    std::fill(std::begin(normalisedCurrent), std::end(normalisedCurrent), 0.0f);
    mailbox->setFBenable(0);
    mailbox->setOutputMux(0);
    const auto stepMicroseconds = static_cast<unsigned long>(stepTimeMs * 1000);

    const QPointer<WindowRocking3D> self(this);
    walking = true;
    for (int point = 0; point < grid_scan::points; ++point) {
        setOutputs(outputUnit, grid_scan::lineVolts(point / grid_scan::side, xStart, xSpan),
                   grid_scan::lineVolts(point % grid_scan::side, yStart, ySpan));
        pauseMicroseconds(stepMicroseconds);
        rawCurrent[point] = averagedSum(amplifier, stepMicroseconds);
        grid_scan::normalise(rawCurrent, normalisedCurrent);
        ui->graph3D->setData(normalisedCurrent, grid_scan::side, grid_scan::side);
        ui->graph3D->updateSoon();
        pauseMicroseconds(stepMicroseconds);
        if (!processPendingEvents(this) || stopRequested)
            break;
    }
    mailbox->setOutputMux(1);
    if (self)
        walking = false;
}

void WindowRocking3D::stopMeasurement()
{
    stopRequested = true;
}

void WindowRocking3D::closeEvent(QCloseEvent*)
{
    stopRequested = true;
}

QString WindowRocking3D::fileHeader() const
{
    // The capitals are no format letters: the files carry the two letters "DD" in place of the day.
    return grid_scan::header(QDateTime::currentDateTime().toString(QStringLiteral("hh:mm:ss DD.MM.yyyy")),
                             QHostInfo::localHostName());
}

void WindowRocking3D::saveData()
{
    const QString proposed = QStringLiteral("KORA_rock3D_") +
                             QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd_hh-mm-ss")) +
                             QStringLiteral(".csv");
    const QPointer<WindowRocking3D> self(this);
    const PlainTextBoxes plain;
    // Without a parent, so that the dialog outlives a window that is destroyed beneath it.
    const QString chosen = QFileDialog::getSaveFileName(nullptr, QStringLiteral("DialogTitle"), proposed,
                                                        QStringLiteral("CSV files (*.csv)"));
    if (!self || chosen.isEmpty())
        return;
    OutputFile file(chosen, OutputFile::Replace);
    if (!file.begin())
        return;
    QTextStream stream(&file);
    stream << fileHeader();
    grid_scan::writeRows(stream, {xStart, xSpan, yStart, ySpan}, rawCurrent);
    stream.flush();
    // Without a message also where this fails; an older file then stands.
    file.commit();
}
