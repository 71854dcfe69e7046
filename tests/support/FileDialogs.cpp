#include "support/FileDialogs.h"

#include <QApplication>
#include <QEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QPointer>
#include <QTimer>

FileDialogs::FileDialogs(const QString& answer) : answer(answer)
{
    qApp->installEventFilter(this);
}

bool FileDialogs::eventFilter(QObject* object, QEvent* event)
{
    auto* dialog = qobject_cast<QFileDialog*>(object);
    if (dialog && event->type() == QEvent::Show) {
        const QStringList selected = dialog->selectedFiles();
        kept.append({dialog->windowTitle(), dialog->nameFilters(),
                     selected.isEmpty() ? QString() : QFileInfo(selected.first()).fileName(), dialog->defaultSuffix()});
        const QPointer<QFileDialog> shown = dialog;
        const QString path = answer;
        const bool press = byButton;
        QTimer::singleShot(0, this, [shown, path, press] {
            if (!shown)
                return;
            if (!path.isEmpty())
                shown->selectFile(path);
            auto* plainDialog = static_cast<QDialog*>(shown.data());
            if (press)
                plainDialog->accept();
            else
                plainDialog->done(path.isEmpty() ? QDialog::Rejected : QDialog::Accepted);
        });
    }
    return QObject::eventFilter(object, event);
}
