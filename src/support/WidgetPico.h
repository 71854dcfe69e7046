#pragma once

#include <QWidget>

#include <memory>

class UnsentFields;

namespace Ui {
class WidgetPico;
}

/// The four input currents of one current amplifier, and its range.
class WidgetPico : public QWidget
{
    Q_OBJECT

public:
    explicit WidgetPico(QWidget* parent = nullptr);
    ~WidgetPico() override;

    /// Shows the currents of channels 1 to 4, A.
    void setCurrents(double ch1, double ch2, double ch3, double ch4);
    /// Greys currents that are no longer measured.
    void setCurrentsOld(bool old);

    /// Amplifier that the range goes to: 0 "IonBar 1", 1 "IonBar 2".
    int ionbarIndex = 0;

private slots:
    void sendSettings();

private:
    std::unique_ptr<Ui::WidgetPico> ui;
    UnsentFields* unsent;
};
