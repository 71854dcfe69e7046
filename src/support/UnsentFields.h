#pragma once

#include <QHash>
#include <QObject>
#include <QVariant>

class QWidget;

/// Shows fields in bold while they hold a value that the operator chose and that was not sent. GUI thread.
class UnsentFields : public QObject
{
    Q_OBJECT

public:
    /// @param parent owns this object; the fields must not outlive it
    explicit UnsentFields(QObject* parent);

    /// Follows a double spin box, a combo box or a check box. What it holds now counts as sent.
    void watch(QWidget* field);
    /// All fields have been sent.
    void markSent();
    /// This one has, or it shows what is in force.
    void markSent(QWidget* field);

private slots:
    void compare();

private:
    QHash<QWidget*, QVariant> sent;
};
