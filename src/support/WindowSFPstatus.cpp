#include "support/WindowSFPstatus.h"

#include "app/Globals.h"
#include "hardware/MailboxComm.h"
#include "support/DeviceTable.h"

#include "ui_WindowSFPstatus.h"

#include <QHeaderView>
#include <QPixmap>
#include <QTimer>

namespace {

enum Row
{
    ImageRow,
    NameRow,
    SerialNumberRow,
    VersionRow,
    HardwareVersionRow
};

/// The four character codes last to first, joined by points.
QString moduleVersion(const char (&version)[4])
{
    QStringList codes;
    for (int i = 3; i >= 0; --i)
        codes.append(QString(QLatin1Char(version[i])));
    return codes.join(QLatin1Char('.'));
}

/// @param ratio pixels of the screen in one of the window
QPixmap modulePicture(const QString& code, qreal ratio)
{
    constexpr int side = 100;
    const QPixmap picture(deviceImage(code));
    if (picture.isNull())
        return picture;
    QPixmap scaled = picture.scaled(QSize(side, side) * ratio, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    scaled.setDevicePixelRatio(ratio);
    return scaled;
}

} // namespace

WindowSFPstatus::WindowSFPstatus(QWidget* parent) : QDialog(parent), ui(std::make_unique<Ui::WindowSFPstatus>())
{
    ui->setupUi(this);
    updateSFPdata();
    auto* timer = new QTimer(this);
    connect(timer, SIGNAL(timeout()), this, SLOT(updateSFPdata()));
    timer->start(1100);
}

WindowSFPstatus::~WindowSFPstatus() = default;

void WindowSFPstatus::updateSFPdata()
{
    // Takes the header items away too: the table shows plain row and column numbers from here on.
    ui->SFPsTable->clear();
    ui->SFPsTable->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    ui->SFPsTable->verticalHeader()->setSectionResizeMode(0, QHeaderView::Stretch);
    if (!isVisible())
        return;
    for (int port = 0; port < 4; ++port) {
        const SFPinfo& info = mailbox->sfpPorts()[port];
        if (info.deviceId != 0)
            fillColumn(port, info);
    }
}

void WindowSFPstatus::fillColumn(int port, const SFPinfo& info)
{
    const QString code = QString::asprintf("%04x", unsigned(info.deviceId));
    auto* image = new QTableWidgetItem;
    image->setData(Qt::DecorationRole, modulePicture(code, devicePixelRatioF()));
    ui->SFPsTable->setItem(ImageRow, port, image);
    ui->SFPsTable->setItem(NameRow, port, new QTableWidgetItem(deviceName(code)));
    ui->SFPsTable->setItem(SerialNumberRow, port, new QTableWidgetItem(QString::number(info.serialNumber)));
    ui->SFPsTable->setItem(VersionRow, port, new QTableWidgetItem(moduleVersion(info.version)));
    ui->SFPsTable->setItem(HardwareVersionRow, port, new QTableWidgetItem(QString::number(info.hwVersion)));
}
