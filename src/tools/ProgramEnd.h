#pragma once

/// Whether the event loops of this thread were told to end: the program is about to quit, but a procedure that
/// runs inside a slot still holds it. Qt tells nobody, since its loops look only when the slot returns.
/// GUI thread; serves the events that wait, user input excepted. False where no event loop runs.
bool programEndRequested();
