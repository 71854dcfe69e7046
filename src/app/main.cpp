#include "app/Globals.h"
#include "app/MainWindow.h"
#include "app/ProcessStart.h"
#include "app/TerminationSignals.h"
#include "app/WorkerThread.h"
#include "hardware/ConfigFile.h"
#include "hardware/MailboxComm.h"
#include "logging/DestinationMaker.h"
#include "logging/Log.h"
#include "stream/Updater.h"
#include "support/DialogLogin.h"

#include <QApplication>
#include <QFile>
#include <QIcon>
#include <QTimer>

#include <cstring>

namespace {

constexpr int displayIntervalMs = 1000;

void readScales()
{
    bpmScaleX[0] = configFile->readScaleX(0);
    bpmScaleY[0] = configFile->readScaleY(0);
    bpmScaleX[1] = configFile->readScaleX(1);
    bpmScaleY[1] = configFile->readScaleY(1);
}

void startMailbox(QThread& workerThread)
{
    mailbox = new MailboxComm(nullptr);
    mailbox->doSetup(workerThread);
    mailbox->moveToThread(&workerThread);
    QObject::connect(&workerThread, SIGNAL(started()), mailbox, SLOT(doSetupOnNewThread()));
    workerThread.start(QThread::InheritPriority);
}

/// Everything up to the first NUL; no file, no style and no message.
void applyStyleSheet(QApplication& application, QFile& file)
{
    if (file.open(QIODevice::ReadOnly))
        application.setStyleSheet(QString::fromLatin1(file.readAll().constData()));
}

void setLogLevel(int argc, char** argv)
{
    if (argc == 2 && std::strcmp(argv[1], "--trace") == 0)
        QsLogging::Logger::instance().setLevel(QsLogging::TraceLevel);
}

/// The log destination for as long as the window that it shows on exists.
class LogWindowDestination
{
public:
    explicit LogWindowDestination(QsLogging::Window* window)
    {
        QsLogging::Logger::instance().addDestination(
            QsLogging::DestinationMaker::newFunctorDestination(window, SLOT(addLogMessage(QsLogging::LogMessage))));
    }
    ~LogWindowDestination() { QsLogging::Logger::instance().removeDestination(QStringLiteral("functor")); }
    LogWindowDestination(const LogWindowDestination&) = delete;
    LogWindowDestination& operator=(const LogWindowDestination&) = delete;
};

} // namespace

// The order of construction matters, at the start for the hardware and at the end for the release, which runs
// backwards: log destination, timer, style sheet, main window, application, worker thread.
int main(int argc, char** argv)
{
    prepareProcess();
    configFile = new ConfigFile;
    readScales();
    updater = new Updater;

    WorkerThread workerThread;
    startMailbox(workerThread);

    // The surface of the 3D rocking curve is a native window of its own. Without this every window would be made ready
    // for OpenGL, and the first one would load the graphics driver.
    QApplication::setAttribute(Qt::AA_ForceRasterWidgets);
    QApplication application(argc, argv);
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/images/images/kora-local-ui.png")));
    const TerminationSignals terminationSignals;
    QObject::connect(&application, SIGNAL(lastWindowClosed()), &workerThread, SLOT(quit()));
    mailbox->getSystemVersion(&hwTimestampText, &swVersionText, &pidVersionText);
    mailbox->getBPMselector(&bpmSelXlf, &bpmSelXhf, &bpmSelYlf, &bpmSelYhf);

    MainWindow mainWindow;
    mainWindow.setWindowState(Qt::WindowMaximized);
    mainWindow.show();

    QFile styleSheet(QStringLiteral(":/qss/style.qss"));
    applyStyleSheet(application, styleSheet);

    loginDialog = new DialogLogin(&mainWindow);
    loginDialog->connectToMainWindow();

    QTimer displayTimer;
    displayTimer.setInterval(displayIntervalMs);
    QObject::connect(&displayTimer, SIGNAL(timeout()), updater, SLOT(updateGraphs()));
    displayTimer.start();

    setLogLevel(argc, argv);
    const LogWindowDestination logDestination(mainWindow.logWindow());
    KORA_LOG_INFO << "Started logger";

    return application.exec();
}
