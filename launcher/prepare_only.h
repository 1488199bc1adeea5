// The mark of an elevated run, which only prepares an installation.
#pragma once

namespace quillory {

/// The last argument of an elevated run: install, show nothing, start nothing. Anywhere else it is
/// an argument like any other.
inline constexpr char kPrepareOnlyArgument[] = "QYPREPARE_FOR_LAUNCH_ONLY";

}  // namespace quillory
