#include "support/about.h"
#include "app/Globals.h"
#include "support/Operator.h"
#include "support/World.h"

#include <QLabel>
#include <QLineEdit>
#include <QStyle>
#include <QtTest>

#include <memory>

class AboutTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<World> world;
    std::unique_ptr<about> window;

    QLabel* label(const char* name) { return operate::find<QLabel>(window.get(), name); }
    QLineEdit* line(const char* name) { return operate::find<QLineEdit>(window.get(), name); }

private slots:
    void init()
    {
        world = std::make_unique<World>();
        hwTimestampText = QStringLiteral("20210317");
        swVersionText = QStringLiteral("1.0.03");
        pidVersionText = QStringLiteral("1.2.34");
        window = std::make_unique<about>();
        window->show();
    }
    void cleanup()
    {
        window.reset();
        world.reset();
    }

    void showsTheThreeSystemVersions()
    {
        QCOMPARE(line("curVerTSLineEdit")->text(), QStringLiteral("20210317"));
        QCOMPARE(line("curVerSWLineEdit")->text(), QStringLiteral("1.0.03"));
        QCOMPARE(line("curPIDverLineEdit")->text(), QStringLiteral("1.2.34"));
        for (const char* name : {"curVerTSLineEdit", "curVerSWLineEdit", "curPIDverLineEdit"})
            QVERIFY(!line(name)->isEnabled());
    }

    void textsOfTheForm()
    {
        QCOMPARE(window->windowTitle(), QStringLiteral("About"));
        QCOMPARE(label("label_4")->text(), QStringLiteral("Current Version of KORA System:"));
        QCOMPARE(label("curVerTSLabel")->text(), QStringLiteral("Current HW timestamp:"));
        QCOMPARE(label("curVerSWLabel")->text(), QStringLiteral("Current SW version:"));
        QCOMPARE(label("curPIDverLabel")->text(), QStringLiteral("Current PID version:"));
    }

    void productLineCarriesTheVersionOfTheInterface()
    {
        QCOMPARE(label("label_2")->text(), QStringLiteral("Zenthic KORA Local User Interface<br>v" KORA_VERSION));
        QCOMPARE(label("label_2")->textFormat(), Qt::RichText);
    }

    void makerIsNamedWithAWebAndAMailLinkThatOpenOutside()
    {
        const QLabel* maker = label("label_3");
        const QStringList lines = maker->text().split(QStringLiteral("<br>"));
        QCOMPARE(lines.size(), 3);
        QCOMPARE(lines.at(0), QStringLiteral("Zenthic Instruments"));
        QVERIFY(lines.at(1).startsWith(QStringLiteral("<a href=\"http")));
        QVERIFY(lines.at(2).startsWith(QStringLiteral("<a href=\"mailto:")));
        QCOMPARE(maker->textFormat(), Qt::RichText);
        QCOMPARE(maker->textInteractionFlags(),
                 Qt::TextSelectableByMouse | Qt::LinksAccessibleByMouse | Qt::LinksAccessibleByKeyboard);
        QVERIFY(maker->openExternalLinks());
    }

    void logoIsShown()
    {
        const QPixmap logo(QStringLiteral(":/qss/images/Logo_Zenthic.png"));
        QVERIFY(!logo.isNull());
        QCOMPARE(label("label")->pixmap(Qt::ReturnByValue).toImage(), logo.toImage());
    }

    void windowIconIsTheInformationIconOfTheStyle()
    {
        const QIcon information = window->style()->standardIcon(QStyle::SP_MessageBoxInformation);
        QVERIFY(!information.isNull());
        QCOMPARE(window->windowIcon().pixmap(32).toImage(), information.pixmap(32).toImage());
    }

    void partsStandFromTopToBottom()
    {
        int bottom = -1;
        for (const char* name :
             {"label", "label_2", "label_3", "label_4", "curVerTSLabel", "curVerSWLabel", "curPIDverLabel"}) {
            const int top = label(name)->mapTo(window.get(), QPoint(0, 0)).y();
            QVERIFY2(top > bottom, name);
            bottom = top;
        }
    }
};

QTEST_MAIN(AboutTest)
#include "AboutTest.moc"
