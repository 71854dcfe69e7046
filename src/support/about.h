#pragma once

#include <QDialog>

#include <memory>

namespace Ui {
class about;
}

/// Product, version of this interface, maker, and the version texts that were read from the system at start.
class about : public QDialog
{
    Q_OBJECT

public:
    explicit about(QWidget* parent = nullptr);
    ~about() override;

private:
    std::unique_ptr<Ui::about> ui;
};
