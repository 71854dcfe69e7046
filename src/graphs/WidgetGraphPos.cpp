#include "graphs/WidgetGraphPos.h"

#include "app/Globals.h"
#include "hardware/MailboxComm.h"

namespace {

/// Whether the devices behind a trace are there.
bool hasSource(SignalSource source, int deviceMask)
{
    if (source == SignalSource::Monitor1)
        return deviceMask == 3 || deviceMask == 1;
    if (source == SignalSource::Monitor2)
        return deviceMask == 3 || deviceMask == 2;
    return deviceMask >= 1 && deviceMask <= 3;
}

} // namespace

WidgetGraphPos::WidgetGraphPos(QWidget* parent, int axis, int channels) : WidgetGraphTime(parent)
{
    build(axis == 0 ? KindPosX : KindPosY, channels);
}

void WidgetGraphPos::setChannelHidden(bool first, bool second)
{
    hideBoxes(first, second);
}

void WidgetGraphPos::replot()
{
    rescaleAndRedraw();
}

void WidgetGraphPos::chEnablesChanged()
{
    const int deviceMask = mailbox->nrIonBars;
    for (int channel = 0; channel < channelCount(); ++channel)
        showTrace(channel, isChecked(channel) && hasSource(sourceOf(channel), deviceMask));
    redraw();
}
