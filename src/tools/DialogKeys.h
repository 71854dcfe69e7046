#pragma once

class QDialog;

/// Keeps the Enter key of a number field from pressing a button of the dialog: a measurement starts, and a
/// window closes, only when its button is meant.
void detachEnterKey(QDialog* dialog);
