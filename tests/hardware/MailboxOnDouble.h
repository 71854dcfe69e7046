#pragma once

#include "double/KoralinkDouble.h"
#include "hardware/MailboxComm.h"
#include "support/World.h"

#include <QtTest>

#include <memory>

/// The mailbox on the double, anew for every test.
class MailboxOnDouble : public QObject
{
    Q_OBJECT

protected:
    /// All calls of the library and of the devices, in their order.
    static QStringList allCalls()
    {
        QStringList texts;
        for (const koralink_double::Call& call : koralink_double::calls())
            texts.append(QString::fromStdString(call.text()));
        return texts;
    }

private slots:
    void init()
    {
        koralink_double::reset();
        world = std::make_unique<World>();
    }
    void cleanup() { world.reset(); }

private:
    std::unique_ptr<World> world;
};
