// Live display in driven time: what is resident after a tenth of the time, an hour at most, is resident at the end.
//
// KORA_SOAK_SECONDS   simulated seconds; 86400 are the day that docs/robustness.md tells of, otherwise ten minutes

#include "app/SimulatedSession.h"

#include <QDockWidget>
#include <QFile>
#include <QtTest>

#include <unistd.h>

#include <algorithm>
#include <cmath>

namespace {

constexpr int tenMinutes = 600;
constexpr int hour = 3600;
constexpr int quarterOfAnHour = 900;

double residentBytes()
{
    QFile file(QStringLiteral("/proc/self/statm"));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    return file.readAll().split(' ').value(1).toDouble() * double(::sysconf(_SC_PAGESIZE));
}

/// What an installation goes through every quarter of an hour: the beam is dumped, an amplifier is replugged.
void tellEvents(kora::simulation::SimulationControl& plant, int second)
{
    switch (second % quarterOfAnHour) {
    case 20:
        plant.setBeamOn(false);
        break;
    case 40:
        plant.setBeamOn(true);
        break;
    case 45:
        plant.plug(1, 0);
        break;
    case 50:
        plant.plug(1, 0x2101);
        break;
    default:
        break;
    }
}

} // namespace

class MemoryTest : public QObject
{
    Q_OBJECT

private slots:
    void residentMemoryIsFlatWhileTheDisplayLives()
    {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
        QSKIP("a sanitizer's quarantine grows by itself");
#endif
        const int seconds = qEnvironmentVariableIsSet("KORA_SOAK_SECONDS")
                                ? qEnvironmentVariableIntValue("KORA_SOAK_SECONDS")
                                : tenMinutes;
        const int settled = std::min(hour, seconds / 10);
        SimulatedSession session;
        const QList<QDockWidget*> docks = session.window().findChildren<QDockWidget*>();
        double settledBytes = 0;
        for (int second = 1; second <= seconds; ++second) {
            // Every tab is looked at, several times before the memory is taken for settled.
            docks.at(second % docks.size())->raise();
            tellEvents(session.plant(), second);
            session.tick();
            if (second == settled)
                settledBytes = residentBytes();
            if (second % hour == 0)
                qInfo("%d h: %.2f MB", second / hour, residentBytes() / 1e6);
        }
        const double growth = residentBytes() / settledBytes - 1;
        qInfo("resident after %d s %.1f MB, growth to %d s %.2f %%", settled, settledBytes / 1e6, seconds,
              growth * 100);
        QVERIFY(settledBytes > 0);
        QVERIFY2(growth < 0.01, qPrintable(QString::number(growth)));
        QVERIFY2(std::abs(session.plant().time() - seconds) < 1e-3, "the simulated clock drifts against the ticks");
    }
};

QTEST_MAIN(MemoryTest)
#include "MemoryTest.moc"
