#pragma once

#include "support/MessageBoxes.h"

#include <QDir>
#include <QtTest>

/// Compares a message box with the one of a save that failed.
inline void compareFailedSave(const MessageBoxes::Box& box, const QString& path, const QString& reason)
{
    QCOMPARE(box.title, QStringLiteral("File not saved"));
    QCOMPARE(box.text,
             QStringLiteral("File: %1 could not be written.\n\n%2\n\nA file that was there before is unchanged.")
                 .arg(path, reason));
    QCOMPARE(box.icon, QMessageBox::Warning);
    QCOMPARE(box.buttons, QMessageBox::StandardButtons(QMessageBox::Ok));
    QCOMPARE(box.textFormat, Qt::PlainText);
}

/// Names of everything in a folder.
inline QStringList namesIn(const QString& folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
}
