// Standard input, output and error, for a process that was started without them.
#pragma once

namespace quillory {

/// Opens /dev/null in the place of each that is closed. Otherwise the next file to be opened would
/// get its number, and what is printed would go into that file. The first call of a process.
void fillStandardStreams();

/// Lets a write to a pipe without a reader fail, as `PROGRAM | head -1` makes it, where it would
/// end the process. Programs that are started have the signal as they had it without this.
void outliveReaders();

}  // namespace quillory
