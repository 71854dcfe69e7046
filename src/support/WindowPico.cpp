#include "support/WindowPico.h"

#include "app/Globals.h"
#include "hardware/MailboxComm.h"
#include "stream/Updater.h"
#include "support/FieldGuard.h"

#include "ui_WindowPico.h"

#include <QTimer>

WindowPico::WindowPico(QWidget* parent) : QDialog(parent), ui(std::make_unique<Ui::WindowPico>())
{
    ui->setupUi(this);
    new FieldGuard(this);
    ui->widgetPico0->ionbarIndex = 0;
    ui->widgetPico1->ionbarIndex = 1;
    // Only a single device hides the other one here; with none, both stay until the first refresh.
    if (mailbox->nrIonBars == 1) {
        ui->widgetPico1->hide();
        ui->label_ionbar1->hide();
    } else if (mailbox->nrIonBars == 2) {
        ui->widgetPico0->hide();
        ui->label_ionbar0->hide();
    }
    auto* timer = new QTimer(this);
    connect(timer, SIGNAL(timeout()), this, SLOT(refreshFields()));
    timer->start(970);
}

WindowPico::~WindowPico() = default;

void WindowPico::refreshFields()
{
    // Equality, not bits: a value that is no mask hides both.
    const int mask = mailbox->nrIonBars;
    refreshAmplifier(0, mask == 1 || mask == 3, ui->widgetPico0, ui->label_ionbar0);
    refreshAmplifier(1, mask == 2 || mask == 3, ui->widgetPico1, ui->label_ionbar1);
}

void WindowPico::refreshAmplifier(int index, bool present, WidgetPico* widget, QLabel* label)
{
    widget->setVisible(present);
    label->setVisible(present);
    if (!present)
        return;
    const AmplifierStatus& status = updater->ionbarStatus[index];
    widget->setCurrents(status.current(0), status.current(1), status.current(2), status.current(3));
    widget->setCurrentsOld(!updater->ionbarStatusRead[index]);
}
