#pragma once

#include <QObject>

/// A place kept for a view of raw windows; nothing constructs it yet.
class BufferWindow : public QObject
{
    Q_OBJECT

public slots:
    void updateAll();
};
