#pragma once

#include <QDialog>

#include <memory>

namespace Ui {
class DialogLogin;
}

/// Asks for a user name and a password and publishes the access level that the control library gives for
/// them, through the global userLevel and a signal. The program holds no account of its own. Lives as long as
/// the program, not modal. GUI thread.
class DialogLogin : public QDialog
{
    Q_OBJECT

public:
    /// @param mainWindow the parent
    explicit DialogLogin(QWidget* mainWindow);
    ~DialogLogin() override;

    /// Shows the name of the present level and announces it to all receivers.
    void showCurrentLevel();
    /// Makes the main window connect the signal to its receivers, by its invokable method
    /// connectLoginDialog().
    void connectToMainWindow();

signals:
    void userLevelChanged(int);

private slots:
    void checkPasswd();

protected:
    /// No password of the last operator waits in the window when it is opened again.
    void showEvent(QShowEvent* event) override;

private:
    std::unique_ptr<Ui::DialogLogin> ui;
    QWidget* mainWindow;
};
