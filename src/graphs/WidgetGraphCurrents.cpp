#include "graphs/WidgetGraphCurrents.h"

namespace {

constexpr TimeGraphTraits traits = {{
    {nullptr, true, false, 0xffff87},
    {nullptr, true, false, 0xff82ff},
    {nullptr, true, false, 0x82ff82},
    {nullptr, true, false, 0x82d2fa},
}};

} // namespace

WidgetGraphCurrents::WidgetGraphCurrents(QWidget* parent, int channels) : WidgetGraphTime(parent)
{
    build(traits, channels);
}

void WidgetGraphCurrents::replot()
{
    rescaleAndRedraw();
}

void WidgetGraphCurrents::chEnablesChanged()
{
    showCheckedTraces();
}
