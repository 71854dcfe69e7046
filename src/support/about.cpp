#include "support/about.h"

#include "app/Globals.h"

#include "support/SharpPicture.h"
#include "ui_about.h"

#include <QStyle>

about::about(QWidget* parent) : QDialog(parent), ui(std::make_unique<Ui::about>())
{
    ui->setupUi(this);
    setWindowIcon(style()->standardIcon(QStyle::SP_MessageBoxInformation));
    ui->label->setPixmap(sharpPicture(QStringLiteral(":/qss/images/Logo_Zenthic.png"), devicePixelRatioF()));
    ui->label_2->setTextFormat(Qt::RichText);
    ui->label_2->setText(QLatin1String("Zenthic KORA Local User Interface<br>v") + QLatin1String(guiVersion));
    // Addresses under the reserved domain "example", which belong to nobody: the maker's own take their
    // place.
    ui->label_3->setTextFormat(Qt::RichText);
    ui->label_3->setText(QStringLiteral("Zenthic Instruments<br>"
                                        "<a href=\"https://www.zenthic.example\">www.zenthic.example</a><br>"
                                        "<a href=\"mailto:info@zenthic.example\">info@zenthic.example</a>"));
    ui->label_3->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::LinksAccessibleByMouse |
                                         Qt::LinksAccessibleByKeyboard);
    ui->label_3->setOpenExternalLinks(true);
    ui->curVerTSLineEdit->setText(hwTimestampText);
    ui->curVerSWLineEdit->setText(swVersionText);
    ui->curPIDverLineEdit->setText(pidVersionText);
}

about::~about() = default;
