// Arguments that the system puts among those of the user.
#pragma once
#include <cstddef>

namespace quillory {

/// Takes what names the session of the window server ("-psn_0_12345") out of the arguments, which
/// the Finder of older systems and some tools still hand over: no application expects it, and Cocoa
/// takes it for a file to open. The others close up, and the list ends with a null as before; the
/// program's own name stays whatever it is. Returns how many there are now.
int withoutSessionArguments(int count, char** arguments);

/// What the entry does with arguments here: on macOS the same, elsewhere nothing, where such an
/// argument is the user's.
int withoutArgumentsOfTheSystem(int count, char** arguments);

/// Stack of the run thread in bytes: that of a main thread, where threads get much less. Java code
/// runs on it. 0: what threads get here is as much.
std::size_t runThreadStackBytes();

}  // namespace quillory
