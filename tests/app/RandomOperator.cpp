#include "app/RandomOperator.h"

#include "app/Globals.h"
#include "app/SimulatedSession.h"
#include "hardware/koralink.h"
#include "logging/DestinationMaker.h"
#include "logging/Level.h"
#include "logging/Log.h"
#include "simulation/InstallationState.h"
#include "stream/Updater.h"
#include "support/DialogLogin.h"
#include "support/DrivenPause.h"
#include "support/Operator.h"

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QDockWidget>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QSpinBox>
#include <QTimer>

#include <execinfo.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstring>
#include <iterator>

namespace {

constexpr int deepestNesting = 5;
constexpr int mostOpenWindows = 20;
constexpr int slowestStreamHz = 50;
constexpr int actionsOfLongSession = 400;
/// An action that computes or waits for longer than this hangs; the process ends by a signal. On a busy machine waiting
/// may be for a processor.
constexpr unsigned computingHangSeconds = 300;
constexpr unsigned waitingHangSeconds = 1500;
/// Pauses of a measurement in which nothing else happens, until the operator ends it.
constexpr int patience = 60;
/// The plant is advanced by no more than this within one pause of a measurement.
constexpr double longestDrivenPause = 0.01;

/// The last note, for the signal handler.
char lastAction[200] = "";

void tellWhereItHangs(int number)
{
    const auto tell = [](const char* text) { return ::write(STDERR_FILENO, text, std::strlen(text)) >= 0; };
    if (tell("This action hangs: ") && tell(lastAction) && tell("\n")) {
        void* frames[100];
        ::backtrace_symbols_fd(frames, ::backtrace(frames, int(std::size(frames))), STDERR_FILENO);
    }
    std::signal(number, SIG_DFL);
    std::raise(number);
}

/// @param seconds of computing, and of waiting, after which the process ends; 0 for never
void limitAction(unsigned computing, unsigned waiting)
{
    const itimerval limit = {{0, 0}, {time_t(computing), 0}};
    ::setitimer(ITIMER_PROF, &limit, nullptr);
    ::alarm(waiting);
}

const QString logDestinationType()
{
    return QStringLiteral("functor");
}

} // namespace

RandomOperator::RandomOperator(quint32 seed, const QString& traceFile)
    : dice(seed), hand(dice), folderBefore(QDir::currentPath())
{
    // Files that are saved under a bare name land in a folder that vanishes.
    QDir::setCurrent(folder.path());
    if (!traceFile.isEmpty()) {
        trace.setFileName(QDir(folderBefore).absoluteFilePath(traceFile));
        if (!trace.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
            qFatal("cannot write \"%s\"", qPrintable(traceFile));
    }
    qApp->installEventFilter(this);
    std::signal(SIGALRM, tellWhereItHangs);
    std::signal(SIGPROF, tellWhereItHangs);
}

RandomOperator::~RandomOperator()
{
    QDir::setCurrent(folderBefore);
}

QString RandomOperator::work(int actions)
{
    wanted = actions;
    QString trouble;
    while (done.actions < wanted && trouble.isEmpty())
        trouble = workOneSession();
    limitAction(0, 0);
    return trouble;
}

QString RandomOperator::workOneSession()
{
    note(QStringLiteral("--- session %1").arg(++done.sessions));
    session = std::make_unique<SimulatedSession>();
    faults = std::make_unique<RandomFaults>(dice, session->plant());
    driven_pause::setAction([this](unsigned long microseconds) { pausedFor(microseconds); });
    QsLogging::Logger::instance().setLevel(QsLogging::TraceLevel);
    QsLogging::Logger::instance().addDestination(QsLogging::DestinationMaker::newFunctorDestination(
        session->window().logWindow(), SLOT(addLogMessage(QsLogging::LogMessage))));

    sessionEndsAt = std::min(wanted, done.actions + actionsOfLongSession);
    planNext();
    QCoreApplication::exec();
    planned = false;

    const QString trouble = troubleInNextGoodSecond();
    QsLogging::Logger::instance().removeDestination(logDestinationType());
    QsLogging::Logger::instance().setLevel(QsLogging::InfoLevel);
    driven_pause::clear();
    faults.reset();
    session.reset();
    // What the session left in the queue is not meant for the next one.
    QCoreApplication::removePostedEvents(this);
    return trouble;
}

QString RandomOperator::troubleInNextGoodSecond()
{
    faults->repair();
    updater->paused = false;
    session->tick();
    for (int output = 0; output < 4; ++output) {
        if (updater->dataDAC[output]->isEmpty())
            return QStringLiteral("output %1 is not shown any more").arg(output);
    }
    return QString();
}

void RandomOperator::planNext()
{
    if (planned)
        return;
    planned = true;
    QTimer::singleShot(0, this, SLOT(act()));
}

/// A whole block of a very slow stream takes hours, driven or not, and the program waits for it.
void RandomOperator::keepStreamInMotion()
{
    const int rate = session->plant().state().streamRate;
    if (rate > 0 && rate < slowestStreamHz)
        ::setDisplayFreq(slowestStreamHz, 0);
}

void RandomOperator::act()
{
    if (!planned)
        return;
    planned = false;
    if (done.actions >= sessionEndsAt) {
        QCoreApplication::quit();
        return;
    }
    ++done.actions;
    done.nestedActions += depth > 0;
    limitAction(computingHangSeconds, waitingHangSeconds);
    ++depth;
    done.deepest = std::max(done.deepest, depth);
    if (depth < deepestNesting)
        planNext();
    keepStreamInMotion();
    doSomething();
    --depth;
    planNext();
}

void RandomOperator::doSomething()
{
    QElapsedTimer clock;
    clock.start();
    const int actionsBefore = done.actions;
    if (auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget())) {
        // The rest of the program is out of reach, but the world goes on behind the box.
        switch (dice.below(4)) {
        case 0:
            letTimePass();
            break;
        case 1:
            note(faults->strike());
            break;
        default:
            answer(dialog);
            break;
        }
    } else if (QWidget* popup = QApplication::activePopupWidget()) {
        ++done.answers;
        if (auto* menu = qobject_cast<QMenu*>(popup))
            hand.answerMenu(menu);
        else
            popup->close();
    } else {
        doSomethingInReach();
    }
    if (done.actions == actionsBefore && clock.elapsed() > done.longestMs) {
        done.longestMs = int(clock.elapsed());
        done.longest = lastNote;
    }
}

void RandomOperator::doSomethingInReach()
{
    const int percent = dice.below(100);
    if (percent < 62)
        touchSomething();
    else if (percent < 73)
        takeMenuEntry();
    else if (percent < 78)
        handleWindow();
    else if (percent < 81)
        handleDock();
    else if (percent < 83)
        logIn();
    else if (percent < 90)
        note(faults->strike());
    else
        letTimePass();
}

void RandomOperator::note(const QString& what)
{
    lastNote = what;
    qstrncpy(lastAction, qPrintable(what), uint(sizeof lastAction));
    if (trace.isOpen())
        trace.write(QStringLiteral("%1 %2 %3\n").arg(done.actions).arg(depth).arg(what).toUtf8());
}

bool RandomOperator::eventFilter(QObject* object, QEvent* event)
{
    // At the deepest nesting no further action is planned, and nobody else would answer.
    auto* dialog = qobject_cast<QDialog*>(object);
    if (dialog && event->type() == QEvent::Show && dialog->isModal() && depth >= deepestNesting)
        QTimer::singleShot(0, this, SLOT(answerModal()));
    return QObject::eventFilter(object, event);
}

void RandomOperator::answerModal()
{
    if (auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget()))
        answer(dialog);
}

void RandomOperator::answer(QDialog* dialog)
{
    ++done.answers;
    if (auto* files = qobject_cast<QFileDialog*>(dialog)) {
        const QString names[] = {folder.filePath(QStringLiteral("measured.csv")), folder.filePath(QStringLiteral("b")),
                                 QStringLiteral("/proc/nowhere/measured.csv"), folder.path()};
        const QString name = dice.pick(names);
        const bool accepted = dice.below(3) > 0;
        note(QStringLiteral("file dialog: %1").arg(accepted ? name : QStringLiteral("cancelled")));
        if (accepted)
            files->selectFile(name);
        static_cast<QDialog*>(files)->done(accepted ? QDialog::Accepted : QDialog::Rejected);
    } else if (auto* box = qobject_cast<QMessageBox*>(dialog)) {
        const QList<QAbstractButton*> buttons = box->buttons();
        note(QStringLiteral("message box \"%1\"").arg(box->windowTitle()));
        if (buttons.isEmpty() || dice.oneIn(4))
            box->reject();
        else
            buttons.at(dice.below(buttons.size()))->click();
    } else {
        dialog->reject();
    }
}

QList<QWidget*> RandomOperator::openWindows() const
{
    QList<QWidget*> windows;
    for (QWidget* window : session->window().findChildren<QWidget*>()) {
        if (window->isWindow() && window->isVisible() && !qobject_cast<QDockWidget*>(window))
            windows.append(window);
    }
    if (session->window().logWindow()->isVisible())
        windows.append(session->window().logWindow());
    windows.append(&session->window());
    return windows;
}

void RandomOperator::touchSomething()
{
    const QList<QWidget*> windows = openWindows();
    QWidget* window = dice.pick(windows);
    QList<QWidget*> candidates;
    for (QWidget* widget : window->findChildren<QWidget*>()) {
        if (widget->window() == window && widget->isVisible() && widget->isEnabled() && !widget->inherits("QLabel"))
            candidates.append(widget);
    }
    if (candidates.isEmpty())
        return;
    QWidget* widget = dice.pick(candidates);
    note(QStringLiteral("touch %1 %2 in %3")
             .arg(QLatin1String(widget->metaObject()->className()), widget->objectName(),
                  QLatin1String(window->metaObject()->className())));
    hand.touch(widget);
}

void RandomOperator::takeMenuEntry()
{
    QList<QAction*> entries;
    for (QAction* action : session->window().findChildren<QAction*>()) {
        if (action->objectName().startsWith(QLatin1String("action")))
            entries.append(action);
    }
    QAction* entry = dice.pick(entries);
    if (entry->objectName() == QLatin1String("action_Exit") && !dice.oneIn(10))
        return;
    note(QStringLiteral("menu %1").arg(entry->objectName()));
    // Three tools are closed to every operator; they have to stand it all the same.
    if (dice.oneIn(2))
        entry->setEnabled(true);
    entry->trigger();
    QList<QWidget*> windows = openWindows();
    while (windows.size() > mostOpenWindows)
        windows.takeFirst()->close();
}

void RandomOperator::handleWindow()
{
    const QList<QWidget*> windows = openWindows();
    QWidget* window = dice.pick(windows);
    note(QStringLiteral("window %1").arg(QLatin1String(window->metaObject()->className())));
    switch (dice.below(4)) {
    case 0:
        window->resize(dice.between(1, 1900), dice.between(1, 1000));
        break;
    case 1:
        // The last one ends the program.
        if (window != &session->window() || dice.oneIn(10))
            window->close();
        break;
    case 2:
        window->setWindowState(dice.oneIn(2) ? Qt::WindowMaximized : Qt::WindowNoState);
        break;
    default:
        hand.pressAnyKey(window);
        break;
    }
}

void RandomOperator::handleDock()
{
    const QList<QDockWidget*> docks = session->window().findChildren<QDockWidget*>();
    QDockWidget* dock = dice.pick(docks);
    note(QStringLiteral("dock %1").arg(dock->windowTitle()));
    switch (dice.below(4)) {
    case 0:
        dock->setFloating(!dock->isFloating());
        break;
    case 1:
        dock->setVisible(!dock->isVisible());
        break;
    case 2:
        dock->setFloating(false);
        dock->show();
        break;
    default:
        dock->raise();
        break;
    }
}

void RandomOperator::logIn()
{
    constexpr const char* users[] = {"user", "admin", "admin", "cruise", "nobody"};
    const QString user = QLatin1String(dice.pick(users));
    note(QStringLiteral("log in as %1").arg(user));
    session->logIn(user, dice.oneIn(6) ? hand.text() : user);
    if (dice.oneIn(2))
        loginDialog->close();
}

void RandomOperator::letTimePass()
{
    // The timers of the program do not fire within themselves either.
    if (timePasses)
        return;
    timePasses = true;
    const double seconds = 0.05 + dice.fraction();
    note(QStringLiteral("%1 s pass").arg(seconds));
    session->tick(seconds);
    timePasses = false;
}

void RandomOperator::pausedFor(unsigned long microseconds)
{
    session->plant().advance(std::min(double(microseconds) * 1e-6, longestDrivenPause));
    if (done.actions != actionsAtLastPause)
        pausesWithoutAction = 0;
    actionsAtLastPause = done.actions;
    if (++pausesWithoutAction > patience)
        endMeasurements();
}

void RandomOperator::endMeasurements()
{
    for (QSpinBox* points : session->window().findChildren<QSpinBox*>(QStringLiteral("boxN")))
        points->setValue(1);
    for (const char* name : {"stopButton", "StopSweepPushButton"}) {
        for (QPushButton* stop : session->window().findChildren<QPushButton*>(QLatin1String(name)))
            stop->click();
    }
}
