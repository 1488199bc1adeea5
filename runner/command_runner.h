// A mode in which the program stands for another command: it looks itself up by its own name in
// "runner.cfg" in the current directory, and becomes the command found there, or writes it into a
// shell script. run() reaches it only if the driver ever returned.
#pragma once

namespace quillory {

/// Runs the command configured for the base name of `argv[0]`, which is cut down to it in place.
/// `argc` is 1 at least.
///
/// Switches, as the first argument only: "-GENERATESCRIPT" and a file name write the command into
/// that file instead; "-DEBUG" tells every step. In run mode all arguments, switches included, are
/// passed on behind the configured ones.
///
/// Returns only when there is no such file or no usable entry in it, with `*returnCode` -1 and a
/// message on standard output. Otherwise the process becomes the command, or ends: with 0, also
/// when the command cannot be run (which is told), or with 1 when the name of the script is missing
/// or the script cannot be written.
void runConfiguredCommand(int argc, char** argv, int* returnCode);

}  // namespace quillory
