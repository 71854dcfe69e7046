#include "graphs/WidgetGraphInt.h"

namespace {

constexpr TimeGraphTraits traits = {{
    {"Intensity BPM1", true, false, 0xffff87},
    {"Intensity BPM2", false, true, 0xff82ff},
}};

} // namespace

WidgetGraphInt::WidgetGraphInt(QWidget* parent, int channels) : WidgetGraphTime(parent)
{
    build(traits, qMin(channels, 2));
}

void WidgetGraphInt::setChannelHidden(bool first, bool second)
{
    hideBoxes(first, second);
}

void WidgetGraphInt::replot()
{
    rescaleAndRedraw();
}

void WidgetGraphInt::chEnablesChanged()
{
    showCheckedTraces();
}
