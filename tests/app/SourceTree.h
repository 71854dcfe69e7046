#pragma once

#include <QStringList>

/// Reads the sources of the project. Paths count from the top of the tree.

QString inTree(const QString& path);
/// Empty where there is no such file.
QString textOf(const QString& path);

/// Headers and sources of program and simulation.
QStringList sourceFiles();

QString folderOf(const QString& path);
/// Name of a file without its suffixes.
QString nameOf(const QString& path);
/// Header and source of one name are one unit.
QString unitOf(const QString& path);

QStringList quotedIncludes(const QString& text);
/// Path of what an include names that stands in the source folder or in the simulation.
QString includedPath(const QString& included);
/// What a file takes of the tree; generated headers are none of it.
QStringList includedPaths(const QString& path);
/// Headers of the widgets that a form places.
QStringList promotedHeaders(const QString& form);
