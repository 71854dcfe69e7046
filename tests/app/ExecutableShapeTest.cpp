#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QtTest>

namespace {

/// Lines that readelf prints about the program; empty when it fails.
QStringList readelf(const QString& option)
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("LC_ALL"), QStringLiteral("C"));
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral("readelf"), {QStringLiteral("-W"), option, QStringLiteral(KORA_PROGRAM)});
    if (!process.waitForFinished() || process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0)
        return QStringList();
    return QString::fromLocal8Bit(process.readAllStandardOutput()).split(QLatin1Char('\n'));
}

} // namespace

/// What the executable tells the loader: it needs the control library by name, wherever that is found.
class ExecutableShapeTest : public QObject
{
    Q_OBJECT

private slots:
    void needsTheControlLibraryByItsSoname()
    {
        const QStringList needed = readelf(QStringLiteral("-d")).filter(QStringLiteral("(NEEDED)"));
        QVERIFY(!needed.isEmpty());
        QCOMPARE(needed.filter(QStringLiteral("[libkoralink.so.1]")).size(), 1);
        QCOMPARE(needed.filter(QStringLiteral("koralink")).size(), 1);
    }

    void carriesNoRunPath()
    {
        const QStringList entries = readelf(QStringLiteral("-d"));
        QVERIFY(!entries.filter(QStringLiteral("(STRTAB)")).isEmpty());
        QCOMPARE(entries.filter(QRegularExpression(QStringLiteral("\\((RPATH|RUNPATH)\\)"))), QStringList());
    }

    void exportsTheStreamRate()
    {
        const QStringList rate =
            readelf(QStringLiteral("--dyn-syms")).filter(QRegularExpression(QStringLiteral("\\bSAMP_FREQ$")));
        QCOMPARE(rate.size(), 1);
        // Number, value, size, type, binding, visibility, section, name.
        const QStringList columns = rate.first().simplified().split(QLatin1Char(' '));
        QCOMPARE(columns.mid(2, 4), QStringList({QStringLiteral("4"), QStringLiteral("OBJECT"),
                                                 QStringLiteral("GLOBAL"), QStringLiteral("DEFAULT")}));
        QVERIFY2(columns.at(6) != QLatin1String("UND"), "referenced, not defined");
    }

    void exportsNothingButTheStreamRate()
    {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
        QSKIP("builds for a sanitizer export what it compares across the libraries");
#endif
        QStringList exported;
        for (const QString& line : readelf(QStringLiteral("--dyn-syms"))) {
            // A defined symbol has the number of its section.
            const QStringList columns = line.simplified().split(QLatin1Char(' '));
            if (columns.size() >= 8 && columns.at(6).toInt() > 0)
                exported.append(columns.at(7));
        }
        QCOMPARE(exported, QStringList(QStringLiteral("SAMP_FREQ")));
    }

    void carriesNoPathOfTheSimulation()
    {
        QFile program(QStringLiteral(KORA_PROGRAM));
        QVERIFY(program.open(QIODevice::ReadOnly));
        const QByteArray bytes = program.readAll();
        QVERIFY(bytes.contains("libkoralink.so.1"));
        QVERIFY(!bytes.contains("simulation"));
    }
};

QTEST_APPLESS_MAIN(ExecutableShapeTest)
#include "ExecutableShapeTest.moc"
