#include "support/Operator.h"

#include <QAbstractButton>
#include <QCoreApplication>
#include <QDialogButtonBox>
#include <QTimer>
#include <QTimerEvent>

void operate::press(QAbstractButton* button)
{
    button->click();
}

void operate::press(QDialogButtonBox* box, const QString& text)
{
    for (QAbstractButton* button : box->buttons()) {
        if (button->text().remove(QLatin1Char('&')) == text) {
            button->click();
            return;
        }
    }
    missing(box, qPrintable(text));
}

void operate::fire(QTimer* timer)
{
    QTimerEvent event(timer->timerId());
    QCoreApplication::sendEvent(timer, &event);
}

void operate::fireTimers(QObject* root)
{
    for (QTimer* timer : root->findChildren<QTimer*>()) {
        if (timer->isActive())
            fire(timer);
    }
}

QStringList operate::lines(const std::vector<std::string>& texts)
{
    QStringList list;
    for (const std::string& text : texts)
        list.append(QString::fromStdString(text));
    return list;
}

void operate::missing(const QObject* root, const char* name)
{
    qFatal("%s has no child \"%s\"", root->metaObject()->className(), name);
}
