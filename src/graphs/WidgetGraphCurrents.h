#pragma once

#include "graphs/WidgetGraphTime.h"

/// Four traces against time: the currents of one amplifier, or the analogue outputs.
class WidgetGraphCurrents : public WidgetGraphTime
{
    Q_OBJECT

public:
    WidgetGraphCurrents(QWidget* parent, int channels);

public slots:
    void replot();

private slots:
    void chEnablesChanged();
};
