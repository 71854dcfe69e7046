#include "support/PlainTextBoxes.h"

#include <QApplication>
#include <QEvent>
#include <QMessageBox>

PlainTextBoxes::PlainTextBoxes()
{
    qApp->installEventFilter(this);
}

bool PlainTextBoxes::eventFilter(QObject* object, QEvent* event)
{
    if (event->type() == QEvent::Show) {
        if (auto* box = qobject_cast<QMessageBox*>(object))
            box->setTextFormat(Qt::PlainText);
    }
    return QObject::eventFilter(object, event);
}
