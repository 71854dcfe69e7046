#pragma once

#include "app/Dice.h"
#include "app/RandomFaults.h"
#include "app/RandomHand.h"

#include <QFile>
#include <QObject>
#include <QStringList>
#include <QTemporaryDir>

#include <memory>

class QDialog;
class SimulatedSession;

/// An operator without a plan at an installation out of luck. Every action plans the next one before it begins, so
/// that the next one happens wherever the program serves events: behind an open message box, between two points of a
/// measurement. When the program ends, a new one is started.
class RandomOperator : public QObject
{
    Q_OBJECT

public:
    struct Tally
    {
        int actions = 0;
        int nestedActions = 0; ///< while another one had not come back
        int deepest = 0;
        int sessions = 0;
        int answers = 0;   ///< to message boxes, file dialogs and menus
        int longestMs = 0; ///< action without those within it
        QString longest;
    };

    /// @param trace file that tells each action before it is done; empty for none
    RandomOperator(quint32 seed, const QString& trace);
    ~RandomOperator() override;

    /// Works in sessions until so many actions are done. @return what kept the program from showing a good second
    /// after one of the sessions that were not ended by the program; empty if nothing did
    QString work(int actions);
    const Tally& tally() const { return done; }

    bool eventFilter(QObject* object, QEvent* event) override;

private slots:
    void act();
    void answerModal();

private:
    QString workOneSession();
    QString troubleInNextGoodSecond();
    void planNext();
    void keepStreamInMotion();
    void doSomething();
    void doSomethingInReach();
    void note(const QString& what);
    void answer(QDialog* dialog);
    void touchSomething();
    void takeMenuEntry();
    void handleWindow();
    void handleDock();
    void logIn();
    void letTimePass();
    void pausedFor(unsigned long microseconds);
    void endMeasurements();
    QList<QWidget*> openWindows() const;

    Dice dice;
    RandomHand hand;
    std::unique_ptr<SimulatedSession> session;
    std::unique_ptr<RandomFaults> faults;
    QTemporaryDir folder;
    QString folderBefore;
    QFile trace;
    QString lastNote;
    Tally done;
    int wanted = 0;
    int sessionEndsAt = 0;
    int depth = 0;
    int actionsAtLastPause = 0;
    int pausesWithoutAction = 0;
    bool timePasses = false;
    bool planned = false;
};
