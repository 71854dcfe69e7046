#include "support/WindowDisplaySettings.h"
#include "app/Globals.h"
#include "double/KoralinkDouble.h"
#include "stream/Updater.h"
#include "support/Operator.h"
#include "support/World.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QtTest>

#include <memory>

using namespace koralink_double;

class WindowDisplaySettingsTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<World> world;
    std::unique_ptr<WindowDisplaySettings> window;

    void open()
    {
        window = std::make_unique<WindowDisplaySettings>();
        window->showAndRefresh();
    }
    void press(const QString& button)
    {
        operate::press(operate::find<QDialogButtonBox>(window.get(), "buttonBox"), button);
    }
    void changeEverythingAndCancel()
    {
        open();
        rate()->setValue(3000);
        filter()->setChecked(false);
        samples()->setCurrentText(QStringLiteral("1024"));
        pause()->click();
        press(QStringLiteral("Cancel"));
    }
    QDoubleSpinBox* rate() { return operate::find<QDoubleSpinBox>(window.get(), "dispFreqBox"); }
    QCheckBox* filter() { return operate::find<QCheckBox>(window.get(), "enableFilterCheckBox"); }
    QComboBox* samples() { return operate::find<QComboBox>(window.get(), "bufferSamplesComboBox"); }
    QCheckBox* pause() { return operate::find<QCheckBox>(window.get(), "pauseCheckBox"); }

private slots:
    void init()
    {
        koralink_double::reset();
        world = std::make_unique<World>();
    }
    void cleanup()
    {
        window.reset();
        world.reset();
    }

    void textsAndLimitsOfTheForm()
    {
        open();
        QCOMPARE(window->windowTitle(), QStringLiteral("Display Settings"));
        QStringList labels;
        for (const QLabel* label : window->findChildren<QLabel*>())
            labels.append(label->text());
        QCOMPARE(labels, QStringList({QStringLiteral("Display frequency:"), QStringLiteral("Enable filter: "),
                                      QStringLiteral("Buffer samples:"), QStringLiteral("Pause:")}));
        QCOMPARE(rate()->suffix(), QStringLiteral(" Hz"));
        QCOMPARE(rate()->decimals(), 0);
        QCOMPARE(rate()->minimum(), 0.0);
        QCOMPARE(rate()->maximum(), 20000.0);
        QStringList items;
        for (int i = 0; i < samples()->count(); ++i)
            items.append(samples()->itemText(i));
        QCOMPARE(items, QStringList({QStringLiteral("1024"), QStringLiteral("2048"), QStringLiteral("4096"),
                                     QStringLiteral("8192"), QStringLiteral("14336")}));
        QCOMPARE(operate::find<QDialogButtonBox>(window.get(), "buttonBox")->standardButtons(),
                 QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    }

    void constructionTakesTheFilterOfTheLibraryButNotItsRate_data()
    {
        QTest::addColumn<int>("flag");
        QTest::addColumn<bool>("checked");
        QTest::newRow("off") << 0 << false;
        QTest::newRow("on") << 1 << true;
        QTest::newRow("any other value is on") << 7 << true;
    }
    void constructionTakesTheFilterOfTheLibraryButNotItsRate()
    {
        QFETCH(int, flag);
        answers().displayFilter = static_cast<unsigned char>(flag);
        answers().displayFreq = 5000;
        SAMP_FREQ = 2000;
        window = std::make_unique<WindowDisplaySettings>();
        QTEST(filter()->isChecked(), "checked");
        QCOMPARE(rate()->value(), 2000.0);
        QCOMPARE(SAMP_FREQ, 2000);
        QCOMPARE(samples()->currentText(), QStringLiteral("1024"));
        QVERIFY(!window->isVisible());
        QCOMPARE(callsOf("getDisplayFreq").size(), std::size_t(1));
    }

    void openingShowsThePresentValues()
    {
        window = std::make_unique<WindowDisplaySettings>();
        updater->paused = true;
        SAMP_FREQ = 7500;
        dispBufferBytes = 4096 * 256;
        window->showAndRefresh();
        QVERIFY(window->isVisible());
        QVERIFY(pause()->isChecked());
        QVERIFY(updater->paused);
        QCOMPARE(rate()->value(), 7500.0);
        QCOMPARE(samples()->currentText(), QStringLiteral("4096"));
    }

    void openingAfterStartShowsTheLargestWindow()
    {
        open();
        QCOMPARE(samples()->currentText(), QStringLiteral("14336"));
    }

    void okSendsRateAndFilterAndStoresTheWindow_data()
    {
        QTest::addColumn<int>("hertz");
        QTest::addColumn<bool>("filtered");
        QTest::addColumn<QString>("window");
        QTest::addColumn<int>("bytes");
        QTest::addColumn<QString>("call");
        QTest::newRow("shortest") << 10000 << false << "1024" << 0x40000 << "setDisplayFreq(10000, 0)";
        QTest::newRow("2048") << 1 << true << "2048" << 0x80000 << "setDisplayFreq(1, 1)";
        QTest::newRow("4096") << 20000 << true << "4096" << 0x100000 << "setDisplayFreq(20000, 1)";
        QTest::newRow("8192") << 1000 << true << "8192" << 0x200000 << "setDisplayFreq(1000, 1)";
        QTest::newRow("longest") << 50 << false << "14336" << 0x380000 << "setDisplayFreq(50, 0)";
    }
    void okSendsRateAndFilterAndStoresTheWindow()
    {
        QFETCH(int, hertz);
        QFETCH(bool, filtered);
        QFETCH(QString, window);
        dispBufferBytes = 256;
        open();
        rate()->setValue(hertz);
        filter()->setChecked(filtered);
        samples()->setCurrentText(window);
        press(QStringLiteral("OK"));
        QCOMPARE(SAMP_FREQ, hertz);
        QTEST(dispBufferBytes, "bytes");
        QFETCH(QString, call);
        QCOMPARE(operate::lines(commands()), QStringList(call));
        QVERIFY(!this->window->isVisible());
    }

    void rateOfZeroIsAccepted()
    {
        open();
        rate()->setValue(0);
        press(QStringLiteral("OK"));
        QCOMPARE(SAMP_FREQ, 0);
        QCOMPARE(operate::lines(commands()), QStringList(QStringLiteral("setDisplayFreq(0, 1)")));
    }

    void newRateAndWindowAreUsedByTheNextUpdate()
    {
        open();
        samples()->setCurrentText(QStringLiteral("2048"));
        press(QStringLiteral("OK"));
        updater->updateGraphs();
        QCOMPARE(operate::lines(callsOf("getBuffer")), QStringList(QStringLiteral("getBuffer(2048)")));
    }

    void failingCommandKeepsTheNewRate()
    {
        open();
        fail("setDisplayFreq");
        rate()->setValue(3000);
        samples()->setCurrentText(QStringLiteral("1024"));
        press(QStringLiteral("OK"));
        QCOMPARE(SAMP_FREQ, 3000);
        QCOMPARE(dispBufferBytes, 1024 * 256);
    }

    void cancelChangesNothingButThePause()
    {
        changeEverythingAndCancel();
        QCOMPARE(SAMP_FREQ, 1000);
        QCOMPARE(dispBufferBytes, 0x380000);
        QVERIFY(commands().empty());
        QVERIFY(updater->paused);
        QVERIFY(!window->isVisible());
    }

    void reopeningAfterCancelShowsThePauseAndTheCancelledFilter()
    {
        changeEverythingAndCancel();
        window->showAndRefresh();
        QVERIFY(pause()->isChecked());
        QVERIFY(!filter()->isChecked());
        QCOMPARE(rate()->value(), 1000.0);
        QCOMPARE(samples()->currentText(), QStringLiteral("14336"));
    }

    void pauseActsAtOnceInBothDirections()
    {
        open();
        pause()->click();
        QVERIFY(updater->paused);
        updater->updateGraphs();
        QVERIFY(callsOf("getBuffer").empty());
        pause()->click();
        QVERIFY(!updater->paused);
    }

    void filterIsNotRefreshedAtOpening()
    {
        open();
        press(QStringLiteral("Cancel"));
        answers().displayFilter = 0;
        window->showAndRefresh();
        QVERIFY(filter()->isChecked());
        QCOMPARE(callsOf("getDisplayFreq").size(), std::size_t(1));
    }

    void windowOfAnotherLengthLeavesTheChoiceAsItWas()
    {
        open();
        samples()->setCurrentText(QStringLiteral("2048"));
        dispBufferBytes = 3000 * 256;
        window->showAndRefresh();
        QCOMPARE(samples()->currentText(), QStringLiteral("2048"));
    }
};

QTEST_MAIN(WindowDisplaySettingsTest)
#include "WindowDisplaySettingsTest.moc"
