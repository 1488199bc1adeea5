// The parts of a bundle as archives.
#pragma once
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "packager/commands/bundle_parts.h"
#include "packager/commands/packing.h"
#include "packager/report/reporter.h"

namespace quillory::pack {

struct PackedPart {
  std::string name;
  std::string version;
  std::string archive;  ///< its file, signed and compressed
};

struct PackedParts {
  PackedPart updater;
  PackedPart application;
  std::optional<PackedPart> runtime;
  bool isHardened = false;  ///< the archives say what they are, which hardened launchers ask
  /// What the runtime is for, in a bundle for macOS.
  std::vector<std::string> runtimeArchitectures{};
};

/// Where the archive of a job lies already, as it should be packed; "" where it has to be packed.
using ArchiveSource = std::function<std::string(const PackingJob& job)>;

/// Packs all parts at the same time into files in `folder`, under the names that they have in a
/// tail. With a `platform`, the name of a target, the archives say what they are: an updater
/// without programs for every platform, all else for that one. What
/// `earlier` has is copied. Throws PackError, and what `earlier` throws; nothing is left in the
/// folder then.
PackedParts packParts(const BundleParts& parts, const PackingOptions& options,
                      const std::string& folder, Reporter& reporter,
                      const std::string& platform = "", const ArchiveSource& earlier = {});

}  // namespace quillory::pack
