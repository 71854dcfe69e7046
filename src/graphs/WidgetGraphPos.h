#pragma once

#include "graphs/WidgetGraphTime.h"

/// Beam position of one axis against time: both monitors and the two controller paths.
class WidgetGraphPos : public WidgetGraphTime
{
    Q_OBJECT

public:
    /// @param axis 0 X, 1 Y
    WidgetGraphPos(QWidget* parent, int axis, int channels);

    void setChannelHidden(bool first, bool second);

public slots:
    void replot();
    /// Applies the boxes and the device mask of mailbox, which is read here only: a change of devices alone leaves
    /// the traces as they are.
    void chEnablesChanged();
};
