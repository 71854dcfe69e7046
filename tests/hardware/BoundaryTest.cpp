#include <QProcess>
#include <QtTest>

namespace {

/// Lines that a program prints, on the simulation; empty when it fails.
QStringList linesOf(const QString& program, const QStringList& arguments = {})
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("LD_LIBRARY_PATH"), QStringLiteral(KORA_SIMULATION_FOLDER));
    process.setProcessEnvironment(environment);
    process.start(program, arguments);
    if (!process.waitForFinished() || process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0)
        return QStringList();
    return QString::fromLocal8Bit(process.readAllStandardOutput()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

/// First words of the lines.
QStringList names(const QStringList& lines)
{
    QStringList words;
    for (const QString& line : lines)
        words.append(line.section(QLatin1Char(' '), 0, 0));
    return words;
}

} // namespace

/// Programs beside the operator interface stand on the hardware boundary, with neither Qt nor windows.
class BoundaryTest : public QObject
{
    Q_OBJECT

private slots:
    void aProgramOnTheBoundaryAloneNeedsNoQt()
    {
        const QStringList needed =
            linesOf(QStringLiteral("readelf"), {QStringLiteral("-dW"), QStringLiteral(KORA_READER)})
                .filter(QStringLiteral("(NEEDED)"));
        QCOMPARE(needed.filter(QStringLiteral("[libkoralink.so.1]")).size(), 1);
        QCOMPARE(needed.filter(QStringLiteral("Qt")), QStringList());
        QCOMPARE(needed.filter(QStringLiteral("qcustomplot")), QStringList());
    }

    void itReadsEverySignalByTheNameOfItsField()
    {
        const QStringList lines = linesOf(QStringLiteral(KORA_READER)).mid(0, 24);
        QStringList fields = names(lines);
        fields.sort();
        QCOMPARE(
            fields.join(QLatin1Char(' ')),
            QStringLiteral("cur1_0 cur1_1 cur1_2 cur1_3 cur2_0 cur2_1 cur2_2 cur2_3 dac0 dac1 dac2 dac3 funcGenRefA "
                           "funcGenRefB int1 int2 pos1X pos1Y pos2X pos2Y xHf xLf yHf yLf"));
        for (const QString& line : lines.filter(QStringLiteral("int")))
            QVERIFY2(line.section(QLatin1Char(' '), 1, 1).toDouble() > 1e-9 && line.endsWith(QLatin1String(" A")),
                     qPrintable(line));
        for (const QString& line : lines.filter(QStringLiteral("pos")))
            QVERIFY2(line.endsWith(QLatin1String(" um")), qPrintable(line));
    }

    void itKnowsStatusRateAndLoops()
    {
        QCOMPARE(
            linesOf(QStringLiteral(KORA_READER)).mid(24),
            QStringList({QStringLiteral("high voltage 0 V"), QStringLiteral("status Feedback OFF"),
                         QStringLiteral("rate 1000 Hz"), QStringLiteral("loop Xlf"), QStringLiteral("loop Xhf"),
                         QStringLiteral("loop Ylf"), QStringLiteral("loop Yhf"), QStringLiteral("parameter Freq"),
                         QStringLiteral("parameter Kp"), QStringLiteral("parameter Ki"), QStringLiteral("parameter Kd"),
                         QStringLiteral("parameter emin"), QStringLiteral("parameter Imax"),
                         QStringLiteral("parameter Omin"), QStringLiteral("parameter Omax"),
                         QStringLiteral("parameter Ogain"), QStringLiteral("parameter Offset")}));
    }
};

QTEST_APPLESS_MAIN(BoundaryTest)
#include "BoundaryTest.moc"
