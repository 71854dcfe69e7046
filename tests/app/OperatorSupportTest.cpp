// Amplifier ranges, display settings and ports: what an operator sets or plugs is seen to act on the
// simulated installation, through the windows that the menu opens.

#include "app/Globals.h"
#include "app/SimulatedSession.h"
#include "app/TraceExtent.h"
#include "hardware/MailboxComm.h"
#include "stream/Updater.h"
#include "support/Operator.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QtTest>

#include <qcustomplot.h>

using operate::find;
using operate::press;

class OperatorSupportTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<SimulatedSession> session;

    QWidget* amplifier(const char* name) { return find<QWidget>(session->widgetOf("WindowPico"), name); }
    QStringList currents(const char* name)
    {
        QStringList shown;
        for (const char* line : {"currentCh1Line", "currentCh2Line", "currentCh3Line", "currentCh4Line"})
            shown.append(find<QLineEdit>(amplifier(name), line)->text());
        return shown;
    }
    void setRange(const char* name, const QString& range)
    {
        find<QComboBox>(amplifier(name), "rangeBox")->setCurrentText(range);
        press(find<QPushButton>(amplifier(name), "saveButton"));
    }

    QWidget* displaySettings() { return session->widgetOf("WindowDisplaySettings"); }
    void confirmDisplaySettings()
    {
        press(find<QDialogButtonBox>(displaySettings(), "buttonBox"), QStringLiteral("OK"));
    }
    QString portText(int row, int port)
    {
        const QTableWidgetItem* item =
            find<QTableWidget>(session->widgetOf("WindowSFPstatus"), "SFPsTable")->item(row, port);
        return item ? item->text() : QStringLiteral("(no item)");
    }

private slots:
    void init() { session = std::make_unique<SimulatedSession>(); }
    void cleanup() { session.reset(); }

    void aTooSmallRangeClipsTheCurrentsOfThatAmplifier()
    {
        session->trigger("actionPico_Amp");
        session->tick();
        for (const QString& current : currents("widgetPico0"))
            QVERIFY2(current.toDouble() > 5e-7 && current.toDouble() < 5e-6, qPrintable(current));

        setRange("widgetPico0", QStringLiteral("1"));
        session->tick();
        const QString full = QStringLiteral("1.00000e-07");
        QCOMPARE(currents("widgetPico0"), QStringList({full, full, full, full}));
        for (const QString& current : currents("widgetPico1"))
            QVERIFY2(current.toDouble() > 5e-7, qPrintable(current));
        for (const QCPDataMap* trace : updater->dataCurrents[0])
            QCOMPARE(trace->at(trace->size() - 1)->value, 1e-7);

        setRange("widgetPico0", QStringLiteral("0"));
        session->tick();
        for (const QString& current : currents("widgetPico0"))
            QVERIFY2(current.toDouble() > 5e-7, qPrintable(current));
    }

    void anUnpluggedAmplifierLeavesTheDialog()
    {
        session->trigger("actionPico_Amp");
        session->tick();
        QVERIFY(amplifier("widgetPico0")->isVisible() && amplifier("widgetPico1")->isVisible());
        session->plant().plug(0, 0);
        session->tick();
        QVERIFY(!amplifier("widgetPico0")->isVisible() && amplifier("widgetPico1")->isVisible());
        session->plant().plug(1, 0);
        session->tick();
        QVERIFY(!amplifier("widgetPico0")->isVisible() && !amplifier("widgetPico1")->isVisible());
    }

    void portsShowWhatIsPluggedIn()
    {
        session->trigger("actionSFP_info");
        session->tick();
        QCOMPARE(portText(1, 0), QStringLiteral("Ionbar"));
        QCOMPARE(portText(1, 1), QStringLiteral("Ionbar"));
        QCOMPARE(portText(1, 2), QStringLiteral("Anvolt"));
        QCOMPARE(portText(3, 0), QStringLiteral("1.0.2.4"));
        QCOMPARE(portText(1, 3), QStringLiteral("(no item)"));

        session->plant().plug(3, 0x2340);
        session->plant().plug(1, 0);
        session->tick();
        QCOMPARE(portText(1, 3), QStringLiteral("Cogtrak (SFP)"));
        QCOMPARE(portText(1, 1), QStringLiteral("(no item)"));
    }

    void rateAndWindowSetTheTimeAxisOfTheGraphs()
    {
        session->trigger("action_Display_Settings");
        find<QDoubleSpinBox>(displaySettings(), "dispFreqBox")->setValue(5000);
        find<QComboBox>(displaySettings(), "bufferSamplesComboBox")->setCurrentText(QStringLiteral("2048"));
        confirmDisplaySettings();
        QCOMPARE(mailbox->getDisplayFreq(nullptr), 5000.0);
        session->tick();
        const QCPDataMap& trace = *session->plotOf(QStringLiteral("Graph Position X"))->graph(0)->data();
        QCOMPARE(trace.size(), 2048);
        QCOMPARE(trace.at(0)->key, 0.0);
        QCOMPARE(trace.at(2047)->key, double(2047.0f / 5000.0f));
        // At the new rate the window is shorter than the second that passed: not one record is from before.
        session->plant().quietBeam();
        session->tick();
        QVERIFY(TraceExtent(trace).deviation < 0.01);
    }

    void filterTakesTheNoiseAboveTheDisplayRateAway()
    {
        session->plant().quietBeam();
        session->plant().setNoise(1.0, 0.0);
        session->trigger("action_Display_Settings");
        auto* filter = find<QCheckBox>(displaySettings(), "enableFilterCheckBox");
        double deviation[2] = {};
        for (const bool filtered : {false, true}) {
            filter->setChecked(filtered);
            confirmDisplaySettings();
            session->tick(15);
            deviation[filtered] = TraceExtent(*updater->dataPosX[0]).deviation;
        }
        QVERIFY2(deviation[true] < 0.5 * deviation[false],
                 qPrintable(QStringLiteral("%1 of %2 um").arg(deviation[true]).arg(deviation[false])));
    }

    void pauseFreezesTheGraphsButNotTheAmplifierDialog()
    {
        session->trigger("actionPico_Amp");
        session->trigger("action_Display_Settings");
        session->tick();
        find<QCheckBox>(displaySettings(), "pauseCheckBox")->click();
        const double position = updater->dataPosX[0]->at(14335)->value;
        const QStringList before = currents("widgetPico0");
        session->tick();
        QCOMPARE(updater->dataPosX[0]->at(14335)->value, position);
        QVERIFY(currents("widgetPico0") != before);

        press(find<QDialogButtonBox>(displaySettings(), "buttonBox"), QStringLiteral("Cancel"));
        session->trigger("action_Display_Settings");
        QVERIFY(find<QCheckBox>(displaySettings(), "pauseCheckBox")->isChecked());
        find<QCheckBox>(displaySettings(), "pauseCheckBox")->click();
        session->tick();
        QVERIFY(updater->dataPosX[0]->at(14335)->value != position);
    }
};

QTEST_MAIN(OperatorSupportTest)
#include "OperatorSupportTest.moc"
