#include "graphs/WidgetGraphCurrents.h"

WidgetGraphCurrents::WidgetGraphCurrents(QWidget* parent, int channels, GraphKind graph) : WidgetGraphTime(parent)
{
    build(graph, channels);
}

void WidgetGraphCurrents::replot()
{
    rescaleAndRedraw();
}

void WidgetGraphCurrents::chEnablesChanged()
{
    showCheckedTraces();
}
