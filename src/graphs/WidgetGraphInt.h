#pragma once

#include "graphs/WidgetGraphTime.h"

/// Intensities of the two monitors against time. The box of BPM2 starts unchecked and hidden, and nothing applies
/// the boxes at the start: the trace is drawn until the first toggle.
class WidgetGraphInt : public WidgetGraphTime
{
    Q_OBJECT

public:
    WidgetGraphInt(QWidget* parent, int channels);

    void setChannelHidden(bool first, bool second);

public slots:
    void replot();

private slots:
    void chEnablesChanged();
};
