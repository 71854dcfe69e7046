#pragma once

#include <QDialog>

#include <memory>

namespace Ui {
class WindowDisplaySettings;
}

/// Rate and filter of the display stream, length of the display window, and the pause. Nothing of it is
/// saved.
class WindowDisplaySettings : public QDialog
{
    Q_OBJECT

public:
    explicit WindowDisplaySettings(QWidget* parent = nullptr);
    ~WindowDisplaySettings() override;

    /// Shows the dialog with the present values. The filter box alone is not refreshed: it keeps what was
    /// last set in it, cancelled or not.
    void showAndRefresh();

private slots:
    void saveSettings();
    void pauseButtonChanged(bool checked);

private:
    std::unique_ptr<Ui::WindowDisplaySettings> ui;
};
