#pragma once

/// Makes the process fit to go on where a write fails: neither a pipe without a reader nor a limit of the file size
/// ends it, and no file that is opened later takes the place of a missing standard input, output or error, to which
/// libraries write. Called first of all.
void prepareProcess();
