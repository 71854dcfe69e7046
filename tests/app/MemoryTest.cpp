// Ten minutes of live display in driven time: what is resident after the first minute is resident at the end.

#include "app/SimulatedSession.h"

#include <QDockWidget>
#include <QFile>
#include <QtTest>

#include <unistd.h>

namespace {

constexpr int firstMinute = 60;
constexpr int tenMinutes = 600;

double residentBytes()
{
    QFile file(QStringLiteral("/proc/self/statm"));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    return file.readAll().split(' ').value(1).toDouble() * double(::sysconf(_SC_PAGESIZE));
}

} // namespace

class MemoryTest : public QObject
{
    Q_OBJECT

private slots:
    void residentMemoryIsFlatOverTenMinutesOfLiveDisplay()
    {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
        QSKIP("a sanitizer's quarantine grows by itself");
#endif
        SimulatedSession session;
        const QList<QDockWidget*> docks = session.window().findChildren<QDockWidget*>();
        double atFirstMinute = 0;
        for (int second = 1; second <= tenMinutes; ++second) {
            // Every tab is looked at, several times within the first minute.
            docks.at(second % docks.size())->raise();
            session.tick();
            if (second == firstMinute)
                atFirstMinute = residentBytes();
        }
        const double growth = residentBytes() / atFirstMinute - 1;
        qInfo("resident after one minute %.1f MB, growth to ten minutes %.2f %%", atFirstMinute / 1e6, growth * 100);
        QVERIFY(atFirstMinute > 0);
        QVERIFY2(growth < 0.01, qPrintable(QString::number(growth)));
    }
};

QTEST_MAIN(MemoryTest)
#include "MemoryTest.moc"
