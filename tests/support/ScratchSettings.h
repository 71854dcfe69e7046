#pragma once

#include <QString>
#include <QVariant>

/// The settings file of a test, in a folder that vanishes with the process.
namespace scratch_settings {

/// Removes the file, so that every key is missing, and goes back to the first path.
void clear();
/// Lets the program use another path, for example one that cannot be read.
void setPath(const QString& path);
QVariant value(const char* key);
void setValue(const char* key, const QVariant& value);

} // namespace scratch_settings
