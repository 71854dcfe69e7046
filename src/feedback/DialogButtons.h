#pragma once

class QAbstractButton;

/// The buttons of a dialog are told apart by their text as the standard texts have it, with or without
/// mnemonic: one that shows anything else does nothing.

/// True for "&OK", "OK", "&Apply" and "Apply".
bool isOkOrApply(const QAbstractButton* button);
/// True for "&Save" and "Save".
bool isSave(const QAbstractButton* button);
