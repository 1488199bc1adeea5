// Java inside of an application that is Cocoa's already.
#pragma once

namespace quillory {

/// Lets Java's window toolkit take over what it else leaves to the application around it: the
/// handlers of java.awt.Desktop, for quit, about, preferences, files and URLs. Before a JVM is
/// made. On systems whose toolkit knows no other application nothing changes.
void letToolkitTakeOver();

}  // namespace quillory
