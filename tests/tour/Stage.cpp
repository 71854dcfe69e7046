#include "tour/Stage.h"

#include "support/Operator.h"

#include <QAction>
#include <QLabel>
#include <QLineEdit>

using operate::find;

QWidget* Stage::open(const char* action, const char* className) const
{
    const QString entry = find<QAction>(hand.mainWindow(), action)->text().remove(QLatin1Char('&')).trimmed();
    findings.holds(QStringLiteral("menu ") + entry, hand.choose(action));
    return hand.widget(className);
}

double Stage::statistic(const char* field) const
{
    return hand.number(find<QLineEdit>(hand.widget("WidgetFeedbackControl"), field));
}

QString Stage::heartbeat() const
{
    const QWidget* panel = hand.widget("WidgetFeedbackControl");
    const QString colour = camera.colourOf(find<QWidget>(panel, "heartbeatLed"));
    return QStringLiteral("%1, %2 lamp").arg(find<QLabel>(panel, "heartbeatLabel")->text(), colour);
}
