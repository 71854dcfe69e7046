#include "graphs/WidgetGraphInt.h"

WidgetGraphInt::WidgetGraphInt(QWidget* parent, int channels) : WidgetGraphTime(parent)
{
    build(KindInt, channels);
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
