#pragma once

#include <QObject>

/// Ends the event loop with status 0 when the session or an operator at a terminal asks the process to end (SIGTERM,
/// SIGINT, SIGHUP), so that it leaves as it does from its menu. One instance, GUI thread.
class TerminationSignals : public QObject
{
    Q_OBJECT

public:
    TerminationSignals();
    ~TerminationSignals() override;

private slots:
    void handleSignal();

private:
    int readEnd;
};
