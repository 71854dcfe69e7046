#include "app/Globals.h"
#include "double/KoralinkDouble.h"
#include "hardware/MailboxComm.h"
#include "support/Operator.h"
#include "support/World.h"

#include <QSignalSpy>
#include <QtTest>

#include <memory>

using namespace koralink_double;

class MailboxCommTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<World> world;

private slots:
    void init()
    {
        koralink_double::reset();
        world = std::make_unique<World>();
    }
    void cleanup() { world.reset(); }

    void amplifierOnAAndEncoderBoxOnBGiveTheMaskOfB()
    {
        answers().sfp[0].deviceId = 0x2101;
        answers().sfp[1].deviceId = 0x2300;
        QSignalSpy changes(mailbox, SIGNAL(nrIonBarsChanged(int)));
        mailbox->refreshData();
        QCOMPARE(mailbox->nrIonBars, 2);
        QCOMPARE(changes.count(), 2);
        QCOMPARE(changes.at(0).at(0).toInt(), 2);
        QCOMPARE(changes.at(1).at(0).toInt(), 2);
        QCOMPARE(sampFreq, 5000);
    }
};

QTEST_MAIN(MailboxCommTest)
#include "MailboxCommTest.moc"
