#pragma once

#include "graphs/WidgetGraphTime.h"

/// Four traces against time: the currents of one amplifier, or the analogue outputs.
class WidgetGraphCurrents : public WidgetGraphTime
{
    Q_OBJECT

public:
    /// @param graph KindCurrents1, KindCurrents2 or KindDAC
    WidgetGraphCurrents(QWidget* parent, int channels, GraphKind graph = KindCurrents1);

public slots:
    void replot();

private slots:
    void chEnablesChanged();
};
