#pragma once

#include <QThread>

/// A thread that ends its event loop and waits for it before it is released: the one way out of the program that
/// closes no window tells the thread nothing, and a running thread must not be destroyed.
class WorkerThread : public QThread
{
public:
    ~WorkerThread() override
    {
        quit();
        wait();
    }
};
