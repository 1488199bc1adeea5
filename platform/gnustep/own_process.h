// What the toolkit would do for the desktop around a program: of no use to a program that is gone
// once the application is there, and left behind by it.
#pragma once

namespace quillory::platform {

/// From then on a click in a window starts no program: neither the daemon that carries
/// notifications from process to process, which would outlive this one, nor the one that lists the
/// services of all applications, in the user's home. To be called once the library of windows is
/// loaded, before the application object is made.
void keepToOwnProcess();

}  // namespace quillory::platform
