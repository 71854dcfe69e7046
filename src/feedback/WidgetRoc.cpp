#include "feedback/WidgetRoc.h"

#include "ui_WidgetRoc.h"

WidgetRoc::WidgetRoc(QWidget* parent) : QWidget(parent), ui(std::make_unique<Ui::WidgetRoc>())
{
    ui->setupUi(this);
}

WidgetRoc::~WidgetRoc() = default;
