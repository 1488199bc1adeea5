// Whether there is a window server. GNUstep leaves a half-made application object behind when it
// finds out by itself.
#pragma once

namespace quillory::platform {

/// Whether the environment names a display. Costs nothing.
bool isDisplayNamed();

/// Whether a connection to it can be opened, which is then closed again. About a millisecond; a
/// server that has not answered after three seconds is none.
bool isDisplayReachable();

}  // namespace quillory::platform
