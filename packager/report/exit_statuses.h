// Statuses that quillory-pack ends with; docs/packaging.md lists them.
#pragma once

namespace quillory::pack {

inline constexpr int kDone = 0;
inline constexpr int kFailed = 1;         ///< it could not be done, or what was checked is not good
inline constexpr int kWrongUse = 2;       ///< the command line makes no sense
inline constexpr int kRejectedInput = 3;  ///< the configuration or the content has errors

}  // namespace quillory::pack
