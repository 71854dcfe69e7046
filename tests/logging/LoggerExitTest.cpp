#include "logging/DestinationMaker.h"
#include "logging/Log.h"

#include <QProcess>
#include <QtTest>

using namespace QsLogging;

namespace {

const QString childArgument = QStringLiteral("--child");

/// Prints lines and, at the first one, holds the worker until the end of the program is on its way.
class HoldingDestination : public Destination
{
public:
    void write(const LogMessage& message) override
    {
        std::puts(qPrintable(message.message));
        std::fflush(stdout);
        while (!QThread::currentThread()->isInterruptionRequested())
            QThread::yieldCurrentThread();
    }
    bool isValid() const override { return true; }
    QString type() const override { return QStringLiteral("holding"); }
};

/// A program that logs and ends, as the child process of a test.
int logAndEnd(const QString& how)
{
    if (how == QLatin1String("early"))
        KORA_LOG_INFO << "before any destination";
    if (how == QLatin1String("held")) {
        Logger::instance().addDestination(std::make_unique<HoldingDestination>());
        for (int line = 0; line < 3; ++line)
            KORA_LOG_INFO << line;
    }
    if (how == QLatin1String("console")) {
        DestinationPtr console = DestinationMaker::newDebugOutputDestination();
        console->write(LogMessage(QStringLiteral("on the console"), QDateTime(), ErrorLevel));
    }
    return 0;
}

} // namespace

class LoggerExitTest : public QObject
{
    Q_OBJECT

private:
    QByteArray output;
    QByteArray errors;

    void runChild(const char* how)
    {
        QProcess child;
        child.start(QCoreApplication::applicationFilePath(), {childArgument, QString::fromLatin1(how)});
        QVERIFY(child.waitForFinished());
        QCOMPARE(child.exitStatus(), QProcess::NormalExit);
        QCOMPARE(child.exitCode(), 0);
        output = child.readAllStandardOutput();
        errors = child.readAllStandardError();
    }

private slots:
    void linesStillInTheQueueAreLostAtTheEndOfTheProgram()
    {
        runChild("held");
        QVERIFY2(output == "0 \n" || output.isEmpty(), output.constData());
        QCOMPARE(errors, QByteArray());
    }

    void linesBeforeAnyDestinationAreLostAndTheProgramEnds()
    {
        runChild("early");
        QCOMPARE(output + errors, QByteArray());
    }

    void programThatNeverLogsEnds()
    {
        runChild("silent");
        QCOMPARE(output + errors, QByteArray());
    }

    void consoleDestinationPrintsTheLineToStandardError()
    {
        runChild("console");
        QCOMPARE(errors, QByteArray("ERROR  on the console\n"));
        QCOMPARE(output, QByteArray());
    }
};

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() == 3 && arguments.at(1) == childArgument)
        return logAndEnd(arguments.at(2));
    LoggerExitTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "LoggerExitTest.moc"
