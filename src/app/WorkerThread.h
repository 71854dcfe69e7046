#pragma once

#include <QThread>

/// A thread that ends its event loop and waits for it before it is released: the one way out of the program that
/// closes no window tells the thread nothing, and a running thread must not be destroyed.
///
/// A thread that does not come back within 5 s hangs in a call of the control library. Then the whole process ends,
/// with a line on stderr and status 1.
class WorkerThread : public QThread
{
public:
    ~WorkerThread() override;
};
