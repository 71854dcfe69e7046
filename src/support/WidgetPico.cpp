#include "support/WidgetPico.h"

#include "app/Globals.h"
#include "hardware/MailboxComm.h"
#include "support/UnsentFields.h"

#include "ui_WidgetPico.h"

WidgetPico::WidgetPico(QWidget* parent)
    : QWidget(parent), ui(std::make_unique<Ui::WidgetPico>()), unsent(new UnsentFields(this))
{
    ui->setupUi(this);
    // The item's role of flags: an item without any is seen but cannot be picked.
    ui->rangeBox->setItemData(2, 0, Qt::UserRole - 1);
    unsent->watch(ui->rangeBox);
    setCurrents(0.0, 0.0, 0.0, 0.0);
    connect(ui->saveButton, SIGNAL(released()), this, SLOT(sendSettings()));
}

WidgetPico::~WidgetPico() = default;

void WidgetPico::setCurrents(double ch1, double ch2, double ch3, double ch4)
{
    ui->currentCh1Line->setText(QString::number(ch1, 'e', 5));
    ui->currentCh2Line->setText(QString::number(ch2, 'e', 5));
    ui->currentCh3Line->setText(QString::number(ch3, 'e', 5));
    ui->currentCh4Line->setText(QString::number(ch4, 'e', 5));
}

void WidgetPico::setCurrentsOld(bool old)
{
    for (ReadoutLineEdit* line : {ui->currentCh1Line, ui->currentCh2Line, ui->currentCh3Line, ui->currentCh4Line})
        line->setOld(old);
}

void WidgetPico::sendSettings()
{
    const QStringList ranges{QStringLiteral("0"), QStringLiteral("1"), QStringLiteral("AUTO")};
    mailbox->ionbarSetRange(ranges.indexOf(ui->rangeBox->currentText()), static_cast<unsigned char>(ionbarIndex));
    unsent->markSent();
}
