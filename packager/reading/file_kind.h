// Which of our files a file is.
#pragma once
#include <string>
#include <vector>

namespace quillory::pack {

enum class FileKind {
  kUnknown,
  kBundle,
  kTail,
  kExecutable,  ///< a launcher with a tail inside
  kParameters,
  kArchive,            ///< .p2
  kCompressedArchive,  ///< .p2.l2
  kLaunchFile,
  kLaunchProperties,
  kRememberedOptions,  ///< JRE-LastSuccessfulOptions-...
  kVersionFile,
  kSigningKey,
  kReleaseList,
  kDelta,
  kUpdateSettings,
};

/// Names for --as, in the order of the enumeration: "bundle", "tail", ...
const std::vector<std::string>& fileKindNames();
FileKind fileKindNamed(const std::string& name);

/// Judged by the name, where it says so, else by the content. Throws PackError when there is
/// nothing at `path`.
FileKind fileKindOf(const std::string& path);

}  // namespace quillory::pack
