#pragma once

#include <QObject>

class QWidget;

/// Lets a field follow the mouse wheel only while it has the focus, so that scrolling the page that it stands on
/// does not change what the pointer passes. A child of the field. GUI thread.
class WheelNeedsFocus : public QObject
{
    Q_OBJECT

public:
    explicit WheelNeedsFocus(QWidget* field);

    bool eventFilter(QObject* object, QEvent* event) override;

private:
    QWidget* field;
};
