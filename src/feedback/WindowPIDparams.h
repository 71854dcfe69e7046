#pragma once

#include <QDialog>

#include <memory>

namespace Ui {
class WindowPIDparams;
}

/// A picture of the structure of one control loop. GUI thread.
class WindowPIDparams : public QDialog
{
    Q_OBJECT

public:
    explicit WindowPIDparams(QWidget* parent = nullptr);
    ~WindowPIDparams() override;

private:
    std::unique_ptr<Ui::WindowPIDparams> ui;
};
