#include "feedback/WindowPIDparams.h"

#include "support/SharpPicture.h"
#include "ui_WindowPIDparams.h"

WindowPIDparams::WindowPIDparams(QWidget* parent) : QDialog(parent), ui(std::make_unique<Ui::WindowPIDparams>())
{
    ui->setupUi(this);
    ui->pictureLabel->setPixmap(sharpPicture(QStringLiteral(":/images/images/KORA_PID.png"), devicePixelRatioF()));
}

WindowPIDparams::~WindowPIDparams() = default;
