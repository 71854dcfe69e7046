#pragma once

#include <QWidget>

#include <memory>

class UnsentFields;
class WidgetPIDparams;

namespace Ui {
class WidgetPidCtrl;
}

/// The parameters of the four loops in tabs, and the only way by which they reach the hardware and the
/// settings file. What was read from the file waits in the fields until it is sent. GUI thread.
class WidgetPidCtrl : public QWidget
{
    Q_OBJECT

public:
    explicit WidgetPidCtrl(QWidget* parent = nullptr);
    ~WidgetPidCtrl() override;

private slots:
    void enableAndDisableFields();
    void savePIDparams();

private:
    void showStoredParams();

    std::unique_ptr<Ui::WidgetPidCtrl> ui;
    WidgetPIDparams* params[4]; ///< by loop index
    UnsentFields* unsent;
};
