#include "support/DialogLogin.h"

#include "app/Globals.h"
#include "hardware/koralink.h"
#include "logging/Log.h"
#include "support/FieldGuard.h"
#include "ui_DialogLogin.h"

#include <QMessageBox>
#include <QShowEvent>

#include <cstring>

namespace {

constexpr std::size_t credentialBytes = 32;

/// User names by level.
constexpr const char* levelNames[] = {"cruise", "user", "admin"};
constexpr int levelCount = 3;

/// A user name or password as the control library takes it: without a terminator where it fills the buffer.
struct Credential
{
    explicit Credential(const QString& text) { std::strncpy(bytes, text.toLatin1().constData(), credentialBytes); }
    __attribute__((nonstring)) char bytes[credentialBytes];
};

int levelOfName(const QString& name)
{
    for (int level = 0; level < levelCount; ++level) {
        if (name == QLatin1String(levelNames[level]))
            return level;
    }
    return -1;
}

} // namespace

DialogLogin::DialogLogin(QWidget* mainWindow)
    : QDialog(mainWindow), ui(std::make_unique<Ui::DialogLogin>()), mainWindow(mainWindow)
{
    ui->setupUi(this);
    new FieldGuard(this);
    connect(ui->logIn, SIGNAL(released()), this, SLOT(checkPasswd()));
}

DialogLogin::~DialogLogin() = default;

void DialogLogin::showEvent(QShowEvent* event)
{
    // Spontaneous is what the desktop does to a window that is open.
    if (!event->spontaneous())
        ui->passwordLineEdit->setText(QString());
    QDialog::showEvent(event);
}

void DialogLogin::connectToMainWindow()
{
    QMetaObject::invokeMethod(mainWindow, "connectLoginDialog", Qt::DirectConnection);
}

void DialogLogin::showCurrentLevel()
{
    const bool known = userLevel >= 0 && userLevel < levelCount;
    ui->currentLevel->setText(known ? QString::fromLatin1(levelNames[userLevel]) : QString());
    emit userLevelChanged(userLevel);
}

void DialogLogin::checkPasswd()
{
    const QString name = ui->usernameLineEdit->text();
    const Credential user(name);
    const Credential password(ui->passwordLineEdit->text());
    const int level = getLock(user.bytes, password.bytes);
    KORA_LOG_INFO << "login level changed: " << level;
    // Before anything is compared: a refused login takes the rights away at once, while display and widgets
    // stay as they are until the next emission.
    userLevel = level;

    const int wanted = levelOfName(name);
    if (wanted < 0) {
        QMessageBox::warning(nullptr, QStringLiteral("Wrong username"),
                             QStringLiteral("Username entered does not match.\n\n"), QMessageBox::Ok);
    } else if (wanted == userLevel) {
        showCurrentLevel();
    } else if (wanted > 0) {
        // Nobody is told that a login as the lowest level was refused.
        QMessageBox::warning(nullptr, QStringLiteral("Wrong password"),
                             QStringLiteral("Password entered does not match.\n\n"), QMessageBox::Ok);
    }
}
