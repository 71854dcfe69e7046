#include "tour/Hand.h"

#include "support/Operator.h"

#include <QAbstractButton>
#include <QAbstractSpinBox>
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDockWidget>
#include <QEventLoop>
#include <QLineEdit>
#include <QTimer>
#include <QtTest>

#include <qcustomplot.h>

#include <cmath>

using operate::find;

Hand::Hand(QWidget* mainWindow) : window(mainWindow) {}

QWidget* Hand::widget(const char* className) const
{
    QWidget* newest = nullptr;
    for (QWidget* candidate : window->findChildren<QWidget*>()) {
        if (QLatin1String(candidate->metaObject()->className()) == QLatin1String(className))
            newest = candidate;
    }
    if (!newest)
        operate::missing(window, className);
    return newest;
}

QDockWidget* Hand::dock(const QString& title) const
{
    for (QDockWidget* candidate : window->findChildren<QDockWidget*>()) {
        if (candidate->windowTitle() == title)
            return candidate;
    }
    operate::missing(window, qPrintable(title));
}

QCustomPlot* Hand::plot(const QString& dockTitle) const
{
    return find<QCustomPlot>(dock(dockTitle)->widget(), "graph");
}

void Hand::show(const QString& dockTitle) const
{
    dock(dockTitle)->raise();
    wait(1.5);
}

void Hand::turnTo(QWidget* panel, const QString& page) const
{
    for (QAbstractButton* title : panel->findChildren<QAbstractButton*>(QStringLiteral("qt_toolbox_toolboxbutton"))) {
        if (title->text() == page) {
            press(title);
            return;
        }
    }
    operate::missing(panel, qPrintable(page));
}

bool Hand::choose(const char* action) const
{
    auto* entry = find<QAction>(window, action);
    const bool usable = entry->isEnabled() && entry->isVisible();
    entry->trigger();
    wait(0.2);
    return usable;
}

void Hand::openClosedTool(const char* slot) const
{
    if (!QMetaObject::invokeMethod(window, slot, Qt::DirectConnection))
        operate::missing(window, slot);
    wait(0.2);
}

bool Hand::press(QAbstractButton* button) const
{
    const bool usable = button->isVisible() && button->isEnabled();
    QTest::mouseClick(button, Qt::LeftButton);
    return usable;
}

bool Hand::press(QDialogButtonBox* box, const QString& text) const
{
    for (QAbstractButton* button : box->buttons()) {
        if (button->text().remove(QLatin1Char('&')) == text)
            return press(button);
    }
    operate::missing(box, qPrintable(text));
}

void Hand::tick(QAbstractButton* box, bool ticked) const
{
    if (box->isChecked() == ticked)
        return;
    // A label may stretch the box: what is clicked is the square at its left.
    QTest::mouseClick(box, Qt::LeftButton, Qt::NoModifier, QPoint(8, box->height() / 2));
    if (box->isChecked() != ticked)
        operate::missing(box, "a tick that follows the mouse");
}

void Hand::type(QLineEdit* field, const QString& text) const
{
    field->setFocus();
    field->selectAll();
    QTest::keyClicks(field, text);
    QTest::keyClick(field, Qt::Key_Tab);
}

void Hand::type(QAbstractSpinBox* field, const QString& text) const
{
    field->setFocus();
    field->selectAll();
    QTest::keyClicks(field, text);
    QTest::keyClick(field, Qt::Key_Tab);
}

void Hand::select(QComboBox* list, const QString& text) const
{
    const int row = list->findText(text);
    if (row < 0)
        operate::missing(list, qPrintable(text));
    list->setFocus();
    while (list->currentIndex() != row)
        QTest::keyClick(list, list->currentIndex() < row ? Qt::Key_Down : Qt::Key_Up);
}

void Hand::click(QCustomPlot* plot, double x, double y) const
{
    const QPoint place(qRound(plot->xAxis->coordToPixel(x)), qRound(plot->yAxis->coordToPixel(y)));
    QTest::mouseClick(plot, Qt::LeftButton, Qt::NoModifier, place);
}

void Hand::close(QWidget* widget) const
{
    widget->close();
    wait(0.1);
}

void Hand::wait(double seconds) const
{
    QEventLoop loop;
    QTimer::singleShot(qRound(seconds * 1000), Qt::PreciseTimer, &loop, SLOT(quit()));
    loop.exec();
}

double Hand::number(const QLineEdit* field) const
{
    bool isNumber = false;
    const double value = field->text().section(QLatin1Char(' '), 0, 0).toDouble(&isNumber);
    return isNumber ? value : std::nan("");
}
