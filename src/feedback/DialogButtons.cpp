#include "feedback/DialogButtons.h"

#include <QAbstractButton>

bool isOkOrApply(const QAbstractButton* button)
{
    const QString text = button->text();
    return text == QLatin1String("&OK") || text == QLatin1String("OK") || text == QLatin1String("&Apply") ||
           text == QLatin1String("Apply");
}

bool isSave(const QAbstractButton* button)
{
    const QString text = button->text();
    return text == QLatin1String("&Save") || text == QLatin1String("Save");
}
