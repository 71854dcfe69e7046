#pragma once

#include <QVector>

class QWidget;

/// Lets the Tab key go through panels of one window in this order, and within each panel in the panel's own.
void orderTabKey(const QVector<QWidget*>& panels);
