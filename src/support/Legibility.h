#pragma once

#include <QPalette>

/// Colours of what an operator reads. Styles grey a disabled field until nobody can read the number in it.
namespace legibility {

/// Full contrast in every state, on the background of the window: for values that the program shows.
QPalette liveValue();

/// Grey in every state: for values that are no longer measured.
QPalette oldValue();

/// Dark grey while disabled, for settings that are locked but still hold. To be called before the widgets are made: it
/// changes the palettes of all entry fields of the program.
void keepLockedFieldsLegible();

} // namespace legibility
