// An operator without a plan, on an installation that fails by chance: whatever they do, the program neither crashes
// nor hangs, and shows the next good second.
//
// KORA_RANDOM_ACTIONS   number of actions
// KORA_RANDOM_SEED      the seed of a run to be repeated
// KORA_RANDOM_TRACE     a file that tells every action before it is done
//
// Many actions need QTEST_FUNCTION_TIMEOUT, in milliseconds, beyond Qt's five minutes.

#include "app/RandomOperator.h"

#include <QLoggingCategory>
#include <QtTest>

#include <random>

namespace {

constexpr int usualActions = 2000;
constexpr quint32 usualSeed = 1;

quint32 chosenSeed()
{
    if (qEnvironmentVariableIsSet("KORA_RANDOM_SEED"))
        return qEnvironmentVariable("KORA_RANDOM_SEED").toUInt();
    return qEnvironmentVariableIsSet("KORA_RANDOM_ACTIONS") ? std::random_device()() : usualSeed;
}

} // namespace

class RandomOperatorTest : public QObject
{
    Q_OBJECT

private slots:
    // A server without a window manager refuses the focus to windows that are just closing.
    void initTestCase() { QLoggingCategory::setFilterRules(QStringLiteral("qt.qpa.xcb*=false")); }

    void theProgramStandsWhateverIsDoneToIt()
    {
        const quint32 seed = chosenSeed();
        const int actions = qEnvironmentVariableIsSet("KORA_RANDOM_ACTIONS")
                                ? qEnvironmentVariableIntValue("KORA_RANDOM_ACTIONS")
                                : usualActions;
        qInfo("seed %u, %d actions", seed, actions);
        RandomOperator operatorWithoutPlan(seed, qEnvironmentVariable("KORA_RANDOM_TRACE"));
        const QString trouble = operatorWithoutPlan.work(actions);
        const RandomOperator::Tally& tally = operatorWithoutPlan.tally();
        qInfo("%d actions in %d sessions, %d within others, %d deep; %d boxes and menus answered; longest %d ms: %s",
              tally.actions, tally.sessions, tally.nestedActions, tally.deepest, tally.answers, tally.longestMs,
              qPrintable(tally.longest));
        QVERIFY2(trouble.isEmpty(), qPrintable(trouble));
        QCOMPARE(tally.actions, actions);
        QVERIFY(tally.nestedActions > 0);
        QVERIFY(tally.answers > 0);
    }
};

QTEST_MAIN(RandomOperatorTest)
#include "RandomOperatorTest.moc"
