#pragma once

#include <QStringList>

/// The operator's guide and the messages of the program, as a test reads them in the sources.
namespace guide_text {

/// Headings of the chapters that describe windows.
QStringList windowChapters();
/// The guide from a heading of this depth to the next one of it; empty if there is none.
QString partOfGuide(const QString& heading, int depth = 2);
/// The chapter that describes the window of this class.
QString chapterOf(const QString& className);

QStringList tableRows(const QString& chapter);
/// The first cells of all rows, a line each.
QString firstCells(const QString& chapter);

/// Titles and texts of all message boxes, line by line.
QStringList messageLines();

} // namespace guide_text
