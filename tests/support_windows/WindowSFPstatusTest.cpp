#include "support/WindowSFPstatus.h"
#include "app/Globals.h"
#include "double/KoralinkDouble.h"
#include "hardware/MailboxComm.h"
#include "support/DeviceTable.h"
#include "support/Operator.h"
#include "support/World.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QTableWidget>
#include <QTimer>
#include <QtTest>

#include <cstring>
#include <memory>

using namespace koralink_double;

namespace {

/// The table of products as the operator's manual has it.
struct Product
{
    const char* id;
    const char* group;
    const char* name;
    const char* image;
    const char* desc;
};
constexpr Product products[] = {
    {"1100", "Power Supplies", "Rapidrail", "Rapidrail_small.png", "Rapidrail Power Supply"},
    {"2100", "Beamline instrumentation", "Ionbar", "icon_ionbar.png", "Empty slots"},
    {"2180", "Beamline instrumentation", "Ionbar (recovery mode)", "icon_ionbar.png", "Recovery mode, update firmware"},
    {"2140", "Beamline instrumentation", "Ionbar (fast interface)", "icon_ionbar_fast.png", "Fast interface"},
    {"2101", "Beamline instrumentation", "Ionbar", "icon_ionbar.png", "RM4 100uA 100nA:HV 500V pos"},
    {"2102", "Beamline instrumentation", "Ionbar (fast communication)", "icon_ionbar.png",
     "RM4 100uA 100nA:HV 500V neg"},
    {"2103", "Beamline instrumentation", "Ionbar (fast communication)", "icon_ionbar.png",
     "RM4 100uA 100nA:HV 4kV pos"},
    {"2104", "Beamline instrumentation", "Ionbar (fast communication)", "icon_ionbar.png",
     "RM4 100uA 100nA:HV 4kV neg"},
    {"2200", "Beamline instrumentation", "Anvolt", "icon_Anvolt.png", "Anvolt +-12V"},
    {"2240", "Beamline instrumentation", "Anvolt (Fast)", "icon_Anvolt.png", "Anvolt +-12V (Fast Interface)"},
    {"2300", "Beamline instrumentation", "Cogtrak", "icon_Cogtrak.png", "Encoder Interface"},
    {"2340", "Beamline instrumentation", "Cogtrak (SFP)", "icon_Cogtrak.png", "Encoder Interface"},
};

QString latin1(const char* text)
{
    return QString::fromLatin1(text);
}

} // namespace

class WindowSFPstatusTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<World> world;
    std::unique_ptr<WindowSFPstatus> window;

    /// Lets the library report a module, and the poll find it.
    void plug(int port, std::uint16_t deviceId, const char* version, std::uint32_t serialNumber,
              std::uint32_t hwVersion)
    {
        SFPinfo& info = answers().sfp[port];
        info.deviceId = deviceId;
        std::memcpy(info.version, version, sizeof info.version);
        info.serialNumber = serialNumber;
        info.hwVersion = hwVersion;
        mailbox->refreshData();
    }
    void open()
    {
        window = std::make_unique<WindowSFPstatus>();
        window->show();
        operate::fireTimers(window.get());
    }
    QTableWidget* table() { return operate::find<QTableWidget>(window.get(), "SFPsTable"); }
    QPixmap picture(int port) { return table()->item(0, port)->data(Qt::DecorationRole).value<QPixmap>(); }
    QString text(int row, int port) { return table()->item(row, port)->text(); }
    bool columnIsEmpty(int port)
    {
        for (int row = 0; row < table()->rowCount(); ++row) {
            if (table()->item(row, port))
                return false;
        }
        return true;
    }

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

    void titleAndShape()
    {
        open();
        QCOMPARE(window->windowTitle(), QStringLiteral("SFP Info"));
        QCOMPARE(table()->rowCount(), 5);
        QCOMPARE(table()->columnCount(), 4);
        QCOMPARE(operate::find<QDialogButtonBox>(window.get(), "buttonBox")->standardButtons(),
                 QDialogButtonBox::StandardButtons(QDialogButtonBox::Ok));
        operate::press(operate::find<QDialogButtonBox>(window.get(), "buttonBox"), QStringLiteral("OK"));
        QVERIFY(!window->isVisible());
    }

    void headersArePlainNumbersFromTheStart()
    {
        window = std::make_unique<WindowSFPstatus>();
        for (int column = 0; column < 4; ++column) {
            QVERIFY(!table()->horizontalHeaderItem(column));
            QCOMPARE(table()->model()->headerData(column, Qt::Horizontal).toInt(), column + 1);
        }
        for (int row = 0; row < 5; ++row) {
            QVERIFY(!table()->verticalHeaderItem(row));
            QCOMPARE(table()->model()->headerData(row, Qt::Vertical).toInt(), row + 1);
        }
    }

    void columnsAndThePictureRowStretch()
    {
        window = std::make_unique<WindowSFPstatus>();
        for (int column = 0; column < 4; ++column)
            QCOMPARE(table()->horizontalHeader()->sectionResizeMode(column), QHeaderView::Stretch);
        QCOMPARE(table()->verticalHeader()->sectionResizeMode(0), QHeaderView::Stretch);
        QCOMPARE(table()->verticalHeader()->sectionResizeMode(1), QHeaderView::Interactive);
    }

    void modulesOfAllPortsAreShown()
    {
        plug(0, 0x2101, "4321", 1234567, 3);
        plug(1, 0x2104, "abcd", 4294967295u, 4294967295u);
        plug(2, 0x2200, "0001", 7, 0);
        plug(3, 0x1100, "1.0A", 0, 12);
        open();
        QCOMPARE(text(0, 0), QString());
        QCOMPARE(text(1, 0), QStringLiteral("Ionbar"));
        QCOMPARE(text(2, 0), QStringLiteral("1234567"));
        QCOMPARE(text(3, 0), QStringLiteral("1.2.3.4"));
        QCOMPARE(text(4, 0), QStringLiteral("3"));
        QCOMPARE(text(1, 1), QStringLiteral("Ionbar (fast communication)"));
        QCOMPARE(text(2, 1), QStringLiteral("4294967295"));
        QCOMPARE(text(3, 1), QStringLiteral("d.c.b.a"));
        QCOMPARE(text(4, 1), QStringLiteral("4294967295"));
        QCOMPARE(text(1, 2), QStringLiteral("Anvolt"));
        QCOMPARE(text(3, 2), QStringLiteral("1.0.0.0"));
        QCOMPARE(text(1, 3), QStringLiteral("Rapidrail"));
        QCOMPARE(text(3, 3), QStringLiteral("A.0...1"));
        for (int port = 0; port < 4; ++port)
            QVERIFY(std::max(picture(port).width(), picture(port).height()) == 100);
    }

    void pictureIsTheScaledOneOfTheTable()
    {
        plug(2, 0x2300, "1111", 1, 1);
        open();
        const QPixmap expected = QPixmap(QStringLiteral(":/product_data/icon_Cogtrak.png"))
                                     .scaled(100, 100, Qt::KeepAspectRatio, Qt::SmoothTransformation);
        QVERIFY(!expected.isNull());
        QCOMPARE(picture(2).toImage(), expected.toImage());
        QVERIFY(picture(2).toImage() != QPixmap(QStringLiteral(":/product_data/icon_Anvolt.png"))
                                            .scaled(100, 100, Qt::KeepAspectRatio, Qt::SmoothTransformation)
                                            .toImage());
    }

    void emptyPortsLeaveTheirColumnsEmpty()
    {
        plug(1, 0x2101, "1234", 1, 1);
        open();
        QVERIFY(columnIsEmpty(0));
        QVERIFY(!columnIsEmpty(1));
        QVERIFY(columnIsEmpty(2));
        QVERIFY(columnIsEmpty(3));
    }

    void unknownCodeShowsItsNumbersWithoutNameAndPicture()
    {
        plug(0, 0x00ab, "4321", 77, 5);
        open();
        QVERIFY(picture(0).isNull());
        QCOMPARE(text(1, 0), QString());
        QCOMPARE(text(2, 0), QStringLiteral("77"));
        QCOMPARE(text(3, 0), QStringLiteral("1.2.3.4"));
        QCOMPARE(text(4, 0), QStringLiteral("5"));
    }

    void portGoingEmptyIsClearedAtTheNextTick()
    {
        plug(0, 0x2101, "1234", 1, 1);
        plug(1, 0x2200, "1234", 2, 2);
        open();
        answers().sfp[0] = SFPinfo{};
        mailbox->refreshData();
        operate::fireTimers(window.get());
        QVERIFY(columnIsEmpty(0));
        QCOMPARE(text(1, 1), QStringLiteral("Anvolt"));
    }

    void failedScanShowsAnEmptyColumn()
    {
        plug(0, 0x2101, "1234", 1, 1);
        open();
        fail("getSFPinfo", 1);
        mailbox->refreshData();
        operate::fireTimers(window.get());
        QVERIFY(columnIsEmpty(0));
        mailbox->refreshData();
        operate::fireTimers(window.get());
        QCOMPARE(text(1, 0), QStringLiteral("Ionbar"));
    }

    void hiddenDialogClearsButDoesNotFill()
    {
        plug(0, 0x2101, "1234", 1, 1);
        window = std::make_unique<WindowSFPstatus>();
        operate::fireTimers(window.get());
        QVERIFY(columnIsEmpty(0));
        window->show();
        operate::fireTimers(window.get());
        QVERIFY(!columnIsEmpty(0));
        window->hide();
        operate::fireTimers(window.get());
        QVERIFY(columnIsEmpty(0));
    }

    void refreshTimerRunsFromConstruction()
    {
        window = std::make_unique<WindowSFPstatus>();
        const QList<QTimer*> timers = window->findChildren<QTimer*>(QString(), Qt::FindDirectChildrenOnly);
        QCOMPARE(timers.size(), 1);
        QVERIFY(timers.first()->isActive());
        QCOMPARE(timers.first()->interval(), 1100);
    }

    void everyProductIsInTheTable_data()
    {
        QTest::addColumn<int>("row");
        for (int row = 0; row < int(std::size(products)); ++row)
            QTest::newRow(products[row].id) << row;
    }
    void everyProductIsInTheTable()
    {
        QFETCH(int, row);
        const Product& product = products[row];
        const QString id = latin1(product.id);
        QCOMPARE(deviceGroup(id), latin1(product.group));
        QCOMPARE(deviceName(id), latin1(product.name));
        QCOMPARE(deviceImage(id), QLatin1String(":/product_data/") + QLatin1String(product.image));
        QCOMPARE(deviceDesc(id), latin1(product.desc));
        QVERIFY(!QPixmap(deviceImage(id)).isNull());
    }

    void codeThatIsNotInTheTableGivesEmptyTexts()
    {
        for (const QString& code : {QStringLiteral("ffff"), QStringLiteral("21"), QStringLiteral("2101 "), QString()}) {
            QCOMPARE(deviceGroup(code), QString());
            QCOMPARE(deviceName(code), QString());
            QCOMPARE(deviceDesc(code), QString());
            QCOMPARE(deviceImage(code), QStringLiteral(":/product_data/"));
        }
    }

    void firstElementOfThatTextIsTakenWhateverItIs()
    {
        // The look-up searches texts, not ids: a name leads to the first product of that name.
        QCOMPARE(deviceDesc(QStringLiteral("Ionbar")), QStringLiteral("Empty slots"));
        QCOMPARE(deviceName(QStringLiteral("Encoder Interface")), QStringLiteral("Cogtrak"));
    }

    void furtherPicturesTravelAlong()
    {
        QVERIFY(!QPixmap(QStringLiteral(":/product_data/icon_beamline.png")).isNull());
        QVERIFY(!QPixmap(QStringLiteral(":/product_data/icon_e.png")).isNull());
    }
};

QTEST_MAIN(WindowSFPstatusTest)
#include "WindowSFPstatusTest.moc"
