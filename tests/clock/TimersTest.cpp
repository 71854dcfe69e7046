// The timers of the real program on the simulated installation, in driven time: the display and the poll are served
// once a second from the first to the last, and the time that this takes does not add up.
//
// KORA_TIMERS_SECONDS   driven seconds; ten minutes if none are given

#include "support/PrivateSettings.h"

#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
#include <cmath>

namespace {

constexpr int tenMinutes = 600;
constexpr int shortestWaitMs = 120000;
/// Real time that a driven second may take at the most; it takes some 20 ms.
constexpr int slowestSecondMs = 500;

/// Share by which Qt may move a timer at its start, from tick to tick, until several fall together at a half of a
/// second; that takes five ticks at the most.
constexpr double coarse = 0.05;
constexpr int settledTicks = 10;
/// Driven time that a service takes. Both may come at once, so that one sees the other's.
constexpr int workMs = 20;
constexpr double jitter = 2 * workMs * 1e-3;
/// Room for rounding to whole milliseconds.
constexpr double rounding = 2e-3;

struct Service
{
    double count;
    double first;
    double tenth;
    double last;
    double shortest;
    double longest;
};

Service serviceOf(const QString& report, const char* name)
{
    const QRegularExpression line(
        QStringLiteral("^%1 (\\S+) first (\\S+) tenth (\\S+) last (\\S+) shortest (\\S+) longest (\\S+)$")
            .arg(QLatin1String(name)),
        QRegularExpression::MultilineOption);
    const QRegularExpressionMatch match = line.match(report);
    const auto number = [&match](int group) { return match.captured(group).toDouble(); };
    return {number(1), number(2), number(3), number(4), number(5), number(6)};
}

} // namespace

class TimersTest : public QObject
{
    Q_OBJECT

private:
    int seconds = tenMinutes;
    QString report;

private slots:
    void initTestCase()
    {
        if (!private_settings::isPossible())
            QSKIP("user namespaces are refused here: no settings folder of its own for the program");
        if (qEnvironmentVariableIsSet("KORA_TIMERS_SECONDS"))
            seconds = qEnvironmentVariableIntValue("KORA_TIMERS_SECONDS");

        QTemporaryDir folder;
        QVERIFY(QFile::copy(QStringLiteral(KORA_TRAINING_SETTINGS),
                            folder.filePath(QStringLiteral("config_koralink.ini"))));
        QTemporaryDir results;
        const QString reportPath = results.filePath(QStringLiteral("report"));
        QStringList options;
        const auto set = [&options](const char* name, const QString& value) {
            options += {QStringLiteral("--setenv"), QLatin1String(name), value};
        };
        set("LD_LIBRARY_PATH", QStringLiteral(KORA_SIMULATION_FOLDER));
        set("LD_PRELOAD", QStringLiteral(KORA_DRIVEN_CLOCK));
        set("KORA_CLOCK_UNTIL", QString::number(seconds));
        set("KORA_CLOCK_WORK", QString::number(workMs * 1000));
        set("KORA_CLOCK_REPORT", reportPath);
        QProcess program;
        program.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        private_settings::start(program, folder.path(), options, QStringLiteral(KORA_PROGRAM));
        QVERIFY(program.waitForFinished(std::max(shortestWaitMs, seconds * slowestSecondMs)));
        QCOMPARE(program.exitStatus(), QProcess::NormalExit);
        QCOMPARE(program.exitCode(), 0);

        QFile file(reportPath);
        QVERIFY(file.open(QIODevice::ReadOnly));
        report = QString::fromLatin1(file.readAll());
        qInfo("%s", qPrintable(report));
    }

    void servedOnceASecondFromFirstToLast_data()
    {
        QTest::addColumn<QByteArray>("name");
        QTest::newRow("display") << QByteArray("display");
        QTest::newRow("poll") << QByteArray("poll");
    }
    void servedOnceASecondFromFirstToLast()
    {
        QFETCH(QByteArray, name);
        const Service service = serviceOf(report, name.constData());
        QVERIFY2(std::abs(service.count - seconds) <= 1, qPrintable(QString::number(service.count)));
        const double slack = coarse + jitter + rounding;
        QVERIFY2(service.first <= 1 + slack, qPrintable(QString::number(service.first)));
        QVERIFY2(service.last >= seconds - 1 - slack, qPrintable(QString::number(service.last)));
        QVERIFY2(service.shortest >= 1 - slack, qPrintable(QString::number(service.shortest)));
        QVERIFY2(service.longest <= 1 + slack, qPrintable(QString::number(service.longest)));
        const double drift = service.last - service.tenth - (service.count - settledTicks);
        QVERIFY2(std::abs(drift) <= jitter + rounding, qPrintable(QString::number(drift)));
    }
};

QTEST_GUILESS_MAIN(TimersTest)
#include "TimersTest.moc"
