#include "app/RandomHand.h"

#include "app/Dice.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAbstractSlider>
#include <QAbstractSpinBox>
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QMenu>
#include <QPointer>
#include <QTabBar>
#include <QTreeWidget>
#include <QWheelEvent>
#include <QtTest>

namespace {

constexpr const char* texts[] = {"",
                                 "0",
                                 "1",
                                 "-1",
                                 "3",
                                 "7.5",
                                 "7,5",
                                 "100",
                                 "1000",
                                 "1001",
                                 "0.1",
                                 "500",
                                 "-12.75",
                                 "1e3",
                                 "1e308",
                                 "-1e308",
                                 "999999999",
                                 "nan",
                                 "inf",
                                 ".",
                                 "-",
                                 "0x10",
                                 "user",
                                 "admin",
                                 "cruise",
                                 "2147483648",
                                 "a text of more than thirty-two letters for short fields",
                                 "\xc3\xa4\xc3\xb6\xc2\xb5",
                                 "50%",
                                 "%1 %2",
                                 "measured.csv"};

constexpr int keys[] = {Qt::Key_Tab,       Qt::Key_Backtab,  Qt::Key_Return, Qt::Key_Enter, Qt::Key_Escape,
                        Qt::Key_Space,     Qt::Key_Up,       Qt::Key_Down,   Qt::Key_Left,  Qt::Key_Right,
                        Qt::Key_PageUp,    Qt::Key_PageDown, Qt::Key_Home,   Qt::Key_End,   Qt::Key_Delete,
                        Qt::Key_Backspace, Qt::Key_A,        Qt::Key_C,      Qt::Key_V,     Qt::Key_Z,
                        Qt::Key_0,         Qt::Key_9,        Qt::Key_Minus,  Qt::Key_Comma, Qt::Key_Period,
                        Qt::Key_F,         Qt::Key_S,        Qt::Key_H,      Qt::Key_F1};

constexpr int dragSteps = 4;

} // namespace

QString RandomHand::text()
{
    return QString::fromUtf8(dice.pick(texts));
}

QPoint RandomHand::spotOn(const QWidget* widget)
{
    return QPoint(dice.below(widget->width()), dice.below(widget->height()));
}

Qt::KeyboardModifiers RandomHand::modifiers()
{
    constexpr Qt::KeyboardModifier kinds[] = {Qt::ShiftModifier, Qt::ControlModifier, Qt::AltModifier};
    return dice.oneIn(6) ? Qt::KeyboardModifiers(dice.pick(kinds)) : Qt::NoModifier;
}

Qt::MouseButton RandomHand::mouseButton()
{
    constexpr Qt::MouseButton others[] = {Qt::RightButton, Qt::MiddleButton};
    return dice.oneIn(6) ? dice.pick(others) : Qt::LeftButton;
}

void RandomHand::turnWheel(QWidget* widget)
{
    const QPointF spot = spotOn(widget);
    const QPoint turn(0, dice.between(-8, 8) * 120);
    QWheelEvent event(spot, widget->mapToGlobal(spot.toPoint()), QPoint(), turn, Qt::NoButton, modifiers(),
                      Qt::NoScrollPhase, false);
    QApplication::sendEvent(widget, &event);
}

void RandomHand::drag(QWidget* widget)
{
    const QPointer<QWidget> alive = widget;
    const Qt::MouseButton button = mouseButton();
    const Qt::KeyboardModifiers held = modifiers();
    QTest::mousePress(widget, button, held, spotOn(widget));
    for (int step = 0; step < dragSteps && alive; ++step) {
        const QPoint spot = spotOn(widget);
        QMouseEvent move(QEvent::MouseMove, spot, widget->mapToGlobal(spot), Qt::NoButton, button, held);
        QApplication::sendEvent(widget, &move);
    }
    if (alive)
        QTest::mouseRelease(widget, button, held, spotOn(widget));
}

void RandomHand::pressAnyKey(QWidget* widget)
{
    QTest::keyClick(widget, Qt::Key(dice.pick(keys)), modifiers());
}

void RandomHand::fill(QLineEdit* field)
{
    const QPointer<QLineEdit> alive = field;
    field->setFocus();
    if (dice.oneIn(3)) {
        pressAnyKey(field);
        return;
    }
    field->selectAll();
    if (!field->isReadOnly())
        field->insert(text());
    if (dice.oneIn(2) && alive)
        QTest::keyClick(field, Qt::Key_Return);
}

void RandomHand::choose(QComboBox* box)
{
    const QPointer<QComboBox> alive = box;
    if (dice.oneIn(5)) {
        turnWheel(box);
        return;
    }
    const Qt::Key key = dice.oneIn(2) ? Qt::Key_Down : Qt::Key_Up;
    for (int steps = dice.between(1, 6); steps > 0 && alive; --steps)
        QTest::keyClick(box, key);
}

void RandomHand::touchWithMouse(QWidget* widget)
{
    const QPointer<QWidget> alive = widget;
    switch (dice.below(5)) {
    case 0:
        turnWheel(widget);
        break;
    case 1:
        QTest::mouseDClick(widget, mouseButton(), modifiers(), spotOn(widget));
        break;
    case 2:
        // Text is not dragged about: that would wait for a mouse that this operator does not have.
        if (!widget->inherits("QTextEdit") && !widget->parentWidget()->inherits("QTextEdit"))
            drag(widget);
        break;
    case 3:
        pressAnyKey(widget);
        break;
    default:
        QTest::mouseClick(widget, mouseButton(), modifiers(), spotOn(widget));
        break;
    }
    if (alive && dice.oneIn(8))
        pressAnyKey(widget);
}

void RandomHand::answerMenu(QMenu* menu)
{
    const QList<QAction*> entries = menu->actions();
    QAction* entry = entries.isEmpty() ? nullptr : entries.at(dice.below(entries.size()));
    menu->close();
    if (entry && entry->isEnabled() && !entry->menu() && dice.oneIn(2))
        entry->trigger();
}

QString RandomHand::touch(QWidget* widget)
{
    const QString what = QLatin1String(widget->metaObject()->className()) + QLatin1Char(' ') + widget->objectName();
    if (auto* button = qobject_cast<QAbstractButton*>(widget)) {
        button->click();
    } else if (auto* box = qobject_cast<QComboBox*>(widget)) {
        choose(box);
    } else if (auto* spinBox = qobject_cast<QAbstractSpinBox*>(widget)) {
        if (dice.oneIn(2))
            spinBox->stepBy(dice.between(-20, 20));
        else
            turnWheel(spinBox);
    } else if (auto* field = qobject_cast<QLineEdit*>(widget)) {
        fill(field);
    } else if (auto* slider = qobject_cast<QAbstractSlider*>(widget)) {
        slider->triggerAction(QAbstractSlider::SliderAction(dice.between(1, 6)));
    } else if (auto* tabs = qobject_cast<QTabBar*>(widget)) {
        tabs->setCurrentIndex(dice.below(tabs->count()));
    } else if (auto* tree = qobject_cast<QTreeWidget*>(widget); tree && tree->topLevelItemCount() > 0) {
        QTreeWidgetItem* item = tree->topLevelItem(dice.below(tree->topLevelItemCount()));
        item->setSelected(dice.oneIn(2));
        item->setCheckState(0, dice.oneIn(2) ? Qt::Checked : Qt::Unchecked);
    } else {
        touchWithMouse(widget);
    }
    return what;
}
