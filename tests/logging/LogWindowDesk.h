#pragma once

#include "logging/LogWindow.h"
#include "support/Operator.h"

#include <QClipboard>
#include <QtTest>
#include <QtWidgets>

#include <memory>

inline const QDateTime someTime(QDate(2026, 7, 1), QTime(10, 20, 30, 45), Qt::UTC);

inline QsLogging::LogMessage line(int level, const QString& text)
{
    return QsLogging::LogMessage(text, someTime, level);
}

/// The log window, anew for every test, and what an operator sees of it.
class LogWindowDesk : public QObject
{
    Q_OBJECT

protected:
    std::unique_ptr<QsLogging::Window> window;

    QTableView* table() { return operate::find<QTableView>(window.get(), "tableViewMessages"); }
    QComboBox* levels() { return operate::find<QComboBox>(window.get(), "comboBoxLevel"); }
    QToolButton* button(const char* name) { return operate::find<QToolButton>(window.get(), name); }
    QCheckBox* autoScroll() { return operate::find<QCheckBox>(window.get(), "checkBoxAutoScroll"); }

    void add(const QsLogging::LogMessage& message)
    {
        QVERIFY(QMetaObject::invokeMethod(window.get(), "addLogMessage", Qt::DirectConnection,
                                          Q_ARG(QsLogging::LogMessage, message)));
    }
    void add(int level, const char* text) { add(line(level, QString::fromLatin1(text))); }
    void addMany(int count, int level = QsLogging::InfoLevel)
    {
        for (int number = 0; number < count; ++number)
            add(line(level, QString::number(number)));
    }
    void show()
    {
        window->show();
        QVERIFY(QTest::qWaitForWindowExposed(window.get()));
    }
    QScrollBar* bar() { return table()->verticalScrollBar(); }

private slots:
    void initTestCase()
    {
        qputenv("TZ", "Europe/Ljubljana");
        tzset();
    }
    void init()
    {
        window = std::make_unique<QsLogging::Window>();
        QApplication::clipboard()->setText(QStringLiteral("untouched"));
    }
    void cleanup() { window.reset(); }
};
