#include "feedback/WindowPIDparams.h"

#include "ui_WindowPIDparams.h"

WindowPIDparams::WindowPIDparams(QWidget* parent) : QDialog(parent), ui(new Ui::WindowPIDparams)
{
    ui->setupUi(this);
}

WindowPIDparams::~WindowPIDparams() = default;
