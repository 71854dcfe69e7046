#include "support/DialogLogin.h"
#include "app/Globals.h"
#include "double/KoralinkDouble.h"
#include "feedback/WidgetFeedbackControl.h"
#include "feedback/WidgetPidCtrl.h"
#include "logging/Level.h"
#include "support/LogLines.h"
#include "support/MessageBoxes.h"
#include "support/Operator.h"
#include "support/World.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTabWidget>
#include <QtTest>

#include <memory>

using namespace koralink_double;
using operate::find;

namespace {

/// Main window with the two panels that a level concerns.
class Board : public QWidget
{
    Q_OBJECT

public:
    Board() : panel(this), gains(this) {}

    Q_INVOKABLE void connectLoginDialog()
    {
        ++connections;
        connect(loginDialog, SIGNAL(userLevelChanged(int)), &panel, SLOT(checkUserLevel()));
        connect(loginDialog, SIGNAL(userLevelChanged(int)), &gains, SLOT(enableAndDisableFields()));
    }

    WidgetFeedbackControl panel;
    WidgetPidCtrl gains;
    int connections = 0;
};

} // namespace

class DialogLoginTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<World> world;
    std::unique_ptr<Board> board;
    DialogLogin* dialog = nullptr;

    void logIn(const QString& user, const QString& password)
    {
        find<QLineEdit>(dialog, "usernameLineEdit")->setText(user);
        find<QLineEdit>(dialog, "passwordLineEdit")->setText(password);
        operate::press(find<QPushButton>(dialog, "logIn"));
    }
    void logIn(const QString& user) { logIn(user, user); }
    QString shownLevel() const { return find<QLabel>(dialog, "currentLevel")->text(); }
    bool gainsEnabled() const { return find<QTabWidget>(board.get(), "verticalTabWidget")->isEnabled(); }

private slots:
    void init()
    {
        koralink_double::reset();
        world = std::make_unique<World>();
        board = std::make_unique<Board>();
        dialog = new DialogLogin(board.get());
        loginDialog = dialog;
        dialog->connectToMainWindow();
        clearCalls();
    }
    void cleanup()
    {
        board.reset();
        loginDialog = nullptr;
        world.reset();
    }

    void mainWindowConnectsTheDialogOnce()
    {
        QCOMPARE(board->connections, 1);
        QCOMPARE(dialog->parentWidget(), board.get());
    }

    void formHasItsTexts()
    {
        QCOMPARE(dialog->windowTitle(), QStringLiteral("Log in"));
        QVERIFY(!dialog->isModal());
        QCOMPARE(find<QLabel>(dialog, "usernameLabel")->text(), QStringLiteral("Username: "));
        QCOMPARE(find<QLabel>(dialog, "passwordLabel")->text(), QStringLiteral("Password: "));
        QCOMPARE(find<QLabel>(dialog, "label")->text(), QStringLiteral("Current level: "));
        QCOMPARE(find<QPushButton>(dialog, "logIn")->text(), QStringLiteral("Log in"));
        QCOMPARE(find<QLineEdit>(dialog, "passwordLineEdit")->echoMode(), QLineEdit::Password);
        QCOMPARE(shownLevel(), QString());
    }

    void rightPasswordGivesTheLevelOfTheName_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("level");
        QTest::newRow("cruise") << "cruise" << 0;
        QTest::newRow("user") << "user" << 1;
        QTest::newRow("admin") << "admin" << 2;
    }
    void rightPasswordGivesTheLevelOfTheName()
    {
        QFETCH(QString, name);
        QFETCH(int, level);
        userLevel = 7;
        MessageBoxes boxes;
        QSignalSpy changed(dialog, SIGNAL(userLevelChanged(int)));
        dialog->show();
        logIn(name);
        QCOMPARE(userLevel, level);
        QCOMPARE(changed.count(), 1);
        QCOMPARE(changed.first().first().toInt(), level);
        QCOMPARE(shownLevel(), name);
        QCOMPARE(board->panel.isEnabled(), level > 0);
        QCOMPARE(gainsEnabled(), level == 2);
        QCOMPARE(boxes.count(), 0);
        QVERIFY(dialog->isVisible());
        QCOMPARE(find<QLineEdit>(dialog, "usernameLineEdit")->text(), name);
        QCOMPARE(find<QLineEdit>(dialog, "passwordLineEdit")->text(), name);
    }

    void wrongPasswordIsTold_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("answer");
        QTest::newRow("admin gets nothing") << "admin" << 0;
        QTest::newRow("admin gets user") << "admin" << 1;
        QTest::newRow("user gets nothing") << "user" << 0;
        QTest::newRow("user gets admin") << "user" << 2;
        QTest::newRow("user gets no level") << "user" << -1;
    }
    void wrongPasswordIsTold()
    {
        QFETCH(QString, name);
        QFETCH(int, answer);
        answers().lock = [answer](const std::string&, const std::string&) { return answer; };
        MessageBoxes boxes;
        QSignalSpy changed(dialog, SIGNAL(userLevelChanged(int)));
        dialog->show();
        logIn(name);
        QCOMPARE(boxes.count(), 1);
        const MessageBoxes::Box& box = boxes.boxes().first();
        QCOMPARE(box.title, QStringLiteral("Wrong password"));
        QCOMPARE(box.text, QStringLiteral("Password entered does not match.\n\n"));
        QCOMPARE(box.icon, QMessageBox::Warning);
        QCOMPARE(box.buttons, QMessageBox::Ok);
        QVERIFY(!box.hasParent);
        QCOMPARE(userLevel, answer);
        QCOMPARE(changed.count(), 0);
        QVERIFY(dialog->isVisible());
        QCOMPARE(find<QLineEdit>(dialog, "usernameLineEdit")->text(), name);
    }

    void refusedLowestLevelIsNotTold()
    {
        answers().lock = [](const std::string&, const std::string&) { return 1; };
        MessageBoxes boxes;
        QSignalSpy changed(dialog, SIGNAL(userLevelChanged(int)));
        logIn(QStringLiteral("cruise"));
        QCOMPARE(boxes.count(), 0);
        QCOMPARE(changed.count(), 0);
        QCOMPARE(userLevel, 1);
        QCOMPARE(shownLevel(), QString());
    }

    void unknownNameIsTold_data()
    {
        QTest::addColumn<QString>("name");
        for (const char* name : {"", "Admin", "User", "Cruise", "admin ", " user", "operator", "ADMIN"})
            QTest::newRow(name) << QString::fromLatin1(name);
    }
    void unknownNameIsTold()
    {
        QFETCH(QString, name);
        // Also where the library would let this name in
        answers().lock = [](const std::string&, const std::string&) { return 2; };
        MessageBoxes boxes;
        QSignalSpy changed(dialog, SIGNAL(userLevelChanged(int)));
        logIn(name, QString());
        QCOMPARE(boxes.count(), 1);
        const MessageBoxes::Box& box = boxes.boxes().first();
        QCOMPARE(box.title, QStringLiteral("Wrong username"));
        QCOMPARE(box.text, QStringLiteral("Username entered does not match.\n\n"));
        QCOMPARE(box.icon, QMessageBox::Warning);
        QCOMPARE(box.buttons, QMessageBox::Ok);
        QVERIFY(!box.hasParent);
        QCOMPARE(callsOf("getLock").size(), std::size_t(1));
        QCOMPARE(userLevel, 2);
        QCOMPARE(changed.count(), 0);
    }

    void emptyFieldsReachTheLibraryAsEmptyTexts()
    {
        MessageBoxes boxes;
        userLevel = 2;
        logIn(QString());
        const Call call = calls().back();
        QCOMPARE(call.name, std::string("getLock"));
        QCOMPARE(call.texts, (std::vector<std::string>{"", ""}));
        QCOMPARE(userLevel, 0);
    }

    void failedLoginTakesTheRightsButNotTheDisplay()
    {
        logIn(QStringLiteral("admin"));
        MessageBoxes boxes;
        logIn(QStringLiteral("user"), QStringLiteral("wrong"));
        QCOMPARE(boxes.count(), 1);
        QCOMPARE(userLevel, 0);
        QCOMPARE(shownLevel(), QStringLiteral("admin"));
        QVERIFY(board->panel.isEnabled());
        QVERIFY(gainsEnabled());
    }

    void showingTheCurrentLevelBringsTheDisplayInLine()
    {
        logIn(QStringLiteral("admin"));
        MessageBoxes boxes;
        logIn(QStringLiteral("user"), QStringLiteral("wrong"));
        QSignalSpy changed(dialog, SIGNAL(userLevelChanged(int)));
        dialog->showCurrentLevel();
        QCOMPARE(changed.count(), 1);
        QCOMPARE(changed.first().first().toInt(), 0);
        QCOMPARE(shownLevel(), QStringLiteral("cruise"));
        QVERIFY(!board->panel.isEnabled());
        QVERIFY(!gainsEnabled());
    }

    void levelWithoutANameShowsNothingAndIsAnnounced()
    {
        logIn(QStringLiteral("admin"));
        QSignalSpy changed(dialog, SIGNAL(userLevelChanged(int)));
        for (const int level : {3, -1}) {
            userLevel = level;
            dialog->showCurrentLevel();
            QCOMPARE(shownLevel(), QString());
            QCOMPARE(changed.takeFirst().first().toInt(), level);
        }
        QVERIFY(board->panel.isEnabled());
    }

    void longTextsReachTheLibraryWithoutTerminator_data()
    {
        QTest::addColumn<int>("length");
        QTest::addColumn<int>("reaching");
        QTest::newRow("31") << 31 << 31;
        QTest::newRow("32") << 32 << 32;
        QTest::newRow("33") << 33 << 32;
        QTest::newRow("5000") << 5000 << 32;
    }
    void longTextsReachTheLibraryWithoutTerminator()
    {
        QFETCH(int, length);
        QFETCH(int, reaching);
        MessageBoxes boxes;
        logIn(QString(length, QLatin1Char('u')), QString(length, QLatin1Char('p')));
        const Call call = calls().back();
        QCOMPARE(call.texts.at(0), std::string(std::size_t(reaching), 'u'));
        QCOMPARE(call.texts.at(1), std::string(std::size_t(reaching), 'p'));
        QCOMPARE(boxes.boxes().first().title, QStringLiteral("Wrong username"));
    }

    void textsAreSentAsLatin1()
    {
        MessageBoxes boxes;
        logIn(QString::fromUtf8("Jörg"), QString::fromUtf8("é"));
        QCOMPARE(calls().back().texts, (std::vector<std::string>{"J\xf6rg", "\xe9"}));
    }

    void levelIsLoggedAlsoForARefusedLogin()
    {
        MessageBoxes boxes;
        LogLines log(QsLogging::InfoLevel);
        logIn(QStringLiteral("user"));
        logIn(QStringLiteral("admin"), QStringLiteral("wrong"));
        const QStringList lines = log.lines();
        QCOMPARE(lines.size(), 2);
        QCOMPARE(lines.at(0).simplified(), QStringLiteral("2 login level changed: 1"));
        QCOMPARE(lines.at(1).simplified(), QStringLiteral("2 login level changed: 0"));
    }

    void passwordIsGoneWhenTheWindowIsOpenedAgain()
    {
        dialog->show();
        logIn(QStringLiteral("admin"));
        const auto* password = find<QLineEdit>(dialog, "passwordLineEdit");
        const auto* user = find<QLineEdit>(dialog, "usernameLineEdit");
        QCOMPARE(password->text(), QStringLiteral("admin"));
        QCOMPARE(user->text(), QStringLiteral("admin"));
        // Out of view and back by the desktop is the same opening.
        QShowEvent shown;
        QSpontaneKeyEvent::setSpontaneous(&shown);
        qApp->notify(dialog, &shown);
        QCOMPARE(password->text(), QStringLiteral("admin"));

        dialog->close();
        dialog->show();
        QCOMPARE(password->text(), QString());
        QVERIFY(!password->isUndoAvailable());
        QCOMPARE(user->text(), QStringLiteral("admin"));
        clearCalls();
        MessageBoxes boxes;
        operate::press(find<QPushButton>(dialog, "logIn"));
        QCOMPARE(calls().back().texts, (std::vector<std::string>{"admin", ""}));
        QCOMPARE(boxes.count(), 1);
    }

    void returnKeyLogsInOnTheButtonAndNotInAField()
    {
        dialog->show();
        QApplication::setActiveWindow(dialog);
        find<QLineEdit>(dialog, "usernameLineEdit")->setText(QStringLiteral("user"));
        auto* password = find<QLineEdit>(dialog, "passwordLineEdit");
        password->setFocus();
        QTest::keyClicks(password, QStringLiteral("user"));
        QTest::keyClick(password, Qt::Key_Return);
        QCOMPARE(userLevel, 0);
        QTest::keyClick(password, Qt::Key_Tab);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
        QCOMPARE(userLevel, 1);
        QVERIFY(dialog->isVisible());
    }
};

QTEST_MAIN(DialogLoginTest)
#include "DialogLoginTest.moc"
