#include "tools/Pause.h"

#include <QThread>

void pauseMicroseconds(unsigned long microseconds)
{
    QThread::usleep(microseconds);
}

void pauseMilliseconds(unsigned long milliseconds)
{
    QThread::msleep(milliseconds);
}
