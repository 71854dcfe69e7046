#pragma once

class OutputFile;

/// Tells in a message box that a file could not be written, and why. Without a parent, so that the box outlives a
/// window that is destroyed beneath it.
void tellFailedSave(const OutputFile& file);
