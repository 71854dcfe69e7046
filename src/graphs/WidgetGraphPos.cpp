#include "graphs/WidgetGraphPos.h"

#include "app/Globals.h"
#include "hardware/MailboxComm.h"

namespace {

constexpr TimeGraphTraits traits[2] = {
    {{
        {"Pos X (BPM1)", true, false, 0xffff87},
        {"Pos X (BPM2)", true, false, 0xff82ff},
        {"Pos X (LF)", false, false, 0x82ff82},
        {"Pos X (HF)", false, false, 0xff9933},
    }},
    {{
        {"Pos Y (BPM1)", true, false, 0xffff87},
        {"Pos Y (BPM2)", true, false, 0xff82ff},
        {"Pos Y (LF)", false, false, 0x82ff82},
        {"Pos Y (HF)", false, false, 0xff9933},
    }},
};

/// Whether the devices behind a trace are there.
bool hasSource(int channel, int deviceMask)
{
    if (channel < 2)
        return deviceMask == 3 || deviceMask == channel + 1;
    return deviceMask >= 1 && deviceMask <= 3;
}

} // namespace

WidgetGraphPos::WidgetGraphPos(QWidget* parent, int axis, int channels) : WidgetGraphTime(parent)
{
    build(traits[axis == 0 ? 0 : 1], channels);
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
    for (int channel = 0; channel < channelCount; ++channel)
        showTrace(channel, isChecked(channel) && hasSource(channel, deviceMask));
    redraw();
}
