// The pictures in the windows on a screen of twice the resolution, which the environment of this suite asks for.

#include "app/Globals.h"
#include "double/KoralinkDouble.h"
#include "feedback/WindowBeamlineConf.h"
#include "feedback/WindowPIDparams.h"
#include "hardware/MailboxComm.h"
#include "support/Operator.h"
#include "support/WindowSFPstatus.h"
#include "support/World.h"
#include "support/about.h"

#include <QLabel>
#include <QPainter>
#include <QSvgRenderer>
#include <QTableWidget>
#include <QtTest>

#include <memory>

using operate::find;

namespace {

QImage drawing(const QString& file, const QSize& pixels)
{
    QImage image(pixels, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    QSvgRenderer(file).render(&painter);
    return image;
}

/// Mean difference of the grey values of two pictures of one size.
double difference(const QImage& a, const QImage& b)
{
    double sum = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x)
            sum += std::abs(qGray(a.pixel(x, y)) - qGray(b.pixel(x, y)));
    }
    return sum / (double(a.width()) * a.height());
}

} // namespace

class SharpPicturesTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<World> world;

private slots:
    void initTestCase() { QCOMPARE(qApp->devicePixelRatio(), 2.0); }
    void init()
    {
        koralink_double::reset();
        world = std::make_unique<World>();
    }
    void cleanup() { world.reset(); }

    void theElectrodesAreDrawnInThePixelsOfTheScreen()
    {
        mailbox->nrIonBars = 3;
        WindowBeamlineConf window(nullptr);
        for (const int angle : {90, 45}) {
            auto* picture = find<QWidget>(&window, qPrintable(QStringLiteral("BPM%1_image").arg(angle)));
            picture->resize(150, 150);
            QPixmap seen(QSize(300, 300));
            seen.setDevicePixelRatio(2);
            seen.fill(Qt::white);
            picture->render(&seen, QPoint(), QRegion(), QWidget::DrawChildren);
            const QImage shown = seen.toImage().convertToFormat(QImage::Format_RGB32);
            const QString file = QStringLiteral(":/images/images/detector%1.svg").arg(angle);
            const QImage sharp = drawing(file, shown.size());
            const QImage blurred =
                drawing(file, QSize(150, 150)).scaled(shown.size(), Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
            QVERIFY(difference(shown, sharp) < 0.2 * difference(blurred, sharp));
        }
    }

    void thePicturesOfThePortsHaveTheirSizeInThePixelsOfTheScreen()
    {
        mailbox->sfp[0].deviceId = 0x2101;
        WindowSFPstatus window(nullptr);
        window.show();
        operate::fireTimers(&window);
        const QTableWidgetItem* item = find<QTableWidget>(&window, "SFPsTable")->item(0, 0);
        QVERIFY(item);
        const auto picture = item->data(Qt::DecorationRole).value<QPixmap>();
        QCOMPARE(picture.size(), QSize(200, 200));
        QCOMPARE(picture.devicePixelRatio(), 2.0);
    }

    void thePicturesOfLoopAndMakerHaveTwiceTheResolution()
    {
        const WindowPIDparams structure;
        const about box(nullptr);
        const QPixmap loop = find<QLabel>(&structure, "pictureLabel")->pixmap(Qt::ReturnByValue);
        QCOMPARE(loop.width(), 2 * QPixmap(QStringLiteral(":/images/images/KORA_PID.png")).width());
        const QPixmap logo = find<QLabel>(&box, "label")->pixmap(Qt::ReturnByValue);
        QCOMPARE(logo.width(), 2 * QPixmap(QStringLiteral(":/qss/images/Logo_Zenthic.png")).width());
        QCOMPARE(logo.devicePixelRatio(), 2.0);
    }
};

QTEST_MAIN(SharpPicturesTest)
#include "SharpPicturesTest.moc"
