#include "tools/DialogKeys.h"

#include <QDialog>
#include <QPushButton>

void detachEnterKey(QDialog* dialog)
{
    for (QPushButton* button : dialog->findChildren<QPushButton*>())
        button->setAutoDefault(false);
}
