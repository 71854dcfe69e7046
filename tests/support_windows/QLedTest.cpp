#include "support/QLed.h"

#include <QMetaEnum>
#include <QPainter>
#include <QSvgRenderer>
#include <QtTest>

#include <functional>

namespace {

constexpr int size = 64;
const QColor background(12, 34, 56);

/// The lamp on a plain background.
QImage painted(QLed& led)
{
    led.resize(size, size);
    QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
    image.fill(background);
    led.render(&image, QPoint(), QRegion(), QWidget::DrawChildren);
    return image;
}

/// The picture itself, drawn apart from the widget.
QImage picture(const QString& path)
{
    QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
    image.fill(background);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    QSvgRenderer(path).render(&painter);
    return image;
}

class PaintCountingLed : public QLed
{
public:
    int paints = 0;

protected:
    void paintEvent(QPaintEvent* event) override
    {
        ++paints;
        QLed::paintEvent(event);
    }
};

QImage nothing()
{
    QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
    image.fill(background);
    return image;
}

} // namespace

class QLedTest : public QObject
{
    Q_OBJECT

private slots:
    void lampIsPaintedInItsColor_data()
    {
        QTest::addColumn<int>("color");
        QTest::addColumn<QString>("file");
        QTest::newRow("red") << 0 << ":/resources/round_red.svg";
        QTest::newRow("green") << 1 << ":/resources/round_green.svg";
        QTest::newRow("yellow") << 2 << ":/resources/round_yellow.svg";
        QTest::newRow("grey") << 3 << ":/resources/round_grey.svg";
        QTest::newRow("purple") << 5 << ":/resources/round_purple.svg";
    }
    void lampIsPaintedInItsColor()
    {
        QFETCH(int, color);
        QFETCH(QString, file);
        const QImage expected = picture(file);
        QVERIFY(expected != nothing());
        QLed off;
        off.setShape(QLed::Rounded);
        off.setOffColor(QLed::ledColor(color));
        QCOMPARE(painted(off), expected);
        QLed on;
        on.setShape(QLed::Rounded);
        on.setOnColor(QLed::ledColor(color));
        on.setValue(true);
        QCOMPARE(painted(on), expected);
    }

    void lampsDifferFromEachOther()
    {
        QVector<QImage> lamps;
        for (const int color : {0, 1, 2, 3, 5}) {
            QLed led;
            led.setShape(QLed::Rounded);
            led.setOffColor(QLed::ledColor(color));
            const QImage lamp = painted(led);
            QVERIFY(!lamps.contains(lamp));
            lamps.append(lamp);
        }
    }

    void lampsWithoutAPicturePaintNothing_data()
    {
        QTest::addColumn<int>("shape");
        QTest::addColumn<int>("color");
        for (int shape = 0; shape < 4; ++shape) {
            for (int color = 0; color < 7; ++color) {
                const bool delivered = shape == 3 && color != 4 && color != 6;
                if (!delivered)
                    QTest::newRow(qPrintable(QStringLiteral("%1 %2").arg(shape).arg(color))) << shape << color;
            }
        }
        QTest::newRow("no shape") << 17 << 0;
        QTest::newRow("no color") << 3 << -2;
    }
    void lampsWithoutAPicturePaintNothing()
    {
        QFETCH(int, shape);
        QFETCH(int, color);
        QLed led;
        led.setShape(QLed::Rounded);
        QVERIFY(painted(led) != nothing());
        led.setShape(QLed::ledShape(shape));
        led.setOffColor(QLed::ledColor(color));
        QCOMPARE(painted(led), nothing());
    }

    void lampStartsAsAGreyCircleThatPaintsNothing()
    {
        QLed led;
        QCOMPARE(led.value(), false);
        QCOMPARE(led.onColor(), QLed::Red);
        QCOMPARE(led.offColor(), QLed::Grey);
        QCOMPARE(led.shape(), QLed::Circle);
        QCOMPARE(painted(led), nothing());
    }

    void toggleChangesBetweenTheColors()
    {
        QLed led;
        led.setShape(QLed::Rounded);
        led.setOnColor(QLed::Green);
        led.toggleValue();
        QCOMPARE(led.value(), true);
        QCOMPARE(painted(led), picture(QStringLiteral(":/resources/round_green.svg")));
        led.toggleValue();
        QCOMPARE(led.value(), false);
        QCOMPARE(painted(led), picture(QStringLiteral(":/resources/round_grey.svg")));
    }

    void everyChangeIsPaintedAtOnceOnAShownLamp()
    {
        PaintCountingLed led;
        led.resize(size, size);
        led.show();
        QVERIFY(QTest::qWaitForWindowExposed(&led));
        const auto isPaintedAfter = [&led](const std::function<void()>& change) {
            QCoreApplication::processEvents();
            const int before = led.paints;
            change();
            return QTest::qWaitFor([&led, before] { return led.paints > before; });
        };
        QVERIFY(isPaintedAfter([&led] { led.setShape(QLed::Rounded); }));
        QVERIFY(isPaintedAfter([&led] { led.setOffColor(QLed::Red); }));
        QVERIFY(isPaintedAfter([&led] { led.setValue(true); }));
        QVERIFY(isPaintedAfter([&led] { led.setOnColor(QLed::Purple); }));
        QVERIFY(isPaintedAfter([&led] { led.toggleValue(); }));
    }

    void propertiesAndEnumerationsAreKnownByName()
    {
        QLed led;
        for (const char* name : {"value", "onColor", "offColor", "shape"}) {
            const int index = QLed::staticMetaObject.indexOfProperty(name);
            QVERIFY2(index >= 0, name);
            const QMetaProperty property = QLed::staticMetaObject.property(index);
            QVERIFY(property.isReadable() && property.isWritable() && property.isDesignable(&led));
        }
        QVERIFY(led.setProperty("offColor", QStringLiteral("Purple")));
        QCOMPARE(led.offColor(), QLed::Purple);
        const QMetaEnum colors = QMetaEnum::fromType<QLed::ledColor>();
        const QMetaEnum shapes = QMetaEnum::fromType<QLed::ledShape>();
        const char* colorNames[] = {"Red", "Green", "Yellow", "Grey", "Orange", "Purple", "Blue"};
        const char* shapeNames[] = {"Circle", "Square", "Triangle", "Rounded"};
        QCOMPARE(colors.keyCount(), 7);
        QCOMPARE(shapes.keyCount(), 4);
        for (int i = 0; i < 7; ++i)
            QCOMPARE(colors.keyToValue(colorNames[i]), i);
        for (int i = 0; i < 4; ++i)
            QCOMPARE(shapes.keyToValue(shapeNames[i]), i);
    }
};

QTEST_MAIN(QLedTest)
#include "QLedTest.moc"
