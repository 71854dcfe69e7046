#include "stream/BufferWindow.h"

void BufferWindow::updateAll() {}
