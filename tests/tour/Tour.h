#pragma once

#include <QObject>

/// A day of an operator at the running program, from the first look to the way home, on the simulated
/// installation.
///
/// Begins when the main window is shown. At the end the table of what was expected and measured goes to the
/// standard output and to tour.txt beside the pictures, in the folder that KORA_TOUR_FOLDER names; the
/// program then ends by its menu entry, with status 0, if everything holds, and with status 1 if not.
class Tour : public QObject
{
    Q_OBJECT

public:
    Tour();

private slots:
    void begin();
};
