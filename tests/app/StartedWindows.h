#pragma once

#include "app/MainWindow.h"

#include <memory>

/// What main does between the worker's start and the event loop, on the shared objects that a World has made:
/// one poll, the start-up calls, the main window, shown, and the login dialog.
std::unique_ptr<MainWindow> startWindows();
