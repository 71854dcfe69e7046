#pragma once

#include <QMessageBox>
#include <QObject>
#include <QVector>

/// From construction to destruction answers every message box that opens, and keeps what it said.
class MessageBoxes : public QObject
{
    Q_OBJECT

public:
    struct Box
    {
        QString title;
        QString text;
        QMessageBox::Icon icon;
        QMessageBox::StandardButtons buttons;
        bool hasParent;
        Qt::TextFormat textFormat;
    };

    explicit MessageBoxes(QMessageBox::StandardButton answer = QMessageBox::Ok);

    void answerWith(QMessageBox::StandardButton button) { answer = button; }
    const QVector<Box>& boxes() const { return kept; }
    int count() const { return kept.size(); }

    bool eventFilter(QObject* object, QEvent* event) override;

private:
    QMessageBox::StandardButton answer;
    QVector<Box> kept;
};
