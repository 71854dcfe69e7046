#pragma once

#include <QDialog>

#include <memory>

class QLabel;
class WidgetPico;

namespace Ui {
class WindowPico;
}

/// Input currents and ranges of the current amplifiers that are present. It follows the device mask by a
/// timer of its own, also while it is hidden. GUI thread.
class WindowPico : public QDialog
{
    Q_OBJECT

public:
    explicit WindowPico(QWidget* parent = nullptr);
    ~WindowPico() override;

private slots:
    void refreshFields();

private:
    void refreshAmplifier(int index, bool present, WidgetPico* widget, QLabel* label);

    std::unique_ptr<Ui::WindowPico> ui;
};
