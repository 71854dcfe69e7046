#include "feedback/WidgetRoc.h"

#include "ui_WidgetRoc.h"

WidgetRoc::WidgetRoc(QWidget* parent) : QWidget(parent), ui(new Ui::WidgetRoc)
{
    ui->setupUi(this);
}

WidgetRoc::~WidgetRoc()
{
    delete ui;
}
