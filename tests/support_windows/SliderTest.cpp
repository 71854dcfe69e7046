#include "support/Slider.h"

#include "support/Operator.h"

#include <QFrame>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QSignalSpy>
#include <QSlider>
#include <QtTest>

#include <cmath>
#include <limits>

using operate::find;

class SliderTest : public QObject
{
    Q_OBJECT

private:
    static QStringList labels(const Slider& slider)
    {
        QStringList texts;
        const auto* row = find<QHBoxLayout>(&slider, "labelRow");
        for (int i = 0; i < row->count(); ++i) {
            if (const auto* label = qobject_cast<QLabel*>(row->itemAt(i)->widget()))
                texts.append(label->text());
        }
        return texts;
    }
    static int tickMarks(const Slider& slider)
    {
        int marks = 0;
        const auto* row = find<QHBoxLayout>(&slider, "tickRow");
        for (int i = 0; i < row->count(); ++i) {
            const auto* mark = qobject_cast<QFrame*>(row->itemAt(i)->widget());
            marks += mark && mark->frameShape() == QFrame::VLine;
        }
        return marks;
    }
    static int bar(const Slider& slider) { return find<QProgressBar>(&slider, "bar")->value(); }

private slots:
    void sliderAndBarShareACellAboveTheScale()
    {
        Slider slider;
        QCOMPARE(slider.size(), QSize(569, 390));
        const auto* grid = find<QGridLayout>(&slider, "gridLayout");
        const auto at = [grid](const QObject* object) {
            for (int i = 0; i < grid->count(); ++i) {
                QLayoutItem* item = grid->itemAt(i);
                if (item->widget() == object || item->layout() == object) {
                    int row, column, rows, columns;
                    grid->getItemPosition(i, &row, &column, &rows, &columns);
                    return QPoint(row, column);
                }
            }
            return QPoint(-1, -1);
        };
        const auto* track = find<QSlider>(&slider, "slider");
        const auto* level = find<QProgressBar>(&slider, "bar");
        QCOMPARE(at(track), QPoint(0, 0));
        QCOMPARE(at(level), QPoint(0, 0));
        QCOMPARE(at(find<QHBoxLayout>(&slider, "tickRow")), QPoint(0, 0));
        QCOMPARE(at(find<QHBoxLayout>(&slider, "labelRow")), QPoint(1, 0));
        QCOMPARE(grid->rowMinimumHeight(0), 55);
        QCOMPARE(level->minimumHeight(), 30);
        QVERIFY(!level->isTextVisible());
        QCOMPARE(track->orientation(), Qt::Horizontal);
        QCOMPARE(track->sizePolicy().horizontalPolicy(), QSizePolicy::Expanding);
        QCOMPARE(track->maximum(), 99);
    }

    void signalAndSlotsHaveTheirOrder()
    {
        const QMetaObject& meta = Slider::staticMetaObject;
        QByteArrayList signatures;
        for (int i = meta.methodOffset(); i < meta.methodCount(); ++i)
            signatures.append(meta.method(i).methodSignature());
        QCOMPARE(signatures, (QByteArrayList{"valueChanged(float)", "signalSender(int)", "setValue(float)"}));
    }

    void firstScaleRunsFromZeroToOne()
    {
        Slider slider;
        QCOMPARE(labels(slider), (QStringList{QStringLiteral("0"), QStringLiteral("0.2"), QStringLiteral("0.4"),
                                              QStringLiteral("0.6"), QStringLiteral("0.8"), QStringLiteral("1e+00")}));
        QCOMPARE(tickMarks(slider), 6);
    }

    void scaleIsPrintedAnew()
    {
        Slider slider;
        slider.setScale(4, -10.0F, 30.0F);
        QCOMPARE(labels(slider), (QStringList{QStringLiteral("-10"), QStringLiteral("0"), QStringLiteral("10"),
                                              QStringLiteral("20"), QStringLiteral("3e+01")}));
        QCOMPARE(tickMarks(slider), 5);
        // The labels and marks of the scale before are gone, not only hidden.
        QCOMPARE(slider.findChildren<QLabel*>().size(), 5);
        const auto* row = find<QHBoxLayout>(&slider, "labelRow");
        QCOMPARE(qobject_cast<QLabel*>(row->itemAt(0)->widget())->alignment(), Qt::AlignCenter);
        QVERIFY(qobject_cast<QLabel*>(row->itemAt(row->count() - 1)->widget())->alignment() & Qt::AlignRight);
        QVERIFY(row->itemAt(1)->spacerItem());
    }

    void scaleWithoutTicksHasItsEndAlone()
    {
        for (const int ticks : {0, -3}) {
            Slider slider;
            slider.setScale(ticks, 0.0F, 2000.0F);
            QCOMPARE(labels(slider), QStringList{QStringLiteral("2e+03")});
            QCOMPARE(tickMarks(slider), 1);
        }
    }

    void movedSliderTellsItsValueInUnitsOfTheScale()
    {
        Slider slider;
        slider.setScale(5, -10.0F, 30.0F);
        QSignalSpy changed(&slider, SIGNAL(valueChanged(float)));
        find<QSlider>(&slider, "slider")->setValue(25);
        find<QSlider>(&slider, "slider")->setValue(99);
        QCOMPARE(changed.count(), 2);
        QCOMPARE(changed.at(0).at(0).toFloat(), 0.0F);
        QCOMPARE(changed.at(1).at(0).toFloat(), 29.6F);
    }

    void barShowsTheLevelWithinTheScale()
    {
        Slider slider;
        slider.setScale(5, -10.0F, 30.0F);
        const float values[] = {-10.1F, -10.0F, 0.0F, 0.39F, 10.0F, 30.0F, 30.1F};
        const int shown[] = {0, 0, 25, 25, 50, 100, 100};
        for (int i = 0; i < 7; ++i) {
            slider.setBarValue(50.0F);
            slider.setBarValue(values[i]);
            QCOMPARE(bar(slider), shown[i]);
        }
        QCOMPARE(find<QSlider>(&slider, "slider")->value(), 0);
    }

    void sliderPositionSubtractsTheBeginningOfTheScale()
    {
        Slider slider;
        slider.setScale(5, 10.0F, 60.0F);
        // 30 * 100 / 50 - 10
        slider.setSliderPosition(30.0F);
        QCOMPARE(find<QSlider>(&slider, "slider")->value(), 50);
        slider.setSliderPosition(30.9F);
        QCOMPARE(find<QSlider>(&slider, "slider")->value(), 51);
        slider.setSliderPosition(1000.0F);
        QCOMPARE(find<QSlider>(&slider, "slider")->value(), 99);
    }

    void valueGetsAScaleToTheTenthPowerOfItsMagnitude()
    {
        Slider slider;
        slider.setValue(500.0F);
        QCOMPARE(labels(slider),
                 (QStringList{QStringLiteral("0"), QStringLiteral("11809.8"), QStringLiteral("23619.6"),
                              QStringLiteral("35429.4"), QStringLiteral("47239.2"), QStringLiteral("6e+04")}));
        QCOMPARE(bar(slider), 0);
        slider.setValue(50.0F);
        // 2 to the tenth power
        QCOMPARE(labels(slider).last(), QStringLiteral("1e+03"));
        QCOMPARE(bar(slider), 4);
    }

    void valueBelowOneFillsTheBarOfAnEmptyScale()
    {
        Slider slider;
        slider.setValue(0.5F);
        QCOMPARE(labels(slider).last(), QStringLiteral("0e+00"));
        QCOMPARE(bar(slider), 100);
    }

    void emptyScaleLeavesTheBarAndKeepsTheSliderInRange()
    {
        Slider slider;
        slider.setBarValue(0.3F);
        slider.setScale(5, 2.0F, 2.0F);
        slider.setBarValue(2.0F);
        QCOMPARE(bar(slider), 30);
        slider.setSliderPosition(2.0F);
        QCOMPARE(find<QSlider>(&slider, "slider")->value(), 0);
        slider.setValue(0.0F);
        slider.setValue(-1.0F);
        slider.setBarValue(std::numeric_limits<float>::quiet_NaN());
        QVERIFY(bar(slider) >= 0);
    }
};

QTEST_MAIN(SliderTest)
#include "SliderTest.moc"
