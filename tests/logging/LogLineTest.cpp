#include "logging/LogMessage.h"
#include "logging/Logger.h"

#include <QtTest>

using namespace QsLogging;

namespace {

QDateTime utc(const char* text)
{
    return QDateTime::fromString(QString::fromLatin1(text) + QLatin1Char('Z'), Qt::ISODateWithMs);
}

/// The line as its definition reads, by way of Qt's own formatting.
QString lineByDefinition(const QString& message, const QDateTime& time, const QString& level)
{
    return QStringLiteral("%1 %2 %3")
        .arg(level, time.toLocalTime().toString(QStringLiteral("yyyy-MM-ddThh:mm:ss.zzz")), message);
}

void useTimeZone(const char* name)
{
    qputenv("TZ", name);
    tzset();
}

} // namespace

class LogLineTest : public QObject
{
    Q_OBJECT

private slots:
    void eachLevelHasItsTextAndName_data()
    {
        QTest::addColumn<int>("level");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("name");
        QTest::newRow("trace") << 0 << QStringLiteral("TRACE") << QStringLiteral("Trace");
        QTest::newRow("debug") << 1 << QStringLiteral("DEBUG") << QStringLiteral("Debug");
        QTest::newRow("info") << 2 << QStringLiteral("INFO ") << QStringLiteral("Info");
        QTest::newRow("warn") << 3 << QStringLiteral("WARN ") << QStringLiteral("Warning");
        QTest::newRow("error") << 4 << QStringLiteral("ERROR") << QStringLiteral("Error");
        QTest::newRow("fatal") << 5 << QStringLiteral("FATAL") << QStringLiteral("Fatal");
        QTest::newRow("off") << 6 << QString() << QString();
        QTest::newRow("unknown") << 7 << QStringLiteral("INFO ") << QStringLiteral("Info");
        QTest::newRow("negative") << -1 << QStringLiteral("INFO ") << QStringLiteral("Info");
    }
    void eachLevelHasItsTextAndName()
    {
        QFETCH(int, level);
        QFETCH(QString, text);
        QFETCH(QString, name);
        QCOMPARE(levelText(level), text);
        QCOMPARE(levelName(level), name);
    }

    void lineIsLevelLocalTimeAndMessage()
    {
        useTimeZone("Europe/Ljubljana");
        const LogMessage warning(QStringLiteral("setFBenable() failed "), utc("2026-07-01T10:20:30.045"), 3);
        QCOMPARE(warning.formatted, QStringLiteral("WARN  2026-07-01T12:20:30.045 setFBenable() failed "));
        QCOMPARE(warning.message, QStringLiteral("setFBenable() failed "));
        QCOMPARE(warning.time, utc("2026-07-01T10:20:30.045"));
        QCOMPARE(warning.time.timeSpec(), Qt::UTC);
        QCOMPARE(warning.level, 3);
        const LogMessage fatal(QStringLiteral("x"), utc("2026-01-01T23:59:59.999"), 5);
        QCOMPARE(fatal.formatted, QStringLiteral("FATAL 2026-01-02T00:59:59.999 x"));
    }

    void percentSignsInTheMessageStayAsTheyAre()
    {
        const QString text = QStringLiteral("50 %1 %2 %%");
        const LogMessage message(text, utc("2026-01-01T00:00:00.000"), 2);
        QVERIFY(message.formatted.endsWith(QLatin1Char(' ') + text));
    }

    void lineIsTheOneOfTheDefinitionAroundChangesOfTheClock_data()
    {
        QTest::addColumn<QByteArray>("zone");
        QTest::addColumn<QDateTime>("change");
        QTest::newRow("spring") << QByteArray("Europe/Ljubljana") << utc("2026-03-29T01:00:00.000");
        QTest::newRow("autumn") << QByteArray("Europe/Ljubljana") << utc("2026-10-25T01:00:00.000");
        QTest::newRow("half an hour") << QByteArray("Australia/Lord_Howe") << utc("2026-04-04T15:00:00.000");
        QTest::newRow("before the epoch") << QByteArray("UTC") << utc("1969-12-31T23:59:59.500");
        QTest::newRow("year end") << QByteArray("America/New_York") << utc("2027-01-01T05:00:00.000");
    }
    void lineIsTheOneOfTheDefinitionAroundChangesOfTheClock()
    {
        QFETCH(QByteArray, zone);
        QFETCH(QDateTime, change);
        useTimeZone(zone.constData());
        // Forth and back, so that a remembered second is met again and left again.
        for (const int step : {1, -1}) {
            for (qint64 offset = -3000 * step; qAbs(offset) <= 3000; offset += 333 * step) {
                const QDateTime time = change.addMSecs(offset);
                QCOMPARE(LogMessage(QStringLiteral("m"), time, 4).formatted,
                         lineByDefinition(QStringLiteral("m"), time, QStringLiteral("ERROR")));
            }
        }
        for (int hour = -30; hour <= 30; ++hour) {
            const QDateTime time = change.addSecs(hour * 3600).addMSecs(7);
            QCOMPARE(LogMessage(QStringLiteral("m"), time, 4).formatted,
                     lineByDefinition(QStringLiteral("m"), time, QStringLiteral("ERROR")));
        }
    }

    void lineWithoutAValidTimeIsTheOneOfTheDefinition()
    {
        QCOMPARE(LogMessage(QStringLiteral("m"), QDateTime(), 2).formatted,
                 lineByDefinition(QStringLiteral("m"), QDateTime(), QStringLiteral("INFO ")));
    }

    void messageIsAMetatypeOfItsFullName()
    {
        const int type = QMetaType::type("QsLogging::LogMessage");
        QVERIFY(type != QMetaType::UnknownType);
        QCOMPARE(type, qMetaTypeId<LogMessage>());
    }

    void levelOfALineIsReadFromItsFirstFiveCharacters_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<bool>("parses");
        QTest::addColumn<int>("level");
        QTest::newRow("trace") << QStringLiteral("TRACE 2026 x") << true << 0;
        QTest::newRow("debug") << QStringLiteral("DEBUG") << true << 1;
        QTest::newRow("info") << QStringLiteral("INFO  2026") << true << 2;
        QTest::newRow("warn") << QStringLiteral("WARN  2026") << true << 3;
        QTest::newRow("error") << QStringLiteral("ERRORS") << true << 4;
        QTest::newRow("fatal") << QStringLiteral("FATAL 2026") << true << 5;
        QTest::newRow("info and a digit") << QStringLiteral("INFO1 2026") << false << 6;
        QTest::newRow("info cut short") << QStringLiteral("INFO") << false << 6;
        QTest::newRow("lower case") << QStringLiteral("error 2026") << false << 6;
        QTest::newRow("level later") << QStringLiteral(" ERROR") << false << 6;
        QTest::newRow("nothing") << QString() << false << 6;
    }
    void levelOfALineIsReadFromItsFirstFiveCharacters()
    {
        QFETCH(QString, line);
        QFETCH(bool, parses);
        bool ok = !parses;
        QTEST(Logger::levelOfLine(line, &ok), "level");
        QCOMPARE(ok, parses);
    }
};

QTEST_GUILESS_MAIN(LogLineTest)
#include "LogLineTest.moc"
