#include "feedback/WindowFiltparams.h"

#include "app/Globals.h"
#include "double/KoralinkDouble.h"
#include "feedback/FilterDesign.h"
#include "support/Operator.h"
#include "support/ScratchSettings.h"
#include "support/World.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QGroupBox>
#include <QImage>
#include <QPushButton>
#include <QtTest>

#include <memory>

using namespace koralink_double;
using operate::find;

namespace {

constexpr double Ts = 0.0001;

struct Coefficients
{
    arma::rowvec b = arma::linspace<arma::rowvec>(1, 5, 5);
    arma::rowvec a = arma::linspace<arma::rowvec>(1, 5, 5);
};

Coefficients lowpass(double fcut)
{
    Coefficients set;
    butterLowpass(4, fcut, Ts, set.b, set.a);
    return set;
}

Coefficients bandpass(double low, double high)
{
    Coefficients set;
    butterBandpass(2, low, high, Ts, set.b, set.a);
    return set;
}

using Arguments = std::vector<double>;

/// The nine coefficient calls of one filter, in their order, with every bit of their values.
std::vector<Arguments> coefficientCalls(double band, double axis, const Coefficients& set)
{
    std::vector<Arguments> expected = {{band, axis, 0, 0, set.b(0)}};
    for (arma::uword k = 1; k <= 4; ++k) {
        expected.push_back({band, axis, 1, double(k), -set.a(k)});
        expected.push_back({band, axis, 0, double(k), set.b(k)});
    }
    return expected;
}

std::vector<Arguments> argumentsOf(const std::string& name)
{
    std::vector<Arguments> arguments;
    for (const Call& call : calls()) {
        if (call.name == name)
            arguments.push_back(call.arguments);
    }
    return arguments;
}

void storeFilters(double lf, double low, double high)
{
    for (const char* key : {"XlfFilter", "YlfFilter", "XhfFilter", "YhfFilter"})
        scratch_settings::setValue(QByteArray("PositionFilters/").append(key).constData(), 0);
    scratch_settings::setValue("PositionFilters/XlfFcutLow", lf);
    scratch_settings::setValue("PositionFilters/YlfFcutLow", lf);
    scratch_settings::setValue("PositionFilters/XhfFcutLow", low);
    scratch_settings::setValue("PositionFilters/YhfFcutLow", low);
    scratch_settings::setValue("PositionFilters/XhfFcutHigh", high);
    scratch_settings::setValue("PositionFilters/YhfFcutHigh", high);
}

} // namespace

class WindowFiltparamsTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<World> world;
    std::unique_ptr<WindowFiltparams> window;

    void showAtLevel(int level)
    {
        userLevel = level;
        window->showWindow();
    }
    QDoubleSpinBox* box(const char* name) { return find<QDoubleSpinBox>(window.get(), name); }
    QComboBox* combo(const char* name) { return find<QComboBox>(window.get(), name); }
    QWidget* controls() { return find<QGroupBox>(window.get(), "groupBoxConfigFilters"); }
    void press(const char* text)
    {
        operate::press(find<QDialogButtonBox>(window.get(), "buttonBox"), QString::fromLatin1(text));
    }

private slots:
    void init()
    {
        koralink_double::reset();
        world = std::make_unique<World>();
        window = std::make_unique<WindowFiltparams>(nullptr);
    }
    void cleanup()
    {
        window.reset();
        world.reset();
    }

    void formOffersTheFieldsOfTheFourFilters()
    {
        QCOMPARE(window->windowTitle(), QStringLiteral("Positions Filter Parameters"));
        QVERIFY(!controls()->isEnabled());
        for (const char* name : {"comboBoxFilterXlf", "comboBoxFilterYlf"}) {
            QCOMPARE(combo(name)->count(), 2);
            QCOMPARE(combo(name)->itemText(0), QStringLiteral("Low-pass"));
            QCOMPARE(combo(name)->itemText(1), QStringLiteral("Full-band"));
        }
        for (const char* name : {"comboBoxFilterXhf", "comboBoxFilterYhf"}) {
            QCOMPARE(combo(name)->count(), 1);
            QCOMPARE(combo(name)->itemText(0), QStringLiteral("Band-pass"));
        }
        for (const char* name :
             {"doubleSpinBoxXlfLow", "doubleSpinBoxYlfLow", "doubleSpinBoxXhfLow", "doubleSpinBoxYhfLow"}) {
            QCOMPARE(box(name)->decimals(), 1);
            QCOMPARE(box(name)->minimum(), 1.0);
            QCOMPARE(box(name)->value(), 10.0);
            // The control's own limit of 99.99, rounded to the decimals of the field.
            QCOMPARE(box(name)->maximum(), 100.0);
        }
        for (const char* name : {"doubleSpinBoxXhfHigh", "doubleSpinBoxYhfHigh"}) {
            QCOMPARE(box(name)->decimals(), 1);
            QCOMPARE(box(name)->minimum(), 10.0);
            QCOMPARE(box(name)->maximum(), 200.0);
            QCOMPARE(box(name)->value(), 100.0);
        }
        QVERIFY(commands().empty());
    }

    void diagramOfTheFilterIsCarriedInGrey()
    {
        const QImage diagram(QStringLiteral(":/images/images/iirfilter.png"));
        QVERIFY(!diagram.isNull());
        QVERIFY(diagram.allGray());
    }

    void levelIsLookedAtOnlyWhenShown()
    {
        showAtLevel(1);
        QVERIFY(!controls()->isEnabled());
        userLevel = 2;
        QVERIFY(!controls()->isEnabled());
        window->showWindow();
        QVERIFY(controls()->isEnabled());
        showAtLevel(3);
        QVERIFY(controls()->isEnabled());
        showAtLevel(0);
        QVERIFY(!controls()->isEnabled());
        showAtLevel(3);
        QVERIFY(!controls()->isEnabled());
    }

    void showFillsTheFieldsFromTheFile()
    {
        storeFilters(12.5, 20.5, 150.0);
        showAtLevel(2);
        QCOMPARE(box("doubleSpinBoxXlfLow")->value(), 12.5);
        QCOMPARE(box("doubleSpinBoxYlfLow")->value(), 12.5);
        QCOMPARE(box("doubleSpinBoxXhfLow")->value(), 20.5);
        QCOMPARE(box("doubleSpinBoxYhfHigh")->value(), 150.0);
        QVERIFY(commands().empty());
    }

    void missingFileShowsTheLowestFrequencies()
    {
        showAtLevel(2);
        QCOMPARE(box("doubleSpinBoxXlfLow")->value(), 1.0);
        QCOMPARE(box("doubleSpinBoxYhfLow")->value(), 1.0);
        QCOMPARE(box("doubleSpinBoxYhfHigh")->value(), 10.0);
    }

    void storedFullBandReachesTheHardwareAtShow()
    {
        scratch_settings::setValue("PositionFilters/YlfFilter", 1);
        showAtLevel(0);
        QCOMPARE(operate::lines(commands()), QStringList{QStringLiteral("setFiltControl(0, 1, 1)")});
        QVERIFY(find<QWidget>(window.get(), "widgetYlf")->isHidden());
        QVERIFY(!find<QWidget>(window.get(), "widgetXlf")->isHidden());
    }

    void typeActsAtOnceAndCancelDoesNotUndoIt()
    {
        showAtLevel(2);
        combo("comboBoxFilterXlf")->setCurrentIndex(1);
        QVERIFY(find<QWidget>(window.get(), "widgetXlf")->isHidden());
        combo("comboBoxFilterYlf")->setCurrentIndex(1);
        combo("comboBoxFilterXlf")->setCurrentIndex(0);
        QVERIFY(!find<QWidget>(window.get(), "widgetXlf")->isHidden());
        press("Cancel");
        QVERIFY(!window->isVisible());
        const QStringList expected = {QStringLiteral("setFiltControl(0, 0, 1)"),
                                      QStringLiteral("setFiltControl(0, 1, 1)"),
                                      QStringLiteral("setFiltControl(0, 0, 0)")};
        QCOMPARE(operate::lines(commands()), expected);
    }

    void applySendsTheFourFiltersInOrderAndStays()
    {
        showAtLevel(2);
        box("doubleSpinBoxXlfLow")->setValue(100.0);
        box("doubleSpinBoxYlfLow")->setValue(1.0);
        box("doubleSpinBoxXhfLow")->setValue(10.0);
        box("doubleSpinBoxXhfHigh")->setValue(100.0);
        box("doubleSpinBoxYhfLow")->setValue(20.0);
        box("doubleSpinBoxYhfHigh")->setValue(200.0);
        clearCalls();
        press("Apply");
        QVERIFY(window->isVisible());

        std::vector<Arguments> expected;
        for (const auto& part :
             {coefficientCalls(0, 0, lowpass(100.0)), coefficientCalls(0, 1, lowpass(1.0)),
              coefficientCalls(1, 0, bandpass(10.0, 100.0)), coefficientCalls(1, 1, bandpass(20.0, 200.0))})
            expected.insert(expected.end(), part.begin(), part.end());
        QVERIFY(argumentsOf("setFiltCoef") == expected);
        // Each filter is committed behind its nine coefficients, and nothing else is sent.
        const std::vector<Call> sent = calls();
        QCOMPARE(sent.size(), std::size_t(40));
        for (std::size_t i = 0; i < sent.size(); ++i)
            QCOMPARE(sent[i].name == "commitFiltCoef", i % 10 == 9);
        const std::vector<Arguments> commits = {{0, 0}, {0, 1}, {1, 0}, {1, 1}};
        QVERIFY(argumentsOf("commitFiltCoef") == commits);
        QCOMPARE(scratch_settings::value("PositionFilters/XlfFcutLow").toDouble(), 100.0);
        QCOMPARE(scratch_settings::value("PositionFilters/YlfFcutLow").toDouble(), 1.0);
        QCOMPARE(scratch_settings::value("PositionFilters/XhfFcutLow").toDouble(), 10.0);
        QCOMPARE(scratch_settings::value("PositionFilters/YhfFcutHigh").toDouble(), 200.0);
    }

    void okAppliesAndCloses()
    {
        showAtLevel(2);
        press("OK");
        QVERIFY(!window->isVisible());
        QCOMPARE(argumentsOf("commitFiltCoef").size(), std::size_t(4));
    }

    void unchangedValuesSendNothingButAreWrittenAgain()
    {
        storeFilters(12.3, 20.7, 150.1);
        showAtLevel(2);
        press("Apply");
        QVERIFY(commands().empty());
        QCOMPARE(scratch_settings::value("PositionFilters/XlfFcutLow").toDouble(), 12.3);
        QCOMPARE(scratch_settings::value("PositionFilters/YhfFcutHigh").toDouble(), 150.1);
        QVERIFY(scratch_settings::value("PositionFilters/XlfFcutHigh").isNull());
    }

    void onlyTheChangedFilterIsSent_data()
    {
        QTest::addColumn<QByteArray>("field");
        QTest::addColumn<int>("band");
        QTest::addColumn<int>("axis");
        QTest::newRow("Xlf") << QByteArray("doubleSpinBoxXlfLow") << 0 << 0;
        QTest::newRow("Ylf") << QByteArray("doubleSpinBoxYlfLow") << 0 << 1;
        QTest::newRow("Xhf low") << QByteArray("doubleSpinBoxXhfLow") << 1 << 0;
        QTest::newRow("Yhf high") << QByteArray("doubleSpinBoxYhfHigh") << 1 << 1;
    }
    void onlyTheChangedFilterIsSent()
    {
        QFETCH(QByteArray, field);
        QFETCH(int, band);
        QFETCH(int, axis);
        storeFilters(12.5, 20.5, 150.0);
        showAtLevel(2);
        box(field.constData())->setValue(30.1);
        press("Apply");
        const std::vector<Arguments> commits = {{double(band), double(axis)}};
        QVERIFY(argumentsOf("commitFiltCoef") == commits);
        QCOMPARE(argumentsOf("setFiltCoef").size(), std::size_t(9));
        clearCalls();
        press("Apply");
        QVERIFY(commands().empty());
    }

    void fullBandSendsTheInitialCoefficientsWhenNoneWasDesigned()
    {
        storeFilters(12.5, 20.5, 150.0);
        showAtLevel(2);
        combo("comboBoxFilterXlf")->setCurrentIndex(1);
        clearCalls();
        press("Apply");
        QVERIFY(argumentsOf("setFiltCoef") == coefficientCalls(0, 0, Coefficients()));
        QCOMPARE(callsOf("commitFiltCoef").size(), std::size_t(1));
        QCOMPARE(scratch_settings::value("PositionFilters/XlfFilter").toInt(), 1);
    }

    void fullBandSendsTheLastDesign()
    {
        storeFilters(12.5, 20.5, 150.0);
        showAtLevel(2);
        box("doubleSpinBoxYlfLow")->setValue(40.0);
        press("Apply");
        combo("comboBoxFilterYlf")->setCurrentIndex(1);
        box("doubleSpinBoxYlfLow")->setValue(50.0);
        clearCalls();
        press("Apply");
        QVERIFY(argumentsOf("setFiltCoef") == coefficientCalls(0, 1, lowpass(40.0)));
    }

    void designKeepsTheRateOf10kHz()
    {
        sampFreq = 5000;
        SAMP_FREQ = 50000;
        storeFilters(12.5, 20.5, 150.0);
        showAtLevel(2);
        box("doubleSpinBoxXlfLow")->setValue(40.0);
        press("Apply");
        QVERIFY(argumentsOf("setFiltCoef") == coefficientCalls(0, 0, lowpass(40.0)));
    }

    void equalEdgesSendNumeratorsOfZero()
    {
        storeFilters(12.5, 20.5, 150.0);
        showAtLevel(2);
        box("doubleSpinBoxXhfLow")->setValue(50.0);
        box("doubleSpinBoxXhfHigh")->setValue(50.0);
        press("Apply");
        const std::vector<Arguments> sent = argumentsOf("setFiltCoef");
        QCOMPARE(sent.size(), std::size_t(9));
        for (const Arguments& call : sent)
            QCOMPARE(call[4] == 0.0, call[2] == 0.0);
    }

    void swappedEdgesAreSentWithoutComplaint()
    {
        storeFilters(12.5, 20.5, 150.0);
        showAtLevel(2);
        box("doubleSpinBoxXhfLow")->setValue(80.0);
        box("doubleSpinBoxXhfHigh")->setValue(40.0);
        press("Apply");
        QVERIFY(argumentsOf("setFiltCoef") == coefficientCalls(1, 0, bandpass(80.0, 40.0)));
    }

    void okBelowLevelTwoClosesWithoutSendingOrSaving()
    {
        for (int level : {0, 1, 3}) {
            showAtLevel(2);
            userLevel = level;
            box("doubleSpinBoxXlfLow")->setValue(50.0);
            press("OK");
            QVERIFY(!window->isVisible());
            QVERIFY(commands().empty());
            QVERIFY(scratch_settings::value("PositionFilters/XlfFcutLow").isNull());
        }
    }

    void buttonsAreToldApartByTheirText_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("acts");
        for (const char* text : {"OK", "&OK", "Apply", "&Apply"})
            QTest::newRow(text) << QString::fromLatin1(text) << true;
        for (const char* text : {"Anwenden", "O&K", "apply", "Cancel", "Save"})
            QTest::newRow(text) << QString::fromLatin1(text) << false;
    }
    void buttonsAreToldApartByTheirText()
    {
        QFETCH(QString, text);
        QFETCH(bool, acts);
        showAtLevel(2);
        auto* buttons = find<QDialogButtonBox>(window.get(), "buttonBox");
        QPushButton* const button = buttons->button(QDialogButtonBox::Apply);
        button->setText(text);
        operate::press(button);
        QCOMPARE(!callsOf("commitFiltCoef").empty(), acts);
        QCOMPARE(!scratch_settings::value("PositionFilters/XlfFcutLow").isNull(), acts);
    }

    void failuresOfTheLibraryDoNotKeepTheFileFromBeingWritten()
    {
        for (const char* function : {"setFiltCoef", "commitFiltCoef", "setFiltControl"})
            fail(function);
        showAtLevel(2);
        combo("comboBoxFilterYlf")->setCurrentIndex(1);
        box("doubleSpinBoxXlfLow")->setValue(33.0);
        clearCalls();
        press("Apply");
        QCOMPARE(commands().size(), std::size_t(40));
        QCOMPARE(scratch_settings::value("PositionFilters/XlfFcutLow").toDouble(), 33.0);
        QCOMPARE(scratch_settings::value("PositionFilters/YlfFilter").toInt(), 1);
        QCOMPARE(window->writeFilterCoefficients(0, 0), -9);
    }

    void storedTypeThatDoesNotExistLeavesTheSelection()
    {
        storeFilters(12.5, 20.5, 150.0);
        scratch_settings::setValue("PositionFilters/XhfFilter", 1);
        scratch_settings::setValue("PositionFilters/XlfFilter", 7);
        showAtLevel(2);
        QCOMPARE(combo("comboBoxFilterXhf")->currentIndex(), 0);
        QCOMPARE(combo("comboBoxFilterXlf")->currentIndex(), 0);
        press("Apply");
        std::vector<Arguments> expected = coefficientCalls(0, 0, lowpass(12.5));
        const std::vector<Arguments> second = coefficientCalls(1, 0, bandpass(20.5, 150.0));
        expected.insert(expected.end(), second.begin(), second.end());
        QVERIFY(argumentsOf("setFiltCoef") == expected);
    }
};

QTEST_MAIN(WindowFiltparamsTest)
#include "WindowFiltparamsTest.moc"
