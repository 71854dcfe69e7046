#include "feedback/WidgetPidCtrl.h"
#include "app/Globals.h"
#include "double/KoralinkDouble.h"
#include "feedback/WidgetPIDparams.h"
#include "feedback/WindowPIDparams.h"
#include "hardware/MailboxComm.h"
#include "logging/Level.h"
#include "support/LogLines.h"
#include "support/Operator.h"
#include "support/ScratchSettings.h"
#include "support/World.h"

#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QtTest>

#include <memory>

using namespace koralink_double;
using operate::find;

namespace {

constexpr const char* tabs[4] = {"posXlfwidget", "posXhfwidget", "posYlfwidget", "posYhfwidget"};
constexpr const char* groups[4] = {"PID_Xlf", "PID_Xhf", "PID_Ylf", "PID_Yhf"};

struct Field
{
    const char *object, *caption, *key;
    int decimals;
    double minimum, maximum, step, initial;
};

// Step 1 and maximum 99.99 are those of the control.
constexpr Field fields[] = {
    {"curFreqBox", "Freq:", "Freq", 0, 1.0, 1000.0, 1.0, 100.0},
    {"boxKp", "Kp:", "Kp", 5, 0.0, 1e7, 0.01, 0.3},
    {"boxKi", "Ki:", "Ki", 5, 0.0, 1e8, 0.01, 0.1},
    {"boxKd", "Kd:", "Kd", 5, 0.0, 1e7, 0.01, 0.01},
    {"boxemin", "e min:", "emin", 5, 0.0, 1000.0, 1.0, 0.0},
    {"boxImax", "I max:", "Imax", 5, 0.0, 100000.0, 1.0, 100.0},
    {"boxOmin", "O min:", "Omin", 5, -99.0, 99.99, 1.0, -12.0},
    {"boxOmax", "O max:", "Omax", 5, -99.0, 99.99, 1.0, 12.0},
    {"boxOgain", "O gain:", "Ogain", 5, -90.0, 100000.0, 1.0, -1.0},
    {"offsetDoubleSpinBox", "Offset", "Offset", 2, -12.0, 12.0, 0.1, 0.0},
};
constexpr int fieldCount = 10;

/// A value of its own for each field of each loop, within all ranges.
double valueOf(int loop, int field)
{
    return field == 0 ? 100.0 * (loop + 1) : loop + 0.5 * field;
}

QByteArray key(int loop, int field)
{
    return QByteArray(groups[loop]) + '/' + fields[field].key;
}

} // namespace

class WidgetPidCtrlTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<World> world;
    std::unique_ptr<WidgetPidCtrl> panel;

    WidgetPIDparams* tab(int loop) const { return find<WidgetPIDparams>(panel.get(), tabs[loop]); }
    QDoubleSpinBox* box(int loop, int field) const { return find<QDoubleSpinBox>(tab(loop), fields[field].object); }
    void fillFields()
    {
        for (int loop = 0; loop < 4; ++loop) {
            for (int field = 0; field < fieldCount; ++field)
                box(loop, field)->setValue(valueOf(loop, field));
        }
    }
    void pressUpdate() { operate::press(find<QPushButton>(panel.get(), "pushButtonUpdate")); }

private slots:
    void init()
    {
        koralink_double::reset();
        world = std::make_unique<World>();
        userLevel = 2;
        panel = std::make_unique<WidgetPidCtrl>();
        clearCalls();
    }
    void cleanup()
    {
        panel.reset();
        world.reset();
    }

    void fieldsHaveTheirRanges_data()
    {
        QTest::addColumn<int>("index");
        for (int i = 0; i < fieldCount; ++i)
            QTest::newRow(fields[i].object) << i;
    }
    void fieldsHaveTheirRanges()
    {
        QFETCH(int, index);
        const Field& field = fields[index];
        const WidgetPIDparams params;
        const auto* spin = find<QDoubleSpinBox>(&params, field.object);
        QCOMPARE(spin->decimals(), field.decimals);
        QCOMPARE(spin->minimum(), field.minimum);
        QCOMPARE(spin->maximum(), field.maximum);
        QCOMPARE(spin->singleStep(), field.step);
        QCOMPARE(spin->value(), field.initial);
        QCOMPARE(spin->suffix(), index == 0 ? QStringLiteral("Hz") : QString());
        const auto* form = params.findChild<QFormLayout*>();
        const auto* caption = qobject_cast<QLabel*>(form->labelForField(const_cast<QDoubleSpinBox*>(spin)));
        QVERIFY(caption);
        QCOMPARE(caption->text(), QString::fromLatin1(field.caption));
    }

    void realFrequencyIsTheLoopRateOverAWholeNumber_data()
    {
        QTest::addColumn<int>("rate");
        QTest::addColumn<double>("freq");
        QTest::addColumn<int>("divider");
        QTest::addColumn<QString>("shown");
        QTest::newRow("fastest") << 10000 << 1000.0 << 10 << "1000.00 Hz";
        QTest::newRow("slowest") << 10000 << 1.0 << 10000 << "1.00 Hz";
        QTest::newRow("does not divide") << 10000 << 300.0 << 33 << "303.03 Hz";
        QTest::newRow("initial") << 10000 << 100.0 << 100 << "100.00 Hz";
        QTest::newRow("rounded up") << 10000 << 667.0 << 15 << "666.67 Hz";
        QTest::newRow("half rounds up") << 10000 << 800.0 << 13 << "769.23 Hz";
        QTest::newRow("encoder box") << 5000 << 300.0 << 17 << "294.12 Hz";
    }
    void realFrequencyIsTheLoopRateOverAWholeNumber()
    {
        QFETCH(int, rate);
        QFETCH(double, freq);
        sampFreq = rate;
        WidgetPIDparams params;
        find<QDoubleSpinBox>(&params, "curFreqBox")->setValue(freq);
        QTEST(find<QLineEdit>(&params, "realFreqLine")->text(), "shown");
        QTEST(params.divider(), "divider");
    }

    void realFrequencyIsShownFromTheStartAndCannotBeEdited()
    {
        const WidgetPIDparams params;
        QCOMPARE(find<QLineEdit>(&params, "realFreqLine")->text(), QStringLiteral("100.00 Hz"));
        QVERIFY(!find<QLineEdit>(&params, "realFreqLine")->isEnabled());
    }

    void realFrequencyFollowsTheLoopRateOnlyWithTheField()
    {
        box(0, 0)->setValue(300.0);
        auto* real = find<QLineEdit>(tab(0), "realFreqLine");
        QCOMPARE(real->text(), QStringLiteral("303.03 Hz"));
        sampFreq = 5000;
        QCOMPARE(real->text(), QStringLiteral("303.03 Hz"));
        pressUpdate();
        QCOMPARE(operate::lines(callsOf("setWindAvg")).first(), QStringLiteral("setWindAvg(0, 17)"));
        box(0, 0)->setValue(301.0);
        box(0, 0)->setValue(300.0);
        QCOMPARE(real->text(), QStringLiteral("294.12 Hz"));
    }

    void storedValuesAreShownAndNotSent()
    {
        for (int loop = 0; loop < 4; ++loop) {
            for (int field = 0; field < fieldCount; ++field)
                scratch_settings::setValue(key(loop, field).constData(), valueOf(loop, field));
        }
        scratch_settings::setValue("PID_Xhf/Freq", 300.0);
        clearCalls();
        panel = std::make_unique<WidgetPidCtrl>();
        QVERIFY(calls().empty());
        QCOMPARE(find<QLineEdit>(tab(1), "realFreqLine")->text(), QStringLiteral("303.03 Hz"));
        scratch_settings::setValue("PID_Xhf/Freq", 200.0);
        for (int loop = 0; loop < 4; ++loop) {
            for (int field = 1; field < fieldCount; ++field) {
                // The lower output limit of this loop is read from a key that nobody writes.
                const bool lost = loop == 2 && field == 6;
                QCOMPARE(box(loop, field)->value(), lost ? 0.0 : valueOf(loop, field));
            }
        }
    }

    void missingValuesReadAsZeroWithinTheRange()
    {
        for (int loop = 0; loop < 4; ++loop) {
            QCOMPARE(box(loop, 0)->value(), 1.0);
            QCOMPARE(find<QLineEdit>(tab(loop), "realFreqLine")->text(), QStringLiteral("1.00 Hz"));
            for (int field = 1; field < fieldCount; ++field)
                QCOMPARE(box(loop, field)->value(), 0.0);
        }
    }

    void whatIsNoFiniteNumberIsShownAndSentAsZero()
    {
        for (int field = 0; field < fieldCount; ++field)
            scratch_settings::setValue(key(0, field).constData(),
                                       field % 2 ? QStringLiteral("nan") : QStringLiteral("inf"));
        panel = std::make_unique<WidgetPidCtrl>();
        clearCalls();
        pressUpdate();
        for (int field = 1; field < fieldCount; ++field)
            QCOMPARE(box(0, field)->value(), 0.0);
        QCOMPARE(operate::lines(callsOf("setPIDparams")).first(),
                 QStringLiteral("setPIDparams(0, 0, 0, 0, 0, 0, 0, 0, 0)"));
        QCOMPARE(operate::lines(callsOf("setWindAvg")).first(), QStringLiteral("setWindAvg(0, 10000)"));
    }

    void updateSendsWindowsOffsetsAndParameters()
    {
        fillFields();
        pressUpdate();
        QStringList expected;
        for (int loop = 0; loop < 4; ++loop)
            expected.append(QStringLiteral("setWindAvg(%1, %2)").arg(loop).arg(qRound(100.0 / (loop + 1))));
        expected.append(QStringLiteral("setOffset(4.5, 5.5, 6.5, 7.5)"));
        for (int loop = 0; loop < 4; ++loop) {
            QStringList arguments{QString::number(loop)};
            for (int field = 1; field < 9; ++field)
                arguments.append(QString::number(valueOf(loop, field)));
            expected.append(QStringLiteral("setPIDparams(%1)").arg(arguments.join(QStringLiteral(", "))));
        }
        QCOMPARE(operate::lines(commands()), expected);
    }

    void updateStoresEveryField()
    {
        fillFields();
        box(0, 0)->setValue(300.0);
        pressUpdate();
        for (int loop = 0; loop < 4; ++loop) {
            for (int field = 0; field < fieldCount; ++field) {
                // The requested frequency, not the real one
                const double expected = loop == 0 && field == 0 ? 300.0 : valueOf(loop, field);
                QCOMPARE(scratch_settings::value(key(loop, field).constData()).toDouble(), expected);
            }
        }
    }

    void failuresAreLoggedAndTheFileIsWrittenAllTheSame()
    {
        fillFields();
        for (const char* function : {"setWindAvg", "setOffset", "setPIDparams"})
            fail(function);
        LogLines log(QsLogging::TraceLevel);
        pressUpdate();
        QCOMPARE(commands().size(), std::size_t(9));
        QCOMPARE(scratch_settings::value("PID_Yhf/Offset").toDouble(), valueOf(3, 9));
        const QStringList lines = log.lines();
        QCOMPARE(lines.size(), 10);
        QVERIFY2(lines.first().startsWith(QLatin1String("0 Loading PID parameters to FPGA and config_koralink.ini")),
                 qPrintable(lines.first()));
        QVERIFY(lines.at(1).startsWith(QLatin1String("3 setWindAvg() failed")));
        QVERIFY(lines.at(5).startsWith(QLatin1String("3 setOffset() failed")));
        QVERIFY(lines.at(9).startsWith(QLatin1String("3 setPIDparams() failed")));
    }

    void parametersCanBeSentWhileThePidRunsAndUnchecked()
    {
        mailbox->pidStatus = PidStatusOn;
        box(0, 6)->setValue(5.0);
        box(0, 7)->setValue(-5.0);
        pressUpdate();
        QVERIFY(operate::lines(callsOf("setPIDparams")).first().endsWith(QLatin1String(", 5, -5, 0)")));
    }

    void tabsAreForTheHighestLevelAndUpdateForAll()
    {
        auto* tabWidget = find<QTabWidget>(panel.get(), "verticalTabWidget");
        const int levels[] = {0, 3, 2, 1, 7, 2, -1, 2, 9};
        const bool enabled[] = {false, false, true, false, false, true, false, true, true};
        for (int i = 0; i < 9; ++i) {
            userLevel = levels[i];
            QMetaObject::invokeMethod(panel.get(), "enableAndDisableFields");
            QCOMPARE(tabWidget->isEnabled(), enabled[i]);
            QVERIFY(find<QPushButton>(panel.get(), "pushButtonUpdate")->isEnabled());
        }
        userLevel = 1;
        panel = std::make_unique<WidgetPidCtrl>();
        QVERIFY(!find<QTabWidget>(panel.get(), "verticalTabWidget")->isEnabled());
        clearCalls();
        pressUpdate();
        QCOMPARE(commands().size(), std::size_t(9));
    }

    void tabsAreInLoopOrder()
    {
        const auto* tabWidget = find<QTabWidget>(panel.get(), "verticalTabWidget");
        const char* titles[4] = {"X (LF)", "X (HF)", "Y (LF)", "Y (HF)"};
        const char* pages[4] = {"tabXlf", "tabXhf", "tabYlf", "tabYhf"};
        QCOMPARE(tabWidget->count(), 4);
        QCOMPARE(tabWidget->currentIndex(), 0);
        for (int loop = 0; loop < 4; ++loop) {
            QCOMPARE(tabWidget->tabText(loop), QString::fromLatin1(titles[loop]));
            QCOMPARE(tabWidget->widget(loop)->objectName(), QString::fromLatin1(pages[loop]));
            QVERIFY(tabWidget->widget(loop)->isAncestorOf(tab(loop)));
        }
        QCOMPARE(find<QPushButton>(panel.get(), "pushButtonUpdate")->text(), QStringLiteral("Update"));
    }

    void dialogShowsThePictureOfTheLoop()
    {
        WindowPIDparams window;
        QCOMPARE(window.windowTitle(), QStringLiteral("PID Parameters"));
        int pictures = 0;
        int captions = 0;
        for (const QLabel* label : window.findChildren<QLabel*>()) {
            captions += label->text() == QLatin1String("PID Structure");
            const QPixmap shown = label->pixmap(Qt::ReturnByValue);
            if (shown.isNull())
                continue;
            ++pictures;
            QVERIFY(label->hasScaledContents());
            QCOMPARE(shown.toImage(), QPixmap(QStringLiteral(":/images/images/KORA_PID.png")).toImage());
            QVERIFY(shown.width() > 500);
        }
        QCOMPARE(captions, 1);
        QCOMPARE(pictures, 1);
    }

    void aFieldThatWasNotSentIsBoldUntilUpdate()
    {
        for (int loop = 0; loop < 4; ++loop) {
            for (int field = 0; field < fieldCount; ++field) {
                const double before = box(loop, field)->value();
                box(loop, field)->setValue(valueOf(loop, field));
                QVERIFY(before != valueOf(loop, field));
                QVERIFY(box(loop, field)->font().bold());
            }
        }
        box(2, 1)->setValue(box(2, 1)->value() + 1);
        operate::press(find<QPushButton>(panel.get(), "pushButtonUpdate"));
        for (int loop = 0; loop < 4; ++loop) {
            for (int field = 0; field < fieldCount; ++field)
                QVERIFY(!box(loop, field)->font().bold());
        }
        const double sent = box(1, 3)->value();
        box(1, 3)->setValue(sent + 1);
        QVERIFY(box(1, 3)->font().bold());
        QVERIFY(!box(1, 4)->font().bold());
        box(1, 3)->setValue(sent);
        QVERIFY(!box(1, 3)->font().bold());
    }
};

QTEST_MAIN(WidgetPidCtrlTest)
#include "WidgetPidCtrlTest.moc"
