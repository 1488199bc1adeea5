// The mark of an elevated run, which only prepares an installation.
#pragma once
#include <string_view>

namespace quillory {

/// The last argument of an elevated run: install, show nothing, start nothing. Anywhere else it is
/// an argument like any other.
inline constexpr char kPrepareOnlyArgument[] = "QYPREPARE_FOR_LAUNCH_ONLY";

/// Whether a process with these arguments is such a run. Without arguments its own name is
/// compared, which is as good as any other.
inline bool isPrepareOnly(int argc, const char* const* argv) {
  return argv[argc - 1] == std::string_view(kPrepareOnlyArgument);
}

}  // namespace quillory
