#pragma once

#include <QString>

/// Path of the one settings file. In a file of its own, so that a test can link another one.
QString settingsPath();
