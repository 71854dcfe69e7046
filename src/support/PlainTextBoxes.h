#pragma once

#include <QObject>

/// From construction to destruction every message box that opens shows its text as it stands: a file may be named
/// "<b>" or "<img ...>", and left to itself a box takes that for markup. Also for the boxes that Qt opens, such as the
/// question of a file dialog. GUI thread.
class PlainTextBoxes : public QObject
{
    Q_OBJECT

public:
    PlainTextBoxes();

    bool eventFilter(QObject* object, QEvent* event) override;
};
