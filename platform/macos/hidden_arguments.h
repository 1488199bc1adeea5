// What Cocoa must not read for itself.
#pragma once

namespace quillory::platform {

/// Keeps the process's arguments from Cocoa: it would take words for documents, and say in an alert
/// that they cannot be opened, and words that begin with a dash for settings. Before the
/// application object is made. `programName` stays, and has to live as long as the process; whoever
/// has the arguments of main() keeps them.
void hideArguments(char* programName);

}  // namespace quillory::platform
