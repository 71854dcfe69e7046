#include "CollectingDestination.h"
#include "logging/DestinationMaker.h"
#include "logging/Log.h"

#include <QSignalSpy>
#include <QtTest>

#include <atomic>
#include <future>
#include <thread>

using namespace QsLogging;

namespace {

/// Collects lines in the thread that it lives in.
class LineReceiver : public QObject
{
    Q_OBJECT

public:
    QStringList texts;
    QThread* calledOn = nullptr;

public slots:
    void take(QsLogging::LogMessage message)
    {
        texts += message.message;
        calledOn = QThread::currentThread();
    }
};

std::atomic<int> functionCalls{0};

void countCall(const LogMessage&)
{
    ++functionCalls;
}

/// Holds the worker inside write() until it is let go.
class SlowDestination : public Destination
{
public:
    SlowDestination(std::promise<void>& isIn, std::shared_future<void> letGo) : entered(isIn), go(letGo) {}
    void write(const LogMessage&) override
    {
        if (first)
            entered.set_value();
        first = false;
        go.wait();
    }
    bool isValid() const override { return true; }
    QString type() const override { return QStringLiteral("slow"); }

private:
    std::promise<void>& entered;
    std::shared_future<void> go;
    bool first = true;
};

void logAt(int level)
{
    KORA_LOG(level) << level;
}

} // namespace

class LoggerTest : public QObject
{
    Q_OBJECT

private:
    std::shared_ptr<CollectedLines> lines;

private slots:
    void init()
    {
        Logger::instance().setLevel(InfoLevel);
        lines = std::make_shared<CollectedLines>();
        Logger::instance().addDestination(std::make_unique<CollectingDestination>(lines));
    }
    void cleanup()
    {
        // Lets the queue run empty, so that no line of this function reaches the next.
        Logger::instance().setLevel(InfoLevel);
        KORA_LOG_INFO << "end of the function";
        QVERIFY(lines->waitForText(QStringLiteral("end of the function ")));
        Logger::instance().removeDestination(QStringLiteral("collecting"));
    }

    void levelIsInfoBeforeAnyoneSetsIt()
    {
        // The first function of the suite, so init() has set nothing else.
        QCOMPARE(Logger::instance().currentLevel(), 2);
        QCOMPARE(&Logger::instance(), &Logger::instance());
    }

    void itemsOfAStatementAreJoinedByBlanksAndEndInOne()
    {
        KORA_LOG_WARN << "text" << 3 << 1.5;
        QVERIFY(lines->waitFor(1));
        QCOMPARE(lines->texts(), QStringList(QStringLiteral("text 3 1.5 ")));
        const LogMessage message = lines->first();
        QCOMPARE(message.level, 3);
        QCOMPARE(message.time.timeSpec(), Qt::UTC);
        QVERIFY(qAbs(message.time.msecsTo(QDateTime::currentDateTimeUtc())) < 60000);
        QVERIFY(message.formatted.startsWith(QStringLiteral("WARN  ")));
        QCOMPARE(message.formatted.size(), 5 + 1 + 23 + 1 + message.message.size());
    }

    void levelDecidesWhatIsWritten()
    {
        for (int threshold = TraceLevel; threshold <= OffLevel; ++threshold) {
            Logger::instance().setLevel(threshold);
            for (int level = TraceLevel; level <= FatalLevel; ++level)
                logAt(level);
        }
        Logger::instance().setLevel(InfoLevel);
        KORA_LOG_INFO << "end";
        QVERIFY(lines->waitFor(6 + 5 + 4 + 3 + 2 + 1 + 1));
        QStringList expected;
        for (int threshold = TraceLevel; threshold <= OffLevel; ++threshold) {
            for (int level = threshold; level <= FatalLevel; ++level)
                expected += QStringLiteral("%1 ").arg(level);
        }
        expected += QStringLiteral("end ");
        QCOMPARE(lines->texts(), expected);
    }

    void eachMacroHasItsLevel()
    {
        Logger::instance().setLevel(TraceLevel);
        KORA_LOG_TRACE << "TRACE";
        KORA_LOG_DEBUG << "DEBUG";
        KORA_LOG_INFO << "INFO ";
        KORA_LOG_WARN << "WARN ";
        KORA_LOG_ERROR << "ERROR";
        KORA_LOG_FATAL << "FATAL";
        QVERIFY(lines->waitFor(6));
        QCOMPARE(lines->texts(),
                 QStringList({QStringLiteral("TRACE "), QStringLiteral("DEBUG "), QStringLiteral("INFO  "),
                              QStringLiteral("WARN  "), QStringLiteral("ERROR "), QStringLiteral("FATAL ")}));
    }

    void changedLevelShowsAtOtherThreads()
    {
        std::thread other([] {
            while (Logger::instance().currentLevel() != TraceLevel)
                std::this_thread::yield();
            KORA_LOG_TRACE << "seen";
        });
        Logger::instance().setLevel(TraceLevel);
        other.join();
        QVERIFY(lines->waitFor(1));
        QCOMPARE(lines->texts(), QStringList(QStringLiteral("seen ")));
    }

    void suppressedStatementEvaluatesNothing()
    {
        int evaluated = 0;
        KORA_LOG_DEBUG << ++evaluated;
        KORA_LOG_TRACE << ++evaluated;
        QCOMPARE(evaluated, 0);
        KORA_LOG_INFO << ++evaluated;
        QCOMPARE(evaluated, 1);
    }

    void statementLeavesTheElseToItsIf()
    {
        bool elseTaken = false;
        const bool condition = lines == nullptr;
        if (condition)
            KORA_LOG_INFO << "not this";
        else
            elseTaken = true;
        QVERIFY(elseTaken);
        elseTaken = false;
        Logger::instance().setLevel(OffLevel);
        if (!condition)
            KORA_LOG_FATAL << "suppressed";
        else
            elseTaken = true;
        QVERIFY(!elseTaken);
    }

    void linesOfOneThreadKeepTheirOrderAndNoneIsLost()
    {
        constexpr int threads = 4;
        constexpr int perThread = 500;
        std::vector<std::thread> callers;
        for (int thread = 0; thread < threads; ++thread) {
            callers.emplace_back([thread] {
                for (int line = 0; line < perThread; ++line)
                    KORA_LOG_INFO << thread << line;
            });
        }
        for (std::thread& each : callers)
            each.join();
        QVERIFY(lines->waitFor(threads * perThread));
        QVector<int> next(threads, 0);
        const QStringList texts = lines->texts();
        QCOMPARE(texts.size(), threads * perThread);
        for (const QString& text : texts) {
            const QStringList numbers = text.split(QLatin1Char(' '));
            QCOMPARE(numbers.at(1).toInt(), next[numbers.at(0).toInt()]++);
        }
    }

    void destinationsAreFoundAndTakenOutByType()
    {
        Logger& logger = Logger::instance();
        const auto second = std::make_shared<CollectedLines>();
        logger.addDestination(std::make_unique<CollectingDestination>(second, QStringLiteral("twin")));
        const auto third = std::make_shared<CollectedLines>();
        auto last = std::make_unique<CollectingDestination>(third, QStringLiteral("twin"));
        Destination* lastAddress = last.get();
        logger.addDestination(std::move(last));
        QVERIFY(logger.hasDestinationOfType("twin"));
        QVERIFY(!logger.hasDestinationOfType("Twin"));

        const DestinationPtr taken = logger.removeDestination(QStringLiteral("twin"));
        QVERIFY(taken && taken.get() != lastAddress);
        QVERIFY(logger.hasDestinationOfType("twin"));
        KORA_LOG_INFO << "after";
        QVERIFY(third->waitFor(1));
        QVERIFY(second->texts().isEmpty());
        QVERIFY(lines->waitFor(1));

        QCOMPARE(logger.removeDestination(QStringLiteral("twin")).get(), lastAddress);
        QVERIFY(!logger.removeDestination(QStringLiteral("twin")));
        QVERIFY(!logger.hasDestinationOfType("twin"));
    }

    void lineGoesToEachDestinationInTheOrderOfAddition()
    {
        const auto shared = std::make_shared<CollectedLines>();
        const auto rename = [](const LogMessage& message, const char* suffix) {
            return LogMessage(message.message + QLatin1String(suffix), message.time, message.level);
        };
        class Marking : public CollectingDestination
        {
        public:
            Marking(std::shared_ptr<CollectedLines> collected, std::function<LogMessage(const LogMessage&)> how)
                : CollectingDestination(std::move(collected), QStringLiteral("marking")), mark(std::move(how))
            {
            }
            void write(const LogMessage& message) override { CollectingDestination::write(mark(message)); }

        private:
            std::function<LogMessage(const LogMessage&)> mark;
        };
        for (const char* suffix : {"1", "2", "3"}) {
            Logger::instance().addDestination(
                std::make_unique<Marking>(shared, [=](const LogMessage& message) { return rename(message, suffix); }));
        }
        KORA_LOG_INFO << "m";
        QVERIFY(shared->waitFor(3));
        QCOMPARE(shared->texts(), QStringList({QStringLiteral("m 1"), QStringLiteral("m 2"), QStringLiteral("m 3")}));
        while (Logger::instance().removeDestination(QStringLiteral("marking"))) {
        }
    }

    void slowDestinationDoesNotHoldUpTheCaller()
    {
        std::promise<void> entered;
        std::promise<void> letGo;
        Logger::instance().addDestination(std::make_unique<SlowDestination>(entered, letGo.get_future().share()));
        KORA_LOG_INFO << "first";
        entered.get_future().wait();
        for (int line = 0; line < 100; ++line)
            KORA_LOG_INFO << line;
        // Reached although the worker stands still.
        letGo.set_value();
        QVERIFY(lines->waitFor(101));
        QVERIFY(Logger::instance().removeDestination(QStringLiteral("slow")));
    }

    void functionOfAFunctorDestinationGetsTraceToo()
    {
        functionCalls = 0;
        const DestinationPtr functor = DestinationMaker::newFunctorDestination(countCall);
        QCOMPARE(functor->type(), QStringLiteral("functor"));
        QVERIFY(functor->isValid());
        QSignalSpy emitted(dynamic_cast<QObject*>(functor.get()), SIGNAL(logMessageReady(QsLogging::LogMessage)));
        QVERIFY(emitted.isValid());
        functor->write(LogMessage(QStringLiteral("t"), QDateTime::currentDateTimeUtc(), TraceLevel));
        QCOMPARE(functionCalls.load(), 1);
        QCOMPARE(emitted.count(), 0);
        functor->write(LogMessage(QStringLiteral("d"), QDateTime::currentDateTimeUtc(), DebugLevel));
        QCOMPARE(functionCalls.load(), 2);
        QCOMPARE(emitted.count(), 1);
        QCOMPARE(emitted.at(0).at(0).value<LogMessage>().message, QStringLiteral("d"));
    }

    void receiverGetsLinesAboveTraceOnItsOwnThread()
    {
        LineReceiver receiver;
        Logger::instance().addDestination(
            DestinationMaker::newFunctorDestination(&receiver, SLOT(take(QsLogging::LogMessage))));
        Logger::instance().setLevel(TraceLevel);
        KORA_LOG_TRACE << "trace";
        KORA_LOG_DEBUG << "debug";
        KORA_LOG_INFO << "info";
        // Queued: nothing arrives before this thread turns its event loop.
        QVERIFY(lines->waitFor(3));
        QVERIFY(receiver.texts.isEmpty());
        QTRY_COMPARE(receiver.texts.size(), 2);
        QCOMPARE(receiver.texts, QStringList({QStringLiteral("debug "), QStringLiteral("info ")}));
        QCOMPARE(receiver.calledOn, thread());
        Logger::instance().removeDestination(QStringLiteral("functor"));
    }

    void consoleDestinationIsAlwaysValid()
    {
        const DestinationPtr console = DestinationMaker::newDebugOutputDestination();
        QCOMPARE(console->type(), QStringLiteral("console"));
        QVERIFY(console->isValid());
    }
};

QTEST_GUILESS_MAIN(LoggerTest)
#include "LoggerTest.moc"
