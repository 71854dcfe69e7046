#include "support/MessageBoxes.h"

#include <QApplication>
#include <QEvent>
#include <QPointer>
#include <QPushButton>
#include <QTimer>

MessageBoxes::MessageBoxes(QMessageBox::StandardButton answer) : answer(answer)
{
    qApp->installEventFilter(this);
}

bool MessageBoxes::eventFilter(QObject* object, QEvent* event)
{
    auto* box = qobject_cast<QMessageBox*>(object);
    if (box && event->type() == QEvent::Show) {
        kept.append({box->windowTitle(), box->text(), box->icon(), box->standardButtons(),
                     box->parentWidget() != nullptr, box->textFormat()});
        const QPointer<QMessageBox> shown = box;
        const QMessageBox::StandardButton button = answer;
        QTimer::singleShot(0, this, [shown, button] {
            if (!shown)
                return;
            if (QAbstractButton* answering = shown->button(button))
                answering->click();
            else
                shown->done(0);
        });
    }
    return QObject::eventFilter(object, event);
}
